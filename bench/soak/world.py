"""What the soak works on: a folder with a project, an SSH server for some of its devices, and lines to that server."""
import asyncio
import ctypes
import os
import pathlib
import pwd
import shutil
import signal
import socket
import subprocess
import threading
import time
import xml.sax.saxutils

from devices import Device

PATH = "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"
SHARES = (("simulated", 0.44), ("local", 0.28), ("ssh", 0.2), ("offline", 0.08))  # of the devices
VARIABLES = 40
PR_SET_PDEATHSIG, PR_SET_CHILD_SUBREAPER = 1, 36
LIBC = ctypes.CDLL(None)


def adopt_orphans():
    """From now on, what is left of a process below this one becomes a child of this one: nothing hides."""
    LIBC.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_with_parent():
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)


def start(words, **options):
    """Starts a program in a session of its own, so that Ctrl-C does not reach it before this process has."""
    return subprocess.Popen([str(word) for word in words], start_new_session=True, preexec_fn=end_with_parent,
                            stdin=subprocess.DEVNULL, **options)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def shares_of(count):
    """Returns the kind of each device, with each kind at least once."""
    numbers = [max(1, round(count * share)) for _, share in SHARES[1:]]
    numbers.insert(0, max(1, count - sum(numbers)))
    return [kind for (kind, _), number in zip(SHARES, numbers) for _ in range(number)]


class SshServer:
    """The distribution's sshd, run by an ordinary user with keys made for this run."""

    def __init__(self, folder):
        self.folder = folder
        self.port = free_port()
        self.is_root = os.geteuid() == 0
        self.account = pwd.getpwnam("nobody") if self.is_root else pwd.getpwuid(os.geteuid())
        (folder / "home").mkdir(parents=True)
        for name in ("host", "client"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / name], check=True)
        shutil.copy(folder / "client.pub", folder / "authorized")
        (folder / "passwd").write_text(f"controller:x:{self.account.pw_uid}:{self.account.pw_gid}::{folder}/home:/bin/sh\n")
        (folder / "group").write_text(f"controller:x:{self.account.pw_gid}:\n")
        (folder / "config").write_text(
            f"Port {self.port}\nListenAddress 127.0.0.1\nHostKey {folder}/host\nAuthorizedKeysFile {folder}/authorized\n"
            f"PidFile none\nUsePAM no\nStrictModes no\nPasswordAuthentication no\nKbdInteractiveAuthentication no\n"
            f"MaxStartups 1000\nPrintMotd no\nSetEnv PATH={PATH}\n")

    def give(self, path):
        """Hands a folder to the account that the server runs as."""
        if self.is_root:
            for each in [path, *path.rglob("*")]:
                os.chown(each, self.account.pw_uid, self.account.pw_gid)

    def start(self):
        self.give(self.folder)
        words = ["/usr/sbin/sshd", "-D", "-e", "-f", self.folder / "config"]
        if self.is_root:
            words = ["setpriv", "--reuid", str(self.account.pw_uid), "--regid", str(self.account.pw_gid), "--clear-groups", "--"] + words
        environment = {"PATH": PATH, "LD_PRELOAD": "libnss_wrapper.so", "NSS_WRAPPER_PASSWD": f"{self.folder}/passwd",
                       "NSS_WRAPPER_GROUP": f"{self.folder}/group"}
        self.process = start(words, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        deadline = time.monotonic() + 20
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return
            except OSError:
                if time.monotonic() > deadline or self.process.poll() is not None:
                    raise SystemExit("the SSH server does not start")
                time.sleep(0.05)

    def stop(self):
        self.process.terminate()
        self.process.wait()


class Line:
    """The line to one controller. It can be cut, at once or after some bytes, and it can be dead for a while."""

    def __init__(self, server_port):
        self.server_port = server_port
        self.port = 0
        self.is_dead = False
        self.bytes_left = None
        self.writers = set()

    async def connect(self, reader, writer):
        if self.is_dead:
            writer.transport.abort()
            return
        try:
            far_reader, far_writer = await asyncio.open_connection("127.0.0.1", self.server_port)
        except OSError:
            writer.transport.abort()
            return
        pair = {writer, far_writer}
        self.writers |= pair
        try:
            await asyncio.gather(self.move(reader, far_writer), self.move(far_reader, writer))
        finally:
            self.writers -= pair

    async def move(self, reader, writer):
        try:
            while part := await reader.read(65536):
                if self.bytes_left is not None:
                    part = part[:self.bytes_left]
                    self.bytes_left -= len(part)
                writer.write(part)
                await writer.drain()
                if self.bytes_left == 0:
                    self.bytes_left = None
                    self.cut()
                    return
        except ConnectionError:
            pass
        writer.close()

    def cut(self):
        for writer in self.writers:
            writer.transport.abort()


class Lines(threading.Thread):
    """All lines, served by a thread of its own."""

    def __init__(self, server_port, count):
        super().__init__(daemon=True)
        self.lines = [Line(server_port) for _ in range(count)]
        self.loop = asyncio.new_event_loop()
        self.is_ready = threading.Event()
        self.start()
        self.is_ready.wait()

    def run(self):
        self.loop.run_until_complete(self.listen())
        self.is_ready.set()
        self.loop.run_forever()

    async def listen(self):
        for line in self.lines:
            server = await asyncio.start_server(line.connect, "127.0.0.1", 0)
            line.port = server.sockets[0].getsockname()[1]

    def tell(self, action):
        """Does something to lines, in their own thread."""
        done = threading.Event()
        self.loop.call_soon_threadsafe(lambda: (action(), done.set()))
        done.wait()


class World:
    """The folder of a run: a project with devices of all kinds, and what answers behind them."""

    def __init__(self, folder, count):
        self.folder = pathlib.Path(folder)
        self.folder.chmod(0o755)  # the account of the SSH server has to get through
        self.ssh = SshServer(self.folder / "ssh")
        self.devices = []
        for number, kind in enumerate(shares_of(count), 10):
            device = Device(number, kind, self.folder / f"{kind}{number}" / "snmpd.conf")
            device.file.parent.mkdir()
            device.file.write_text(device.below)
            device.is_out_of_reach = kind == "offline"
            self.devices.append(device)
        self.ssh.start()
        behind = [device for device in self.devices if device.kind in ("ssh", "offline")]
        self.lines = Lines(self.ssh.port, len(behind))
        self.line_of = {device.id: line for device, line in zip(behind, self.lines.lines)}
        key = " ".join((self.ssh.folder / "host.pub").read_text().split()[:2])
        for device in behind:
            self.ssh.give(device.file.parent)
            self.line_of[device.id].is_dead = device.is_out_of_reach
        self.known = self.folder / "known"
        self.known.write_text("".join(f"[127.0.0.1]:{line.port} {key}\n" for line in self.lines.lines))
        self.project = self.folder / "project.xml"
        self.write_project()

    def write_project(self):
        parts = ['<project><driver id="1" name="agent" module="snmp_configuration_agent.so"/>\n']
        for device in self.devices:
            module = {"simulated": "simulated_device.so", "local": "local_snmpd.so"}.get(device.kind, "ssh_snmpd.so")
            parts.append(f'<driver id="{device.id}" name="{device.name}" module="{module}"><config {self.config(device)}/></driver>\n')
        for variable in range(1, VARIABLES + 1):
            parts.append(f'<variable device="{self.devices[variable % len(self.devices)].id}" id="{variable}" name="lamp{variable}"/>\n')
        self.project.write_text("".join(parts) + "</project>\n")

    def config(self, device):
        attributes = {"folder": device.file.parent, "rebootPause": 10}
        if device.kind == "simulated":
            attributes = {"folder": device.file.parent}
        elif device.kind in ("ssh", "offline"):
            # The controller's daemon is a copy of the file: it serves what the file said at its last restart.
            attributes = {"host": "127.0.0.1", "port": self.line_of[device.id].port, "user": "controller",
                          "key": self.ssh.folder / "client", "knownHosts": self.known, "file": device.file,
                          "restart": f"cp {device.file} {self.served(device)}", "start": "true", "stop": "true", "reboot": "true",
                          "connectTimeout": 5, "operationTimeout": 10}
        return " ".join(f"{name}={xml.sax.saxutils.quoteattr(str(value))}" for name, value in attributes.items())

    @staticmethod
    def served(device):
        return device.file.with_name("served.conf")

    def close(self):
        self.ssh.stop()
