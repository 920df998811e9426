#!/usr/bin/python
"""Gives SNMP settings to the snmpd.conf of a host, through "devhost apply --file"."""

import json

from ansible.module_utils.basic import AnsibleModule

DOCUMENTATION = """
module: snmp_settings
short_description: Give SNMP settings to an snmpd.conf through the SNMP configuration agent
description:
  - Runs C(devhost apply --file) on the host. The agent writes its section and leaves the rest of the file alone.
  - Nothing is written when the file is as the settings say.
attributes:
  check_mode: {support: full}
  diff_mode: {support: full}
options:
  file: {description: The snmpd.conf., type: path, required: true}
  settings:
    description: The device settings element, of device 1. It holds communities, so it reaches devhost by its standard input.
    type: str
    required: true
  accept: {description: Rules whose errors do not stop the change., type: list, elements: str, default: []}
  snapshots: {description: Where the file of before is kept; beside the file by default., type: path}
  devhost: {description: The program., type: path, default: devhost}
  module_dir: {description: Where the program finds the agent, if not beside itself., type: path}
  restart_command: {description: "The program, with its arguments, that has the daemon read a changed file.", type: str}
  restart:
    description:
      - Whether the restart command is run when it is due. Otherwise it stays due, and the module reports a change, until it has been run.
    type: bool
    default: false
"""

RETURN = """
verdict: {description: What devhost says has become of the change., type: str, returned: always}
restart_due: {description: Whether the restart command is still to be run., type: bool, returned: always}
snapshot: {description: The number of the snapshot, or null., type: int, returned: always}
findings: {description: What surprises in the settings and the file; communities are masked., type: list, returned: always}
stage: {description: How far devhost had come., type: str, returned: failure}
"""


def restart_words(given, check_mode):
    """What devhost is to run when the file was changed. A command that fails keeps the restart due."""
    if not given["restart_command"]:
        return None
    return given["restart_command"] if given["restart"] or check_mode else "false"


def is_restart_due(answer, status):
    """Whether all is well, but the daemon has not been told of the file yet."""
    left_due = answer["verdict"] == "failed" and answer.get("stage") == "restart"
    return left_due or (answer["verdict"] == "unchanged" and status == 1)


def main():
    module = AnsibleModule(
        argument_spec=dict(
            file=dict(type="path", required=True),
            settings=dict(type="str", required=True, no_log=True),
            accept=dict(type="list", elements="str", default=[]),
            snapshots=dict(type="path"),
            devhost=dict(type="path", default="devhost"),
            module_dir=dict(type="path"),
            restart_command=dict(type="str"),
            restart=dict(type="bool", default=False),
        ),
        supports_check_mode=True,
    )
    given = module.params
    command = [module.get_bin_path(given["devhost"], required=True), "apply", "--json"]
    command += ["--dry-run" if module.check_mode else "--yes", "--file", given["file"]]
    for option, value in (
        ("--accept", ",".join(given["accept"])),
        ("--snapshots", given["snapshots"]),
        ("--module-dir", given["module_dir"]),
        ("--restart-command", restart_words(given, module.check_mode)),
    ):
        if value:
            command += [option, value]
    status, output, errors = module.run_command(command + ["-"], data=given["settings"])
    try:
        answer = json.loads(output)
        result = {name: answer[name] for name in ("verdict", "snapshot", "findings")}
        difference = answer["difference"]
        due = is_restart_due(answer, status) and given["restart_command"] and not given["restart"]
    except (ValueError, KeyError):
        module.fail_json(msg="devhost ended with status %d: %s" % (status, errors.strip() or "it printed nothing"))
    result["restart_due"] = bool(due)
    if due:
        result["verdict"] = "changed" if answer["changed"] else "unchanged"
    result["changed"] = result["restart_due"] or result["verdict"] in ("would-change", "changed", "failed")
    result["diff"] = {"prepared": difference}
    if result["verdict"] not in ("unchanged", "would-change", "changed"):
        module.fail_json(msg=answer.get("reason", "the change was not made"), stage=answer.get("stage"), **result)
    module.exit_json(**result)


if __name__ == "__main__":
    main()
