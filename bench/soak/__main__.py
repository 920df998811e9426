"""Lets the agent work with devices of all kinds for hours, disturbs it in all ways, and looks whether anything breaks or grows."""
import argparse
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time
import traceback

sys.dont_write_bytecode = True  # nothing is left beside the sources
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / "scripts"))

import plots  # noqa: E402
import report  # noqa: E402
import world as worlds  # noqa: E402
from checks import Checks  # noqa: E402
from console import Broken, Console, children, descendants  # noqa: E402
from samples import Samples  # noqa: E402
from work import Work  # noqa: E402

STORM = 0.25  # of the time: the share at its start in which the host process and the console are killed and restarted, too
PAUSE = 0.1   # between steps, in seconds, of a long soak: it is about time, not about load
LONG = 600.0


def options_of():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("hours", type=float, help="how long; 0.01 is 36 seconds")
    parser.add_argument("--devhost", required=True)
    parser.add_argument("--modules", required=True)
    parser.add_argument("--devices", type=int, default=50)
    parser.add_argument("--seed", default=str(random.SystemRandom().randrange(10 ** 6)))
    parser.add_argument("--output", help="a folder for report.txt, soak.svg and samples.json, which has all figures")
    return parser.parse_args()


def enterprise_of(options):
    """Returns the enterprise number that the agent was built with."""
    words = [options.devhost, "module", f"{options.modules}/snmp_configuration_agent.so"]
    output = subprocess.run(words, stdout=subprocess.PIPE, text=True, check=True).stdout
    return next(line.split()[1] for line in output.splitlines() if line.startswith("enterprise "))


def run(options, world, console):
    """Works until the time is over or somebody interrupts. Returns the report and whether all is well."""
    checks = Checks(world, console, enterprise_of(options))
    work = Work(options.seed, world, console, checks)
    console.start()
    console.ask("GET", "/devices")
    samples = Samples(world, console)
    length = options.hours * 3600
    try:
        go_through(work, samples, checks, length)
        work.restart_console(None, None)
        console.stop()
        checks.nothing_is_left({world.ssh.process.pid})
    except (KeyboardInterrupt, SystemExit):
        samples.is_whole = False
        if not samples.rows:
            raise
    head = (f"soak: {len(world.devices)} devices, seed {options.seed}, {len(samples.steps)} steps in "
            f"{samples.rows[-1]['seconds'] / 60:.1f} minutes" + ("" if samples.is_whole else ", interrupted"))
    text, is_well = report.text_of(samples, checks, work, head)
    return samples, text, is_well and samples.is_whole


def go_through(work, samples, checks, length):
    every = max(0.25, length / 240)
    number, sampled = 0, -every
    while (now := time.monotonic() - samples.begin) < length or number < len(work.first):
        if now - sampled >= every:
            sampled = now
            samples.take()
            checks.processes()
        name, device, chance = work.choose(number, now < STORM * length)
        try:
            outcome, seconds, used = work.do(name, device, chance)
        except Exception as error:
            raise Broken(f"step {number}, {name} of {device.name}: {type(error).__name__}: {error}") from error
        samples.add_step(name, device.kind, outcome, seconds, used)
        number += 1
        if length >= LONG:
            time.sleep(PAUSE)
    samples.take()


def end_all():
    """Ends whatever this run has started, and nothing else: all of it is below this process."""
    for patience, number in ((10, signal.SIGTERM), (10, signal.SIGKILL)):
        deadline = time.monotonic() + patience
        while (left := descendants(os.getpid())) and time.monotonic() < deadline:
            for pid in left if number == signal.SIGKILL else children(os.getpid()):
                try:
                    os.kill(pid, number)
                except ProcessLookupError:
                    pass
            reap()
            time.sleep(0.05)


def reap():
    try:
        while os.waitpid(-1, os.WNOHANG)[0] != 0:
            pass
    except ChildProcessError:
        pass


def main():
    options = options_of()
    for each in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(each, lambda *_: sys.exit(1))
    worlds.adopt_orphans()
    print(f"soak: seed {options.seed}", flush=True)
    with tempfile.TemporaryDirectory(prefix="soak-") as folder:
        world = worlds.World(folder, options.devices)
        console = Console(options.devhost, options.modules, world)
        try:
            samples, text, is_well = run(options, world, console)
        except Broken:
            traceback.print_exc()
            print(console.errors.read_text()[-3000:], file=sys.stderr)
            return 1
        finally:
            end_all()
    print(text)
    if options.output:
        output = pathlib.Path(options.output)
        output.mkdir(parents=True, exist_ok=True)
        (output / "report.txt").write_text(text)
        (output / "soak.svg").write_text(plots.soak(report.table_by_time(samples)))
        (output / "samples.json").write_text(json.dumps({"rows": samples.rows, "steps": samples.steps}))
    return 0 if is_well else 1


sys.exit(main())
