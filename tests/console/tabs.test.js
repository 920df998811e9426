// Browsers open at most six connections to a host, and each stream of events is one.
import assert from "node:assert/strict";
import { after, before, describe, test } from "node:test";
import { Console, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch } from "./support/Browser.js";

describe("eight tabs of one window", () => {
  const folder = new Folder();
  let browser, console, context;
  const tabs = [];

  before(async () => {
    const { project } = await writeProject(folder);
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    context = await browser.newContext();
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  // A browser without a screen shows every page, so the page is told what a browser would tell it.
  const show = async (tab) => {
    for (const each of tabs) {
      await each.evaluate((hidden) => {
        Object.defineProperty(document, "hidden", { configurable: true, get: () => hidden });
        document.dispatchEvent(new Event("visibilitychange"));
      }, each !== tab);
    }
  };

  test("all work, although each has followed the events", async () => {
    for (let n = 0; n < 8; ++n) {
      const tab = await context.newPage();
      tab.setDefaultTimeout(60000);
      await show();
      await tab.goto(console.address);
      await tab.getByRole("link", { name: "attic" }).waitFor();
      tabs.push(tab);
    }
  });

  test("a tab that is seen again has what it missed", async () => {
    await show();
    await console.call("PUT", "/devices/18/managed", {});
    for (const tab of [tabs[0], tabs[5]]) {
      await goTo(tab, "log");
      await show(tab);
      await tab.getByText("AddManagedDevice").first().waitFor();
      assert.equal(await tab.getByText("devhost serve does not answer.").count(), 0);
    }
  });

  test("a tab that nobody sees does not follow", async () => {
    await show();
    await console.call("DELETE", "/devices/18/managed");
    await new Promise((later) => setTimeout(later, 1000));
    assert.equal(await tabs[0].getByText("DeleteManagedDevice").count(), 0);
    await show(tabs[0]);
    await tabs[0].getByText("DeleteManagedDevice").first().waitFor();
  });
});

describe("a host process that does nothing for a while", () => {
  const folder = new Folder();
  let browser, console, context, page, hosts = [];

  before(async () => {
    const { project } = await writeProject(folder);
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    context = await browser.newContext();
    page = await context.newPage();
    await page.goto(console.address);
    await page.getByRole("link", { name: "attic" }).click();
    await page.getByRole("textbox", { name: "Name", exact: true }).waitFor();
    hosts = await console.hostProcesses();
    for (const pid of hosts) process.kill(pid, "SIGSTOP");
  });
  after(async () => {
    await browser.close();
    for (const pid of hosts) process.kill(pid, "SIGCONT");
    await console.end();
    folder.remove();
  });

  // The rules judge each pause of the typing, and each view reads something.
  test("takes no connection for what nobody waits for any more", async () => {
    await page.getByRole("textbox", { name: "Name", exact: true }).pressSequentially("xxxxxxxx", { delay: 350 });
    for (const view of ["devices/18/file", "devices/18/history", "devices/12/file", "devices/18/settings"]) {
      await goTo(page, view);
      await page.locator(`a[href="#/${view}"][aria-current="page"]`).waitFor();
    }
    const other = await context.newPage();
    await other.goto(console.address, { timeout: 10000 });
    await other.getByText(/^host (up|busy)$/).waitFor({ timeout: 10000 });
    for (const pid of hosts) process.kill(pid, "SIGCONT");
    await other.getByRole("link", { name: "attic" }).waitFor({ timeout: 20000 });
    assert.match(await page.getByRole("textbox", { name: "Name", exact: true }).inputValue(), /x{8}/);
  });
});
