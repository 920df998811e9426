"""Tests of bench/soak: what it judges by, and the program for a few seconds."""
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import threading
import time
import types
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench/soak"))

import curves  # noqa: E402
import devices  # noqa: E402
import report  # noqa: E402

STAMP = "Saturday, November, 21 2026 at 14:05:09"


def points(function, noise=0.0):
    chance = random.Random(1)
    return [(x, function(x) + noise * chance.uniform(-1, 1)) for x in range(120)]


class ACurve(unittest.TestCase):
    def test_that_rises_all_the_time_grows(self):
        self.assertTrue(curves.grows(points(lambda x: 1000 + x), 10))
        self.assertTrue(curves.grows(points(lambda x: 1000 + x, noise=100), 10))

    def test_that_stays_does_not_grow(self):
        self.assertFalse(curves.grows(points(lambda x: 1000), 10))
        self.assertFalse(curves.grows(points(lambda x: 1000, noise=300), 10))
        self.assertFalse(curves.grows(points(lambda x: 1000 - x), 10))

    def test_with_one_step_does_not_grow(self):
        self.assertFalse(curves.grows(points(lambda x: 1000 if x < 20 else 2000), 10))

    def test_with_a_few_wild_points_does_not_grow(self):
        self.assertFalse(curves.grows(points(lambda x: 9999 if x % 10 == 9 else 1000), 10))

    def test_that_rises_by_less_than_its_allowance_does_not_grow(self):
        self.assertTrue(curves.grows(points(lambda x: 100 + x / 10), 11))
        self.assertFalse(curves.grows(points(lambda x: 100 + x / 10), 13))

    def test_that_rises_by_a_small_share_of_its_middle_does_not_grow(self):
        self.assertFalse(curves.grows(points(lambda x: 10000 + x), 10))

    def test_of_few_points_says_nothing(self):
        self.assertFalse(curves.grows(points(lambda x: 1000 * x)[:10], 10))


class ADevice(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.device = devices.Device(12, "simulated", self.folder.name + "/snmpd.conf")
        self.old = devices.Settings(read="one two", contact="Ada", targets=(("192.0.2.5", "three", "162"), ("nms", "", "")))
        self.new = devices.Settings(read="four", name="kitchen")

    def write(self, settings, below=None):
        self.device.file.write_text(settings.section(STAMP, "32473") + "\n" + (below or self.device.below))
        return self.device.problem("32473")

    def test_may_have_no_section_before_the_first_change(self):
        self.device.file.write_text(self.device.below)
        self.assertIsNone(self.device.problem("32473"))
        self.assertIn("the section is none", self.write(self.old))

    def test_may_show_the_last_change_or_the_one_before_until_it_is_confirmed(self):
        self.device.give(self.old)
        self.device.give(self.new)
        self.assertIsNone(self.write(self.old))
        self.assertIsNone(self.write(self.new))
        self.device.confirm()
        self.assertIsNone(self.write(self.new))
        self.assertIn("the section is none", self.write(self.old))

    def test_keeps_the_text_below_its_section_to_the_byte(self):
        self.device.give(self.old)
        self.device.confirm()
        self.assertIn("below the section", self.write(self.old, self.device.below + "\n"))

    def test_has_the_section_that_the_documentation_shows(self):
        page = (ROOT / "docs/managed-section.md").read_text()
        shown = page.split("```text example=new\n")[1].split("\n\n# An older daemon's settings.")[0] + "\n"
        settings = devices.Settings("read placeholder", "write-placeholder", "Ada, ground floor", "Kitchen, left of the door", "kitchen",
                                    (("192.0.2.5", "trap placeholder", "162"), ("nms.example", "", "")))
        self.assertEqual(settings.section(STAMP, "32473"), shown)

    def test_gets_the_settings_of_its_element(self):
        self.assertEqual(devices.Settings.of_element(self.old.element(12)), self.old)


class AReport(unittest.TestCase):
    def test_judges_the_curves_of_a_whole_run_only(self):
        rows = [dict(dict.fromkeys(report.ALLOWANCES, 10000 * second), seconds=second) for second in range(0, 1200, 10)]
        samples = types.SimpleNamespace(is_whole=True, rows=rows)
        self.assertTrue(all(grows for *_, grows in report.judge_curves(samples)))
        samples.is_whole = False
        self.assertFalse(any(grows for *_, grows in report.judge_curves(samples)))


class ASoak(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = pathlib.Path(scratch.name)
        self.scratch.chmod(0o755)
        (self.scratch / "tmp").mkdir()
        (self.scratch / "tmp").chmod(0o755)

    def start(self, hours, program=os.environ.get("DEVHOST")):
        words = [sys.executable, "-B", ROOT / "bench/soak", str(hours), "--devices", "6", "--seed", "1", "--devhost", program,
                 "--modules", os.environ["MODULES"], "--output", self.scratch / "report"]
        environment = dict(os.environ, TMPDIR=str(self.scratch / "tmp"))
        return subprocess.Popen(words, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def end(self, process):
        """Returns the status and the output, and looks at what was left."""
        output = process.communicate(timeout=600)[0]
        self.assertEqual(os.listdir(self.scratch / "tmp"), [], output)
        self.assertEqual(self.processes(), [], output)
        return process.returncode, output

    def processes(self):
        """Returns the command lines of processes that know the scratch folder."""
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if str(self.scratch).encode() in (entry / "environ").read_bytes() and int(entry.name) != os.getpid():
                    found.append((entry / "cmdline").read_bytes().replace(b"\0", b" ").decode())
            except OSError:
                pass
        return found

    def device_file(self):
        """Returns the file of the first device, as soon as it has a section."""
        deadline = time.monotonic() + 300
        while time.monotonic() < deadline:
            for file in (self.scratch / "tmp").glob("soak-*/simulated*/snmpd.conf"):
                if "Section End" in file.read_text():
                    return file
            time.sleep(0.01)
        self.fail("no device has got a section")

    def program(self, text):
        """Returns a program that stands in for devhost."""
        file = self.scratch / "devhost"
        file.write_text(f"#!/bin/sh\n{text}\n")
        file.chmod(0o755)
        return file

    def test_of_a_few_seconds_finds_nothing(self):
        status, output = self.end(self.start(0.001))
        self.assertEqual(status, 0, output)
        self.assertIn("all invariants held; the run was too short to judge curves", output)
        self.assertIn("soak: 6 devices, seed 1, ", output)
        for step in ("set ", "apply ", "undo ", "kill host ", "restart console ", "cut ", "flag "):
            self.assertIn("\n" + step, output)
        self.assertIn("</svg>", (self.scratch / "report/soak.svg").read_text())
        self.assertIn("minute  front MB", (self.scratch / "report/report.txt").read_text())

    def test_finds_a_text_below_a_section_that_has_changed(self):
        process = self.start(0.001)
        spoil = threading.Thread(target=lambda: self.spoil(self.device_file()))
        spoil.start()
        status, output = self.end(process)
        spoil.join()
        self.assertEqual(status, 1, output)
        self.assertIn("snmpd.conf: below the section is not the text that was there", output)

    @staticmethod
    def spoil(file):
        while True:  # until the agent's next change keeps it: an edit may come between its reading and its writing
            try:
                if not file.read_text().endswith("# not the agent's\n"):
                    with open(file, "a") as end:
                        end.write("# not the agent's\n")
                time.sleep(0.02)
            except OSError:
                return  # the soak is over

    def test_finds_a_secret_that_is_shown(self):
        status, output = self.end(self.start(0.001, self.program(f'[ "$1" = serve ] || exec {os.environ["DEVHOST"]} "$@"\n'
                                                                 f'exec {os.environ["DEVHOST"]} "$@" --show-secrets')))
        self.assertEqual(status, 1, output)
        self.assertIn("shows the secret 'hush", output)

    def test_finds_a_process_that_was_left_and_ends_it(self):
        status, output = self.end(self.start(0.001, self.program('[ "$1" = serve ] && setsid sleep 300 >/dev/null 2>&1 &\n'
                                                                 f'exec {os.environ["DEVHOST"]} "$@"')))
        self.assertEqual(status, 1, output)
        self.assertIn("(sleep)", output)

    def test_that_is_interrupted_leaves_nothing_and_reports_what_it_did(self):
        process = self.start(1)
        self.device_file()
        process.send_signal(signal.SIGINT)
        status, output = self.end(process)
        self.assertNotEqual(status, 0, output)
        self.assertIn("interrupted", output)


if __name__ == "__main__":
    unittest.main()
