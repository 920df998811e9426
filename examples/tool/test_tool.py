#!/usr/bin/env python3
"""Tests tool.py with what the agent said in recorded conversations. Needs no devhost, no agent and no device."""
import contextlib
import io
import json
import os
import sys
import unittest
import xml.etree.ElementTree as xml

sys.dont_write_bytecode = True  # the folder may be the installed one
import tool  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
# Among the sources, and as packages install them.
CONVERSATIONS = next(folder for folder in (os.path.join(HERE, "..", "..", "contract", "conversations"),
                                           os.path.join(HERE, "..", "..", "..", "snmp-configuration-agent", "contract", "conversations"))
                     if os.path.isdir(folder))


class Recorded:
    """A tool.Session that answers each command as the agent did, and keeps what was sent."""

    def __init__(self, name):
        with open(os.path.join(CONVERSATIONS, name, "conversation.ndjson"), encoding="utf-8") as lines:
            self.ahead = [what for what in map(json.loads, lines) if what.get("driver") == "agent"]
        self.sent = []

    def command(self, name, **parameters):
        self.sent.append((name, parameters))
        while (self.ahead[0]["kind"], self.ahead[0].get("name")) != ("command", name):
            self.ahead.pop(0)
        told = []
        for what in self.ahead:
            if what["kind"] == "notification":
                told.append(xml.fromstring(what["xml"]))
            elif what["kind"] == "reply":
                self.ahead.remove(what)
                return xml.fromstring(what["xml"]), told
        raise EOFError("the conversation is over")


def printed(action, *arguments):
    """What the action returned and printed."""
    with contextlib.redirect_stdout(io.StringIO()) as output:
        result = action(*arguments)
    return result, output.getvalue()


class ToolTest(unittest.TestCase):
    def devices(self, session):
        return session.command("GetDeviceList")[0]

    def test_lists_no_devices(self):
        self.assertEqual(printed(tool.print_devices, self.devices(Recorded("empty-project")))[1], "")

    def test_lists_devices_in_the_order_of_their_ids(self):
        text = printed(tool.print_devices, self.devices(Recorded("two-devices")))[1]
        self.assertEqual(text, "12 kitchen not managed\n34 cellar not managed\n")

    def test_sends_all_settings_back_with_the_new_name(self):
        session = Recorded("change")
        result = printed(tool.rename, session, self.devices(session), "12", "kitchen <north>")
        self.assertEqual(result, (True, "Success DeviceChanged 12\n"))
        sent = xml.fromstring(session.sent[-1][1]["xml"])
        self.assertEqual(len(sent), 13)
        self.assertEqual(sent.findtext("snmpSysNameSetting"), "kitchen <north>")
        self.assertEqual(sent.findtext("snmpSysContactSetting"), "Ada Example")

    def test_sends_line_breaks_in_a_name_as_they_are(self):
        session = Recorded("change")
        printed(tool.rename, session, self.devices(session), "12", "a\rb\nc")
        self.assertEqual(xml.fromstring(session.sent[-1][1]["xml"]).findtext("snmpSysNameSetting"), "a\rb\nc")

    def test_says_that_a_file_could_not_be_written(self):
        session = Recorded("write-fail")
        devices = [xml.fromstring("<managedDevice><snmpSysNameSetting/><deviceId>12</deviceId></managedDevice>")]
        self.assertEqual(printed(tool.rename, session, devices, "12", "cellar"), (False, "WriteFail\n"))


if __name__ == "__main__":
    unittest.main()
