"""The console that the soak works with: devhost serve, its processes, and its interface for programs."""
import http.client
import json
import pathlib
import signal
import subprocess
import threading
import time

import world


IDLE = 5.0  # seconds; the console waits for a request on an open connection for 10


class Broken(Exception):
    """Something that must never happen has happened."""


class Answer:
    def __init__(self, status, body):
        self.status = status
        self.body = body

    @property
    def code(self):
        return self.body.get("error", {}).get("code", "")

    @property
    def reply(self):
        """The name of the element that a driver has answered."""
        return self.body.get("reply", "").lstrip("<").partition(">")[0].rstrip("/")


class Console:
    """One devhost serve after another, on the same project and the same folder of states."""

    def __init__(self, program, modules, its_world):
        self.words = [program, "serve", "--project", its_world.project, "--state", its_world.folder / "states", "--module-dir", modules]
        self.errors = its_world.folder / "errors"
        self.secrets = []   # what no answer and no event may show
        self.leak = None
        self.events = 0
        self.asked = 0.0

    def start(self):
        with open(self.errors, "ab") as errors:
            self.process = world.start(self.words, stdout=subprocess.PIPE, stderr=errors, text=True)
        line = self.process.stdout.readline().split()
        if not line:
            raise Broken("the console does not start: " + self.errors.read_text()[-2000:])
        address, self.token = line[1].split("/#")
        self.port = int(address.rsplit(":", 1)[1])
        self.connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=120)
        threading.Thread(target=self.listen, daemon=True).start()
        self.wait_for_host()

    def stop(self):
        """Ends the console as Ctrl-C does. Returns its exit status."""
        self.connection.close()
        self.process.send_signal(signal.SIGTERM)
        status = self.process.wait(60)
        self.process.stdout.close()
        return status

    def listen(self):
        """Reads the events, as a page does, until the console ends."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port)
        try:
            connection.request("GET", "/api/v1/events", headers={"X-Devhost-Token": self.token})
            for line in connection.getresponse():
                self.events += 1
                self.look_for_secrets("an event", line.decode())
        except (OSError, http.client.HTTPException):
            pass  # the console has ended
        finally:
            connection.close()

    def look_for_secrets(self, what, text):
        for secret in self.secrets:
            if secret in text and not self.leak:
                self.leak = f"{what} shows the secret {secret!r}: {text[:2000]}"

    def ask(self, method, path, body=None, base=None, connection=None):
        has_body = method in ("PUT", "POST")
        headers = {"X-Devhost-Token": self.token}
        if has_body:
            headers["Content-Type"] = "application/json"
        if base is not None:
            headers["If-Match"] = base
        connection = connection or self.connection
        if time.monotonic() - self.asked > IDLE:
            connection.close()  # the console does so, too; the next request opens it again
        connection.request(method, "/api/v1" + path, json.dumps(body or {}) if has_body else None, headers)
        answer = connection.getresponse()
        text = answer.read().decode()
        self.asked = time.monotonic()
        self.look_for_secrets(f"{method} {path}", text)
        return Answer(answer.status, json.loads(text))

    def command(self, driver, name, /, **parameters):
        return self.ask("POST", "/command", {"driver": driver, "name": name, "parameters": parameters})

    def host_state(self):
        return self.ask("GET", "/session").body["host"]

    def wait_for_host(self):
        deadline = time.monotonic() + 60
        while (state := self.host_state())["state"] not in ("up", "busy"):
            if time.monotonic() > deadline or self.process.poll() is not None:
                raise Broken(f"the host process does not start: {state}")
            time.sleep(0.01)

    def restart_host(self):
        self.ask("POST", "/host/restart")
        deadline = time.monotonic() + 60
        while self.host_state()["state"] not in ("starting", "ended") and time.monotonic() < deadline:
            time.sleep(0.001)
        self.wait_for_host()

    def processes(self):
        """Returns the ids of the front, of the host process and its helpers, and of the daemons with their keepers."""
        host, daemons = [], []
        for pid in descendants(self.process.pid):
            words = pathlib.Path(f"/proc/{pid}/comm")
            try:
                name = words.read_text().strip()
            except OSError:
                continue
            (daemons if name in ("snmpd", "keeper") else host).append(pid)
        return self.process.pid, host, daemons

    def host_pid(self):
        """Returns the process that has the drivers: the innermost one that is neither daemon nor keeper."""
        return self.processes()[1][-1]


def children(pid):
    try:
        return [int(word) for task in pathlib.Path(f"/proc/{pid}/task").iterdir()
                for word in (task / "children").read_text().split()]
    except OSError:
        return []


def descendants(pid):
    """Returns the ids of all processes below one, those nearer to it first."""
    found = []
    for child in children(pid):
        found += [child] + descendants(child)
    return found


def process_state(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0]
    except OSError:
        return None


def processor_time(pid):
    """Returns the seconds that a process with one thread has run, to the nanosecond."""
    return int(pathlib.Path(f"/proc/{pid}/schedstat").read_text().split()[0]) / 1e9
