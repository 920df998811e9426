// The same page, and a controller behind SSH with a daemon of its own.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, before, describe, test } from "node:test";
import { Console, served, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch, open } from "./support/Browser.js";
import { Program, freeUdpPort } from "./support/processes.js";
import { SshServer } from "./support/SshServer.js";
import { until } from "./support/until.js";

describe("a controller behind SSH", () => {
  const folder = new Folder(), controller = new SshServer();
  let browser, console, page, port, daemon;

  // As the controller's own service would do it.
  const startDaemon = async () => {
    if (daemon) await daemon.end();
    daemon = new Program("snmpd", ["-f", "-Lo", "-C", "-c", controller.file, "-I", "-smux", "-m", "", "-M", "/nonexistent"],
      { env: { ...process.env, SNMP_PERSISTENT_DIR: folder.path("data"), SNMPCONFPATH: folder.path("none") } });
  };

  before(async () => {
    port = await freeUdpPort();
    await controller.start(`agentaddress udp:127.0.0.1:${port}\n`);
    const { project } = await writeProject(folder, `<driver id="20" name="garage" module="ssh_snmpd.so">${controller.element}</driver>`);
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    page = await open(browser, console.address);
  });
  after(async () => {
    await browser.close();
    await console.end();
    if (daemon) await daemon.end();
    await controller.end();
    folder.remove();
  });

  const apply = async (verb) => {
    await page.getByRole("region", { name: "Difference of the file" }).waitFor();
    const boxes = page.getByRole("checkbox", { name: /^Go on in spite of/ });
    for (let n = 0; n < await boxes.count(); ++n) await boxes.nth(n).check();
    const button = page.getByRole("button", { name: verb });
    await until("the change may be made", async () => (await button.getAttribute("aria-disabled")) === "false");
    await button.click();
    await page.getByRole("heading", { name: "The change is made" }).waitFor();
  };

  test("gets settings that its daemon serves", async () => {
    await page.getByRole("link", { name: "garage" }).click();
    await page.getByRole("combobox", { name: "Read community" }).selectOption("replace");
    await page.getByLabel("New: Read community").fill("zg-garage");
    await page.getByRole("textbox", { name: "Name", exact: true }).fill("garage east");
    await page.getByRole("button", { name: "Review …" }).click();
    await apply("Apply");
    assert.match(readFileSync(controller.file, "utf8"), /^rocommunity {2}zg-garage$/m);
    await startDaemon();
    await until("the daemon serves the name", async () => (await served(folder, port, "zg-garage", "name", 0.5)) === "garage east");
    await goTo(page, "devices/20/daemon");
    await page.getByRole("button", { name: "Ask the daemon" }).click();
    // It listens on the controller alone, as its file says, and the controller is this machine.
    await page.getByText("The daemon serves what is configured.").waitFor();
    await page.getByText(`:${port}`).waitFor();
  });

  test("is put back", async () => {
    await goTo(page, "devices/20/history");
    await page.getByRole("button", { name: "Undo … (change 1)" }).click();
    await apply("Put back");
    assert.doesNotMatch(readFileSync(controller.file, "utf8"), /zg-garage/);
    assert.deepEqual(page.trouble, []);
  });
});
