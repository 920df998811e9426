"""What must hold at any time of a soak, and after it."""
import os
import pathlib
import re
import time

from console import descendants, process_state

TEMPORARY = re.compile(r"\.snmpd\.conf\.(new|lock)|\.xml\.new$|\.damaged")
# A server notices a line that was cut when it next reads or writes; then its program removes what it has begun.
PATIENCE = 20.0


class Checks:
    """Looks at files and processes while no request is under way. What is wrong is kept, once for each thing."""

    def __init__(self, its_world, console, enterprise):
        self.world = its_world
        self.console = console
        self.enterprise = enterprise
        self.broken = {}
        self.made = 0

    def say(self, key, text):
        if key not in self.broken:
            self.broken[key] = text
            print(f"BROKEN: {text}", flush=True)

    def files_of(self, device):
        """The file of a device is one that it may be, and nothing lies beside it. A controller behind SSH gets some time."""
        self.made += 1
        deadline = time.monotonic() + (PATIENCE if device.kind == "ssh" else 0)
        while (problem := self.problem_of(device)) and time.monotonic() < deadline:
            time.sleep(0.05)
        if problem:
            self.say((device.id, problem), f"{problem}; it may be {device.given}")
            device.below = None  # said once; from here on nothing is known of it

    def problem_of(self, device):
        if device.below is None:
            return None
        problem = device.problem(self.enterprise)
        if problem:
            return problem
        left = [entry for entry in os.listdir(device.file.parent) if TEMPORARY.search(entry)]
        if left and not device.has_leftovers:
            return f"{device.file.parent}: {left[0]} was left behind"
        return None

    def states(self, may_have_leftovers):
        folder = self.world.folder / "states"
        for entry in os.listdir(folder):
            if TEMPORARY.search(entry) and not (may_have_leftovers and entry.endswith(".new")):
                self.say(("state", entry), f"{folder}/{entry} was left behind")

    def secrets(self):
        if self.console.leak:
            self.say("secret", self.console.leak)

    def processes(self):
        """Each device with a daemon has at most one, and nothing that has ended waits for somebody to notice. A driver notices
        the end of its daemon when it is asked."""
        self.console.ask("GET", "/devices")
        _, _, daemons = self.console.processes()
        running = [pid for pid in daemons if name_of(pid) == "snmpd"]
        most = sum(device.kind == "local" for device in self.world.devices)
        if len(running) > most:
            self.say("daemons", f"{len(running)} daemons run for {most} devices")
        self.ended(descendants(self.console.process.pid))

    def ended(self, pids):
        deadline = time.monotonic() + PATIENCE
        zombies = pids
        while zombies := [pid for pid in zombies if process_state(pid) == "Z"]:
            if time.monotonic() > deadline:
                self.say("zombies", f"the processes {zombies} have ended, and nobody has noticed for {PATIENCE:.0f} s")
                return
            time.sleep(0.05)

    def nothing_is_left(self, known):
        """Of processes that were started below this one, none is left but those that are known."""
        deadline = time.monotonic() + (0 if "left" in self.broken else PATIENCE)
        while True:
            reap_orphans(known)
            left = [pid for pid in descendants(os.getpid()) if not is_below(pid, known)]
            if not left:
                return
            if time.monotonic() > deadline:
                self.say("left", "processes are left: " + ", ".join(f"{pid} ({name_of(pid)})" for pid in left))
                return
            time.sleep(0.05)


def reap_orphans(known):
    """Takes leave of processes that have become children of this one, and have ended."""
    for pid in pathlib.Path(f"/proc/{os.getpid()}/task/{os.getpid()}/children").read_text().split():
        if int(pid) not in known and process_state(pid) == "Z":
            os.waitpid(int(pid), 0)


def is_below(pid, known):
    return pid in known or any(pid in descendants(each) for each in known)


def name_of(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/comm").read_text().strip()
    except OSError:
        return ""
