// What scripts/run --console shows to somebody who tries it for the first time.
import assert from "node:assert/strict";
import { test } from "node:test";
import { Program } from "./support/processes.js";
import { until } from "./support/until.js";

test("the demonstration runs two real daemons, and ends with Ctrl-C", async () => {
  const root = new URL("../..", import.meta.url).pathname;
  const demo = new Program("scripts/run", ["--console"], { cwd: root, detached: true });
  try {
    const [, address, token] = await until("the address is printed", () => {
      assert.ok(demo.isRunning, demo.text);
      return /(http:\/\/127\.0\.0\.1:\d+)\/#(\S+)/.exec(demo.text);
    }, 300000);
    await until("the daemons are said to run", () => demo.text.includes("The daemons of kitchen and cellar run."), 60000);
    const { devices } = await (await fetch(address + "/api/v1/devices", { headers: { "X-Devhost-Token": token } })).json();
    assert.deepEqual(devices.map((d) => [d.name, d.daemon && d.daemon.running]), [["kitchen", true], ["cellar", true], ["attic", null]]);
  } finally {
    process.kill(-demo.pid, "SIGINT");  // a terminal sends it to the whole group
  }
  assert.deepEqual(await demo.ended, { status: 0, signal: null });
});
