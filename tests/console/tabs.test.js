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
