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
"""

RETURN = """
verdict: {description: What devhost says has become of the change., type: str, returned: always}
snapshot: {description: The number of the snapshot, or null., type: int, returned: always}
findings: {description: What surprises in the settings and the file; communities are masked., type: list, returned: always}
stage: {description: How far devhost had come., type: str, returned: failure}
"""


def main():
    module = AnsibleModule(
        argument_spec=dict(
            file=dict(type="path", required=True),
            settings=dict(type="str", required=True, no_log=True),
            accept=dict(type="list", elements="str", default=[]),
            snapshots=dict(type="path"),
            devhost=dict(type="path", default="devhost"),
            module_dir=dict(type="path"),
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
    ):
        if value:
            command += [option, value]
    status, output, errors = module.run_command(command + ["-"], data=given["settings"])
    try:
        answer = json.loads(output)
        result = {name: answer[name] for name in ("verdict", "snapshot", "findings")}
        difference = answer["difference"]
    except (ValueError, KeyError):
        module.fail_json(msg="devhost ended with status %d: %s" % (status, errors.strip() or "it printed nothing"))
    result["changed"] = result["verdict"] in ("would-change", "changed", "failed")
    result["diff"] = {"prepared": difference}
    if result["verdict"] not in ("unchanged", "would-change", "changed"):
        module.fail_json(msg=answer.get("reason", "the change was not made"), stage=answer.get("stage"), **result)
    module.exit_json(**result)


if __name__ == "__main__":
    main()
