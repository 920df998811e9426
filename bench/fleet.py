"""Changes one setting on many controllers over SSH: devhost fleet, Ansible, a loop of ssh, and the least that it can cost.

Every controller is an address of loopback with the distribution's real sshd behind it, run by an ordinary user with keys made
for the run, as the tests do it. In a round each way takes its turn, and the best of its turns counts.
"""
import argparse
import asyncio
import os
import pathlib
import pwd
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

PATH = "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"
ADDRESSES_OF_A_SERVER = 16  # sshd takes no more ListenAddress lines
DELAY = 0.02

SETTINGS = """<managedDevice><snmpCommunityReadSetting>garden</snmpCommunityReadSetting>
<snmpSysContactSetting>{word}</snmpSysContactSetting><deviceId>{{deviceId}}</deviceId></managedDevice>
"""
FIRST_TEXT = "# A file written by hand.\n" + "".join(
    f"extend line{number} /usr/bin/uptime\n" for number in range(40)) + "sysContact nobody\n"

PLAYBOOK = """- hosts: all
  gather_facts: false
  tasks:
    - ansible.builtin.blockinfile:
        path: "{{ file }}"
        block: "sysContact {{ word }}"
      notify: tell the daemon
  handlers:
    - name: tell the daemon
      ansible.builtin.command: "true"
"""


class Servers:
    """The controllers: 127.0.1.1 and so on, each with a file of its own."""

    def __init__(self, folder, count):
        self.folder = folder
        self.is_root = os.geteuid() == 0
        self.account = pwd.getpwnam("nobody") if self.is_root else pwd.getpwuid(os.geteuid())
        self.hosts = [f"127.0.1.{number}" for number in range(1, count + 1)]
        self.files = [folder / f"c{number}" / "snmpd.conf" for number in range(1, count + 1)]
        self.key = folder / "client"
        self.known = folder / "known"
        self.port = 22022
        self.proxy_port = 22023
        self.processes = []
        for name in ("host", "client"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / name], check=True)
        host_key = (folder / "host.pub").read_text().split()[:2]
        self.known.write_text("".join(
            f"[{host}]:{port} {host_key[0]} {host_key[1]}\n" for host in self.hosts for port in (self.port, self.proxy_port)))
        shutil.copy(folder / "client.pub", folder / "authorized")
        account = f"controller:x:{self.account.pw_uid}:{self.account.pw_gid}::{folder}/home:/bin/sh\n"
        (folder / "passwd").write_text(account)
        (folder / "group").write_text(f"controller:x:{self.account.pw_gid}:\n")
        (folder / "home").mkdir()
        for file in self.files:
            file.parent.mkdir()
            file.write_text(FIRST_TEXT)
        for first in range(0, count, ADDRESSES_OF_A_SERVER):
            self.start(self.hosts[first:first + ADDRESSES_OF_A_SERVER])

    def start(self, hosts):
        folder = self.folder
        config = folder / f"config-{hosts[0]}"
        listen = "".join(f"ListenAddress {host}\n" for host in hosts)
        config.write_text(
            f"Port {self.port}\n{listen}HostKey {folder}/host\nAuthorizedKeysFile {folder}/authorized\nPidFile none\nUsePAM no\n"
            f"StrictModes no\nPasswordAuthentication no\nKbdInteractiveAuthentication no\nMaxStartups 1000\nMaxSessions 100\n"
            f"PrintMotd no\nSubsystem sftp internal-sftp\nSetEnv PATH={PATH}\n")
        words = ["/usr/sbin/sshd", "-D", "-e", "-f", str(config)]
        if self.is_root:
            user, group = str(self.account.pw_uid), str(self.account.pw_gid)
            subprocess.run(["chown", "-R", f"{user}:{group}", folder], check=True)
            words = ["setpriv", "--reuid", user, "--regid", group, "--clear-groups", "--"] + words
        environment = {"PATH": PATH, "LD_PRELOAD": "libnss_wrapper.so", "NSS_WRAPPER_PASSWD": f"{folder}/passwd",
                       "NSS_WRAPPER_GROUP": f"{folder}/group"}
        self.processes.append(subprocess.Popen(words, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                               stderr=open(folder / f"log-{hosts[0]}", "w")))
        deadline = time.monotonic() + 20
        while self.run_ssh(hosts[-1], "true").returncode != 0:
            if time.monotonic() > deadline or self.processes[-1].poll() is not None:
                sys.exit("the SSH server does not start: " + (folder / f"log-{hosts[0]}").read_text())

    def ssh_words(self, port):
        return ["ssh", "-F", "none", "-p", str(port), "-i", str(self.key), "-o", "BatchMode=yes", "-o",
                f"UserKnownHostsFile={self.known}", "-l", "controller"]

    def run_ssh(self, host, command):
        return subprocess.run(self.ssh_words(self.port) + [host, command], stderr=subprocess.DEVNULL, check=False)

    def stop(self):
        for process in self.processes:
            process.terminate()
        for process in self.processes:
            process.wait()


class Proxy(threading.Thread):
    """A slow line to each controller: every byte takes DELAY in each direction."""

    def __init__(self, servers):
        super().__init__(daemon=True)
        self.servers = servers
        self.is_ready = threading.Event()
        self.start()
        self.is_ready.wait()

    def run(self):
        asyncio.run(self.serve())

    async def serve(self):
        for host in self.servers.hosts:
            await asyncio.start_server(lambda reader, writer, host=host: self.connect(reader, writer, host), host,
                                       self.servers.proxy_port)
        self.is_ready.set()
        await asyncio.Event().wait()

    async def connect(self, reader, writer, host):
        far_reader, far_writer = await asyncio.open_connection(host, self.servers.port)
        await asyncio.gather(self.move(reader, far_writer), self.move(far_reader, writer))

    @staticmethod
    async def move(reader, writer):
        loop = asyncio.get_running_loop()
        try:
            while part := await reader.read(65536):
                loop.call_later(DELAY, writer.write, part)
        except ConnectionError:
            pass
        loop.call_later(DELAY, writer.close)


class Ways:
    """The ways to change all controllers, as functions of the port, the word of the new setting, and which controllers."""

    def __init__(self, servers, options):
        self.servers = servers
        self.options = options
        self.folder = servers.folder

    def devhost(self, port, word, count):
        folder = self.folder / f"project-{port}-{count}"
        if not folder.exists():
            folder.mkdir()
            drivers = "".join(
                f'<driver id="{10 + number}" name="c{number}" module="ssh_snmpd.so"><config host="{host}" port="{port}" '
                f'user="controller" key="{self.servers.key}" knownHosts="{self.servers.known}" file="{file}" restart="true"/>'
                '</driver>' for number, (host, file) in enumerate(zip(self.servers.hosts[:count], self.servers.files), 1))
            (folder / "project.xml").write_text(
                f'<project><driver id="1" name="agent" module="snmp_configuration_agent.so"/>{drivers}</project>')
            (folder / "fleet.xml").write_text('<fleet settings="settings.xml"><project file="project.xml"/></fleet>')
        (folder / "settings.xml").write_text(SETTINGS.format(word=word))
        return [self.options.devhost, "fleet", "apply", folder / "fleet.xml", "--yes", "--jobs", str(count), "--module-dir",
                self.options.modules]

    def ansible(self, port, word, count):
        inventory = self.folder / f"inventory-{port}-{count}"
        inventory.write_text("".join(
            f"{host} ansible_port={port} file={file}\n"
            for host, file in zip(self.servers.hosts[:count], self.servers.files)))
        (self.folder / "playbook.yml").write_text(PLAYBOOK)
        return ["env", f"ANSIBLE_FORKS={count}", "ANSIBLE_PIPELINING=true", "ANSIBLE_SSH_USETTY=false",
                "ANSIBLE_HOST_KEY_CHECKING=true", "ANSIBLE_PYTHON_INTERPRETER=/usr/bin/python3",
                f"ANSIBLE_REMOTE_TMP={self.folder}/home/.ansible", f"ANSIBLE_LOCAL_TEMP={self.folder}/local",
                f"ANSIBLE_SSH_ARGS=-F none -o ControlMaster=auto -o ControlPersist=5s -o UserKnownHostsFile={self.servers.known}",
                f"ANSIBLE_SSH_CONTROL_PATH_DIR={self.folder}/cp", "ansible-playbook", "-i", inventory, "-u", "controller",
                "--private-key", self.servers.key, "-e", f"word={word}", self.folder / "playbook.yml"]

    def loop(self, port, word, count):
        ssh = " ".join(self.servers.ssh_words(port))
        script = "failed=0\n"
        for number, (host, file) in enumerate(zip(self.servers.hosts[:count], self.servers.files), 1):
            copy = self.folder / f"copy{number}"
            script += (f"({ssh} {host} 'cat {file}' >{copy} && "
                       f"sed '$s/.*/sysContact {word}/' {copy} >{copy}.new && {{ cmp -s {copy} {copy}.new || {ssh} {host} "
                       f"'cat >{file}.new && sync {file}.new && mv -f {file}.new {file} && true' <{copy}.new; }}) &\n"
                       f"pids=\"$pids $!\"\n")
        path = self.folder / f"loop-{port}-{count}"
        path.write_text(script + "for pid in $pids; do wait $pid || failed=1; done\nexit $failed\n")
        return ["sh", path]

    def floor(self, port, word, count):
        return [self.options.floor, self.servers.key, self.servers.known, "controller", word] + [
            f"{host}:{port}:{file}" for host, file in zip(self.servers.hosts[:count], self.servers.files)]


def children_of(pid):
    try:
        found = [int(word) for word in pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]
    except OSError:
        return []
    return found + [child for each in found for child in children_of(each)]


def memory_of(pid):
    """Of the process and all below it, in KB: its private memory and its share of what it shares."""
    total = 0
    for each in [pid] + children_of(pid):
        try:
            total += int(re.search(r"^Pss: +(\d+)", pathlib.Path(f"/proc/{each}/smaps_rollup").read_text(), re.M).group(1))
        except (OSError, AttributeError):
            pass
    return total


def run(words, measure_memory=False):
    """Returns the seconds that the command took, or its highest memory in KB."""
    with tempfile.TemporaryFile() as output:
        begin = time.monotonic()
        process = subprocess.Popen([str(word) for word in words], stdout=output, stderr=output, stdin=subprocess.DEVNULL)
        most = 0
        while measure_memory and process.poll() is None:
            most = max(most, memory_of(process.pid))
            time.sleep(0.02)
        status = process.wait()
        seconds = time.monotonic() - begin
        if status != 0:
            output.seek(0)
            sys.exit(f"{words[0]} has ended with status {status}:\n" + output.read().decode(errors="replace")[-3000:])
    return most if measure_memory else seconds


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--devhost", required=True)
    parser.add_argument("--modules", required=True)
    parser.add_argument("--floor", required=True)
    parser.add_argument("--counts", default="1,16,100", help="how many controllers, with commas")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--without", default="", help="ways to leave out, with commas: ansible, loop")
    options = parser.parse_args()
    counts = [int(count) for count in options.counts.split(",")]
    without = options.without.split(",")
    with tempfile.TemporaryDirectory(prefix="fleet-bench-") as name:
        folder = pathlib.Path(name)
        folder.chmod(0o755)
        servers = Servers(folder, max(counts))
        try:
            measure(Ways(servers, options), servers, counts, options.rounds, without)
        finally:
            servers.stop()


def measure(ways, servers, counts, rounds, without):
    Proxy(servers)
    names = [name for name in ("floor", "devhost", "loop", "ansible") if name not in without]
    number = 0
    print(f"{'controllers':>11}  {'line':<6}  {'run':<9}" + "".join(
        f"{name:>9} s" for name in names) + f"{'of floor':>10}{'ansible of it':>15}", flush=True)
    for count in counts:
        for port, line in ((servers.port, "direct"), (servers.proxy_port, "20 ms")):
            best = {}
            for _ in range(rounds):
                for name in names:
                    number += 1
                    way = getattr(ways, name)
                    word = f"word{number}"
                    for what in ("changes", "unchanged"):
                        # The floor of a run that has nothing to change only reads.
                        words = way(port, "" if name == "floor" and what == "unchanged" else word, count)
                        seconds = run(words)
                        best[what, name] = min(best.get((what, name), seconds), seconds)
            for what in ("changes", "unchanged"):
                times = [best[what, name] for name in names]
                share = best[what, "devhost"] / best[what, "floor"]
                rival = f"{best[what, 'ansible'] / best[what, 'devhost']:>15.1f}" if "ansible" in names else f"{'-':>15}"
                print(f"{count:>11}  {line:<6}  {what:<9}" + "".join(f"{seconds:>11.2f}" for seconds in times) +
                      f"{share:>10.2f}{rival}", flush=True)
    print("\nhighest memory of a run by its controllers, in MB (without sshd)")
    for count in counts:
        number += 1
        kilobytes = run(ways.devhost(servers.port, f"word{number}", count), measure_memory=True)
        print(f"{count:>11}  devhost {kilobytes / 1024 / count:>6.1f}", flush=True)


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    main()
