#!/usr/bin/env python3
"""Lists the devices of a project, or gives one of them another name.

usage: tool.py PROJECT [DEVICE-ID NAME]
"""
import json
import subprocess
import sys
import xml.etree.ElementTree as xml


class ToolError(Exception):
    """Something that the user has to know."""


class Session:
    """A session with the drivers of a project. A line goes in, and objects come out, up to one of kind "done"."""

    def __init__(self, project):
        # Without --show-secrets, communities are shown as *****, and would be sent back so.
        words = ["devhost", "shell", "--json", "--show-secrets", "--project", project]
        self.shell = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8")
        try:
            self.read()
        except ToolError:
            self.end()
            raise

    def read(self):
        """Returns what has happened, up to the end of the start or of a line."""
        seen = []
        for line in self.shell.stdout:
            what = json.loads(line)
            if what["kind"] != "done":
                seen.append(what)
                continue
            errors = [what["text"] for what in seen if what["kind"] == "error"]
            if errors:
                raise ToolError(errors[0])
            return seen
        raise ToolError("devhost has ended")

    def command(self, name, **parameters):
        """Sends a command and returns the agent's reply, and what the agent has told on its own meanwhile."""
        words = ["command", name] + [key + "=" + quoted(value) for key, value in parameters.items()]
        self.shell.stdin.write(" ".join(words) + "\n")
        self.shell.stdin.flush()
        seen = self.read()
        replies = [xml.fromstring(what["xml"]) for what in seen if what["kind"] == "reply"]
        return replies[-1], [xml.fromstring(what["xml"]) for what in seen if what["kind"] == "notification"]

    def end(self):
        """Unloads the drivers, which keeps what they have to keep. Returns whether all went well."""
        self.shell.stdin.close()
        self.shell.stdout.read()
        return self.shell.wait() == 0


def quoted(text):
    """The text as one word of a line."""
    if text.startswith("@"):
        text = "@" + text  # @FILE would be the text of a file
    for character, escape in (("\\", "\\\\"), ('"', '\\"'), ("\n", "\\n"), ("\r", "\\r")):
        text = text.replace(character, escape)
    return '"' + text + '"'


def as_text(element):
    """The element as XML. A carriage return is written as a reference: as it is, a reader takes it for a line feed."""
    return xml.tostring(element, encoding="unicode").replace("\r", "&#13;")


def print_devices(devices):
    for device in devices:
        name = device.findtext("snmpSysNameSetting").replace("\r", "\\r").replace("\n", "\\n")
        managed = "managed" if device.findtext("snmpIsManagedDevice") == "true" else "not managed"
        print(device.findtext("deviceId"), name, managed)


def rename(session, devices, device_id, name):
    """Sends all settings of the device back, since what is missing would be emptied or switched off."""
    for device in devices:
        if device.findtext("deviceId") == device_id:
            device.find("snmpSysNameSetting").text = name
            reply, told = session.command("SetDeviceState", xml=as_text(device))
            print(reply.tag, *[notification.tag + " " + notification.findtext("id") for notification in told])
            return reply.tag == "Success"
    print("there is no device", device_id)
    return False


def main(words):
    if len(words) not in (2, 4):
        sys.exit(__doc__.strip())
    try:
        return work(words)
    except (ToolError, OSError) as error:
        sys.exit("tool.py: " + str(error))


def work(words):
    session = Session(words[1])
    devices, _ = session.command("GetDeviceList")
    good = True
    if len(words) == 4:
        good = rename(session, devices, words[2], words[3])
        devices, _ = session.command("GetDeviceList")
    print_devices(devices)
    return 0 if session.end() and good else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
