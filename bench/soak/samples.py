"""What is measured while the soak runs."""
import os
import pathlib
import re
import time

from checks import name_of


def proportional_memory(pid):
    """Private memory of a process and its share of what it shares, in KB."""
    try:
        return int(re.search(r"^Pss: +(\d+)", pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(), re.M).group(1))
    except (OSError, AttributeError):
        return 0


def entries(path):
    try:
        return len(os.listdir(path))
    except OSError:
        return 0


def size_of(folder, pattern="*"):
    """Returns the number of files below a folder and their bytes."""
    sizes = []
    for path in folder.rglob(pattern):
        try:
            if path.is_file():
                sizes.append(path.stat().st_size)
        except OSError:
            pass  # it has just gone
    return len(sizes), sum(sizes)


class Samples:
    """Rows of figures by time, and the time that each step took."""

    def __init__(self, its_world, console):
        self.world = its_world
        self.console = console
        self.begin = time.monotonic()
        self.rows = []
        self.is_whole = True  # nobody has ended the run early
        self.steps = []  # (when, step, kind of device, outcome, seconds, seconds of the processor in the host process)

    def take(self):
        front, host, daemons = self.console.processes()
        running = [pid for pid in daemons if name_of(pid) == "snmpd"]
        drivers = host[-1] if host else 0
        snapshots = self.world.folder / "project.xml.snapshots"
        state_files, state_bytes = size_of(self.world.folder / "states")
        number, snapshot_bytes = size_of(snapshots)
        count = sum(1 for _ in snapshots.glob("*/*/about.xml"))
        self.rows.append({
            "seconds": time.monotonic() - self.begin,
            "front KB": proportional_memory(front),
            "host KB": sum(map(proportional_memory, host)),
            "daemon KB": sum(map(proportional_memory, daemons)) / len(running) if running else 0,
            "daemons": len(running),
            "front descriptors": entries(f"/proc/{front}/fd"),
            "host descriptors": entries(f"/proc/{drivers}/fd"),
            "threads": sum(entries(f"/proc/{pid}/task") for pid in [front, *host]),
            "helpers": len(host) + len(daemons) - 3 * len(running),
            "state KB": state_bytes / 1000,
            "state files": state_files,
            "device files": sum(entries(device.file.parent) for device in self.world.devices),
            "snapshots": count,
            "snapshot bytes": snapshot_bytes / count if count else 0})

    def add_step(self, name, kind, outcome, seconds, used):
        self.steps.append((time.monotonic() - self.begin, name, kind, outcome, seconds, used))
