"""What the soak does to the devices: one step after another, each chosen by the seed and the number of the step."""
import os
import random
import signal
import time

from console import Broken, processor_time
from devices import Settings
from restarts import Restarts
from world import VARIABLES

ACCOUNTS = ("Ada", "Ben, ground floor", "Cleo: 2nd floor", "Dora", "Émile", "Finn")
PLACES = ("Kitchen, left of the door", "Hall", "Attic", "Cellar 3", "Garage", "Roof")
# Of each kind of step, how often it comes beside the others. Steps of the second list are those of the first quarter alone.
STEPS = {"set": 20, "apply": 16, "undo": 5, "list": 8, "look": 8, "file": 4, "findings": 3, "history": 3, "preview": 5, "drift": 5,
         "probe": 5, "start": 10, "stop": 3, "reboot": 3, "erase": 3, "manage": 3, "flag": 8, "announce": 3, "fail": 3, "offline": 4,
         "cut": 6, "dead": 3, "kill daemon": 3, "edit": 6}
STORM = {"restart host": 3, "kill host": 4, "restart console": 2}
KINDS = {"start": ("local", "ssh"), "offline": ("local",), "kill daemon": ("local",), "cut": ("ssh",), "dead": ("ssh",), "edit": ("simulated", "local", "ssh")}

AWAY = 0.3  # how likely a device that can be reached goes away, when its turn has come; one that is away comes back


class Work(Restarts):
    def __init__(self, seed, its_world, console, checks):
        self.seed = seed
        self.world = its_world
        self.console = console
        self.checks = checks
        values = random.Random(f"{seed}/values")
        self.communities = [f"hush{values.randrange(16 ** 6):06x}" + (" blue" if number % 4 == 0 else "") for number in range(60)]
        console.secrets = self.communities
        self.flags = {number: {False} for number in range(1, VARIABLES + 1)}
        self.snapshots = 0
        self.first = list(STEPS) + list(STORM)
        random.Random(f"{seed}/first").shuffle(self.first)

    def choose(self, number, is_storm):
        """Returns the name of a step, its device and its random numbers. Nothing but the seed and the number decides."""
        chance = random.Random(f"{self.seed}/{number}")
        steps = dict(STEPS, **STORM) if is_storm else STEPS
        name = chance.choices(list(steps), steps.values())[0]
        if number < len(self.first):
            name = self.first[number]
        allowed = KINDS.get(name, ("simulated", "local", "ssh", "offline"))
        device = chance.choice([each for each in self.world.devices if each.kind in allowed])
        return name, device, chance

    def do(self, name, device, chance):
        """Does one step. Returns how it went, in a word or two, the seconds that it took, without the looks at files, and the
        processor time of the host process in it, which the load of the machine does not change."""
        host = self.console.host_pid()
        used = processor_time(host)
        begin = time.monotonic()
        outcome = getattr(self, name.replace(" ", "_"))(device, chance)
        seconds = time.monotonic() - begin
        used = processor_time(host) - used if name not in STORM else 0.0
        self.checks.files_of(device)
        self.checks.secrets()
        return outcome, seconds, used

    def draw(self, chance):
        def one(values):
            return "" if chance.random() < 0.1 else chance.choice(values)
        # Nothing that the console would refuse: a trap community with a blank, two communities that are alike.
        plain = [each for each in self.communities if " " not in each]
        targets = tuple((f"127.0.0.{chance.randrange(1, 5)}", chance.choice(plain), chance.choice(("9", "162", "")))
                        for _ in range(chance.choice((0, 1, 1, 2, 3))))
        return Settings(read=chance.choice(self.communities[0::2]), write=one(self.communities[1::2]), contact=one(ACCOUNTS), location=one(PLACES),
                        name=one([f"{room}-{number}" for room in ("kitchen", "hall") for number in range(5)]), targets=targets)

    # Changes

    def settle(self, device, is_done):
        """After a change that the agent calls done: unless the device still counts as dirty, its file has the change."""
        if is_done and not self.glance(device)["dirty"]:
            device.confirm()
            if device.kind == "ssh" and self.world.served(device).read_bytes() != device.file.read_bytes():
                self.checks.say(("served", device.id), f"{device.name} is not dirty, and its controller serves an older file")

    def glance(self, device):
        for each in self.console.ask("GET", "/devices").body["devices"]:
            if each["id"] == device.id:
                return each
        raise Broken(f"{device.name} is missing in the list of devices")

    def set(self, device, chance):
        settings = self.draw(chance)
        device.give(settings)
        answer = self.console.command(1, "SetDeviceState", xml=settings.element(device.id))
        self.settle(device, answer.reply == "Success")
        return answer.reply or answer.code

    def apply(self, device, chance):
        return self.change(device, f"/devices/{device.id}/settings", "PUT", {"settings": self.draw(chance).body()})

    def change(self, device, path, method, body, settings=None):
        before = self.console.ask("GET", f"/devices/{device.id}")
        if before.status != 200:
            return before.code
        body["accepted"] = []
        if settings is None:
            given = body["settings"]
            settings = Settings(given["readCommunity"]["value"], given["writeCommunity"]["value"], given["contact"], given["location"],
                                given["name"], tuple((each["target"], each["community"]["value"], each["port"]) for each in given["trapTargets"]))
        device.give(settings)
        answer = self.console.ask(method, path, body, base=before.body["base"])
        if answer.body.get("changed"):
            self.snapshots += 1
        verdict = answer.body.get("verdict", answer.code)
        self.settle(device, verdict == "changed")
        return verdict

    def undo(self, device, chance):
        numbers = [each["number"] for each in self.console.ask("GET", f"/devices/{device.id}/history").body.get("snapshots", [])]
        if not numbers:
            return "no snapshot"
        number = numbers[-chance.randrange(1, min(5, len(numbers)) + 1)]
        before = self.world.folder / f"project.xml.snapshots/driver-{device.id}/{number}/before.xml"
        settings = Settings.of_element(before.read_text())
        return self.change(device, f"/devices/{device.id}/undo", "POST", {"snapshot": number}, settings)

    def erase(self, device, chance):
        name = chance.choice(("sysContact", "sysName", "sysLocation", "communityWrite"))
        return self.console.command(device.id, "EraseSetting", name=name).reply

    def edit(self, device, chance):
        """Somebody edits the text below the section, as editors do: a new file in the place of the old one."""
        if device.below is None:
            return "not now"
        text = device.file.read_text()
        below = device.first + "".join(f"extend line{chance.randrange(100)} /usr/bin/uptime\n" for _ in range(chance.randrange(20)))
        new = device.file.with_name("edited")
        new.write_text(text[:len(text) - len(device.below)] + below)
        status = device.file.stat()
        os.chown(new, status.st_uid, status.st_gid)
        os.replace(new, device.file)
        device.below = below
        return "done"

    # Questions

    def list(self, _, __):
        answer = self.console.command(1, "GetDeviceList")
        count = answer.body.get("reply", "").count("<deviceId>")
        if count != len(self.world.devices):
            self.checks.say("list", f"the list has {count} devices, not {len(self.world.devices)}")
        return "done"

    def question(self, device, path):
        answer = self.console.ask("GET", f"/devices/{device.id}{path}")
        return answer.body.get("verdict", "done") if answer.status == 200 else answer.code

    def look(self, device, _):
        return self.question(device, "")

    def file(self, device, _):
        return self.question(device, "/file")

    def findings(self, device, _):
        return self.question(device, "/findings")

    def history(self, device, _):
        return self.question(device, "/history")

    def drift(self, device, _):
        return self.question(device, "/drift")

    def probe(self, device, _):
        return self.question(device, "/effective")

    def preview(self, device, chance):
        answer = self.console.ask("POST", f"/devices/{device.id}/preview", {"settings": self.draw(chance).body(), "accepted": []})
        return answer.body.get("verdict", answer.code)

    # The controller, the line and the daemon

    def act(self, device, action):
        answer = self.console.ask("POST", f"/devices/{device.id}/actions", {"action": action, "device": device.name})
        return answer.reply or answer.code

    def start(self, device, _):
        return self.act(device, "start")

    def stop(self, device, _):
        return self.act(device, "stop")

    def reboot(self, device, _):
        return self.act(device, "reboot")

    def fail(self, device, chance):
        operation = chance.choice(("CopyFrom", "CopyTo", "RebootController", "StartMasterAgent", "StopMasterAgent"))
        return self.console.command(device.id, "FailOperation", operation=operation, status="-150", times="1").reply

    def offline(self, device, chance):
        if device.is_online and chance.random() > AWAY:
            return "stays"
        device.is_online = not device.is_online
        return self.console.command(device.id, "SetOnline", online="true" if device.is_online else "false").reply

    def cut(self, device, chance):
        line = self.world.line_of[device.id]
        count = chance.randrange(12000)
        if count < 2000:
            self.world.lines.tell(line.cut)
        else:
            line.bytes_left = count
        return "done"

    def dead(self, device, chance):
        line = self.world.line_of[device.id]
        if not line.is_dead and chance.random() > AWAY:
            return "stays"
        line.is_dead = not line.is_dead
        self.world.lines.tell(line.cut)
        return "dead" if line.is_dead else "back"

    def kill_daemon(self, device, _):
        daemon = self.glance(device)["daemon"]
        if not daemon or not daemon["running"]:
            return "none runs"
        os.kill(daemon["pid"], signal.SIGKILL)
        return "done"

    # The project

    def manage(self, device, chance):
        answer = self.console.ask(chance.choice(("PUT", "DELETE")), f"/devices/{device.id}/managed")
        return "done" if answer.status == 200 else answer.code

    def announce(self, device, _):
        self.console.command(device.id, "Withdraw")
        return self.console.command(device.id, "Announce").reply

    def flag(self, _, chance):
        variable = chance.randrange(1, VARIABLES + 1)
        value = chance.random() < 0.5
        owner = self.world.devices[variable % len(self.world.devices)].id
        answer = self.console.ask("PUT", f"/variables/{owner}/{variable}", {"trapEnabled": value})
        self.flags[variable].add(value)
        return "done" if answer.status == 200 else answer.code
