"""The steps of a soak that end the host process or the console and start it again, and what must be there afterwards."""
import http.client
import os
import signal
import threading
import time


class Restarts:
    """Work has the rest."""

    def restart_host(self, _, __):
        self.read_flags()
        self.console.restart_host()
        self.begin_again(True)
        return "done"

    def restart_console(self, _, __):
        self.read_flags()
        status = self.console.stop()
        if status != 0:
            self.checks.say("stop", f"the console has ended with status {status}: " + self.console.errors.read_text()[-1000:])
        self.checks.nothing_is_left({self.world.ssh.process.pid})
        self.checks.states(False)
        self.console.start()
        self.begin_again(True)
        return "done"

    def kill_host(self, device, chance):
        """Kills the process with the drivers while it makes a change."""
        settings = self.draw(chance)
        device.give(settings)
        device.has_leftovers = True
        self.glance(device)
        host = self.console.host_pid()
        change = threading.Thread(target=self.change_in_vain, args=(device, settings))
        change.start()
        time.sleep(chance.random() * 0.08)
        os.kill(host, signal.SIGKILL)
        change.join()
        deadline = time.monotonic() + 30
        while self.console.host_state()["state"] != "ended" and time.monotonic() < deadline:
            time.sleep(0.01)
        self.checks.nothing_is_left({self.world.ssh.process.pid, self.console.process.pid})
        self.console.restart_host()
        self.begin_again(False)
        return "done"

    def change_in_vain(self, device, settings):
        connection = http.client.HTTPConnection("127.0.0.1", self.console.port, timeout=60)
        try:
            self.console.ask("POST", "/command", {"driver": 1, "name": "SetDeviceState", "parameters": {"xml": settings.element(device.id)}},
                             connection=connection)
        except (OSError, http.client.HTTPException):
            pass
        finally:
            connection.close()

    def begin_again(self, is_clean):
        """After a restart: what was kept is there, and what was not is known no more."""
        for device in self.world.devices:
            device.may_be_filled = device.may_be_filled or not is_clean or device.kind == "simulated"
        self.console.ask("GET", "/devices")
        self.check_flags(is_clean)
        self.checks.states(not is_clean)
        for device in self.world.devices:
            self.checks.files_of(device)

    def check_flags(self, is_clean):
        """Flags that were set since the last clean stop are lost when the host is killed, and only then."""
        for each in self.console.ask("GET", "/variables").body["variables"]:
            known = self.flags[each["id"]]
            wanted = {self.now[each["id"]]} if is_clean else known
            if each["trapEnabled"] not in wanted:
                self.checks.say(("flag", each["id"]), f"the flag of variable {each['id']} has become {each['trapEnabled']}")
            self.flags[each["id"]] = {each["trapEnabled"]}

    def read_flags(self):
        self.now = {each["id"]: each["trapEnabled"] for each in self.console.ask("GET", "/variables").body["variables"]}
