"""Measures devhost serve beside Python's static server, or its memory over many changes of a device.
usage: console.py BUILD_FOLDER [--applies COUNT]"""

import atexit
import http.client
import json
import os
import statistics
import subprocess
import sys
import tempfile
import threading
import time

REQUESTS = 10000


def start(words, folder):
    began = time.monotonic()
    process = subprocess.Popen(words, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return process, began


def console(build, folder):
    """Starts a console with two devices. Returns the process, its port, its token and when it began."""
    with open(folder + "/project.xml", "w") as file:
        file.write('<project><driver id="1" name="agent" module="snmp_configuration_agent.so"/>')
        for number, name in ((12, "kitchen"), (13, "hall")):
            os.mkdir(folder + "/" + name)
            file.write(f'<driver id="{number}" name="{name}" module="simulated_device.so"><config folder="{{project}}/{name}"/></driver>')
        file.write("</project>")
    process, began = start([build + "/bin/devhost", "serve", "--project", folder + "/project.xml"], folder)
    atexit.register(process.terminate)  # also where something fails on the way
    address, token = process.stdout.readline().split()[1].split("/#")
    return process, int(address.rsplit(":", 1)[1]), token, began


def rate(port, path, headers, count, fresh=False):
    """Requests on one connection, or each on a fresh one. Returns how many were answered in a second, and the median in ms."""
    connection = http.client.HTTPConnection("127.0.0.1", port)
    times = []
    for _ in range(count):
        began = time.monotonic()
        if fresh:
            connection.close()
        connection.request("GET", path, headers=headers)
        answer = connection.getresponse()
        answer.read()
        times.append(time.monotonic() - began)
        if answer.status != 200:
            sys.exit(f"{path}: {answer.status}")
    return count / sum(times), statistics.median(times) * 1000


def resident(pid):
    with open(f"/proc/{pid}/status") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))


def host_process(front):
    """The process with the drivers: the child of the one that watches it."""
    def child(pid):
        with open(f"/proc/{pid}/task/{pid}/children") as file:
            return int(file.read().split()[0])
    return child(child(front))


def applies(port, token, front, count):
    """Changes a device over and over, and prints the memory of both processes after each tenth of that."""
    connection = http.client.HTTPConnection("127.0.0.1", port)
    key = {"X-Devhost-Token": token, "Content-Type": "application/json"}

    def ask(method, path, body=None, more=None):
        connection.request(method, "/api/v1" + path, json.dumps(body) if body else None, {**key, **(more or {})})
        answer = connection.getresponse()
        text = answer.read()
        if answer.status != 200:
            sys.exit(f"{path}: {answer.status} {text.decode()}")
        return json.loads(text)

    ask("GET", "/devices")
    base = ask("GET", "/devices/12")["base"]
    host = host_process(front)
    edit = {"enabled": True, "readCommunity": {"keep": True}, "writeCommunity": {"keep": True}, "contact": "", "usePrimaryContact": False,
            "location": "", "useOwnerAddress": False, "useRoomDevice": False, "trapTargets": []}
    print("  applies   front KiB   host KiB   ms each")
    began, done = time.monotonic(), 0
    for number in range(1, count + 1):
        made = ask("PUT", "/devices/12/settings", {"settings": {**edit, "name": f"kitchen {number}"}, "accepted": []}, {"If-Match": base})
        if made["verdict"] != "changed":
            sys.exit(f"apply {number}: {made}")
        base = ask("GET", "/devices/12")["base"]
        if number % max(count // 10, 1) == 0:
            each = (time.monotonic() - began) * 1000 / (number - done)
            print(f"{number:9d} {resident(front):11d} {resident(host):10d} {each:9.1f}", flush=True)
            began, done = time.monotonic(), number


def event_delays(port, token, count):
    """Times from a request that makes the host process report something until the event is here, in ms."""
    stream = http.client.HTTPConnection("127.0.0.1", port)
    stream.request("GET", "/api/v1/events", headers={"X-Devhost-Token": token})
    events = stream.getresponse()
    arrived = threading.Event()
    at = [0.0]

    def listen():
        for line in events:
            if b'"kind":"command"' in line:
                at[0] = time.monotonic()
                arrived.set()

    threading.Thread(target=listen, daemon=True).start()
    connection = http.client.HTTPConnection("127.0.0.1", port)
    delays = []
    for _ in range(count):
        arrived.clear()
        began = time.monotonic()
        connection.request("POST", "/api/v1/command", '{"driver":1,"name":"GetDeviceList","parameters":{}}',
                           {"X-Devhost-Token": token, "Content-Type": "application/json"})
        answer = connection.getresponse()
        answer.read()
        if answer.status != 200:
            sys.exit(f"command: {answer.status}")
        if not arrived.wait(10):
            sys.exit("an event has not arrived")
        delays.append((at[0] - began) * 1000)
    return delays


def main():
    build = os.path.abspath(sys.argv[1])
    page = os.path.abspath(os.path.dirname(__file__) + "/../devhost/page")
    with tempfile.TemporaryDirectory() as folder:
        process, port, token, began = console(build, folder)
        if len(sys.argv) > 2:
            applies(port, token, process.pid, int(sys.argv[3]))
            process.terminate()
            sys.exit(process.wait())
        key = {"X-Devhost-Token": token}
        rate(port, "/api/v1/session", key, 1)
        first = (time.monotonic() - began) * 1000
        rate(port, "/api/v1/devices", key, 1)
        devices = (time.monotonic() - began) * 1000
        print(f"first answer after start    {first:8.1f} ms")
        print(f"first list of devices       {devices:8.1f} ms")
        delays = event_delays(port, token, 200)
        print(f"request to event            {statistics.median(delays):8.2f} ms  (worst of 200: {max(delays):.2f} ms)")
        rival, _ = start([sys.executable, "-u", "-m", "http.server", "--bind", "127.0.0.1", "0"], page)
        atexit.register(rival.terminate)
        rival_port = int(rival.stdout.readline().split(" port ")[1].split()[0])
        ours = rate(port, "/", {}, 2000, fresh=True)
        theirs = rate(rival_port, "/", {}, 2000, fresh=True)
        rival.terminate()
        rival.wait()
        print(f"page, devhost serve         {ours[0]:8.0f} /s  (median {ours[1]:.2f} ms)")
        print(f"page, python3 http.server   {theirs[0]:8.0f} /s  (median {theirs[1]:.2f} ms)")
        session = rate(port, "/api/v1/session", key, 2000)
        print(f"session                     {session[0]:8.0f} /s  (median {session[1]:.2f} ms)")
        before = resident(process.pid)
        listed = rate(port, "/api/v1/devices", key, REQUESTS)
        print(f"devices, by the host        {listed[0]:8.0f} /s  (median {listed[1]:.2f} ms)")
        print(f"memory of the front         {before:8d} KiB, and {resident(process.pid)} KiB after {REQUESTS} more requests")
        process.terminate()
        if process.wait() != 0:
            sys.exit("the console did not end in order")


main()
