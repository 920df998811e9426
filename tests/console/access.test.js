// The page for everybody: by keyboard alone, in the dark, on a narrow window, enlarged, with a screen reader.
import assert from "node:assert/strict";
import { after, before, describe, test } from "node:test";
import { Console, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch, open, picture, tooWide, violations } from "./support/Browser.js";
import { until } from "./support/until.js";

const WINDOWS = {
  light: { colorScheme: "light" },
  dark: { colorScheme: "dark" },
  narrow: { viewport: { width: 320, height: 700 } },
  "narrow-dark": { viewport: { width: 320, height: 700 }, colorScheme: "dark" },
  enlarged: { viewport: { width: 640, height: 450 }, deviceScaleFactor: 2 },  // 200 % of 1280 by 900
};

describe("the page", () => {
  const folder = new Folder();
  let browser, console;

  before(async () => {
    const { project } = await writeProject(folder);
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    await console.call("POST", "/command", { driver: 1, name: "StartMasterAgent", parameters: { deviceId: "12" } });
    await console.get("/devices/12/effective");
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  const ready = {
    devices: (page) => page.getByRole("link", { name: "kitchen" }).waitFor(),
    "devices/12/settings": (page) => page.getByRole("textbox", { name: "Name", exact: true }).waitFor(),
    "devices/12/daemon": async (page) => {
      await page.getByRole("button", { name: "Ask the daemon" }).click();
      await page.getByRole("region", { name: "What the daemon serves" }).waitFor();
    },
    "devices/12/file": (page) => page.getByRole("region", { name: "snmpd.conf" }).waitFor(),
    "devices/12/history": (page) => page.getByText(/Each change keeps a snapshot|Look, or put back/).waitFor(),
    variables: (page) => page.getByLabel("Trap for humidity of cellar").waitFor(),
    log: (page) => page.getByRole("log", { name: "What happens" }).waitFor(),
    conversation: (page) => page.getByRole("button", { name: "Send" }).waitFor(),
    activity: (page) => page.getByRole("img", { name: /^kitchen/ }).waitFor(),
  };

  for (const [name, options] of Object.entries(WINDOWS)) {
    test(`has nothing that axe objects to, and does not scroll sideways: ${name}`, async () => {
      const page = await open(browser, console.address, { reducedMotion: "reduce", ...options });
      const look = async (what) => {
        await picture(page, `${what}-${name}`);
        assert.deepEqual(await violations(page), [], what);
        assert.deepEqual(await tooWide(page), [], what);
      };
      for (const [view, wait] of Object.entries(ready)) {
        await goTo(page, view);
        await wait(page);
        await look(view.replace(/\/.*\//, "-"));
      }
      await goTo(page, "devices/12/settings");
      await page.getByRole("textbox", { name: "Name", exact: true }).fill("# kitchen");
      await page.getByRole("combobox", { name: "Read community" }).selectOption("replace");
      await page.getByLabel("New: Read community").fill("public");
      await page.getByText("value-begins-with-hash").waitFor();
      await look("findings");
      await page.getByRole("textbox", { name: "Name", exact: true }).fill("kitchen north");
      await page.getByRole("button", { name: "Review …" }).click();
      await page.getByRole("region", { name: "Difference of the file" }).waitFor();
      await look("review");
      await page.getByRole("button", { name: "Back", exact: true }).click();
      await goTo(page, "devices/12/daemon");
      await page.getByRole("button", { name: "Reboot …" }).click();
      await page.getByRole("dialog").waitFor();
      await look("confirm");
      assert.deepEqual(page.trouble, []);
      await page.context().close();
    });
  }

  test("shows what is refused and what has ended", async () => {
    for (const colorScheme of ["light", "dark"]) {
      const page = await open(browser, console.origin + "/", { colorScheme });
      await page.getByRole("heading", { name: "The address is not complete" }).waitFor();
      await picture(page, "refused-" + colorScheme);
      assert.deepEqual(await violations(page), []);
      await page.context().close();
    }
  });

  test("is used by keyboard alone, from the list to a change that is made", async () => {
    const page = await open(browser, console.address);
    await page.getByRole("link", { name: "attic" }).waitFor();
    const focused = () => page.evaluate(() => {
      const e = document.activeElement;
      return (e.getAttribute("aria-label") || (e.labels && e.labels[0] && e.labels[0].innerText) || e.innerText || "").trim();
    });
    // Goes on with Tab until the focus is on something of that name, and sees that it is visible there.
    const tabTo = async (name, key = "Tab") => {
      for (let n = 0; n < 80; ++n) {
        await page.keyboard.press(key);
        if ((await focused()) === name) {
          const box = await page.evaluate(() => {
            const e = document.activeElement, style = getComputedStyle(e), r = e.getBoundingClientRect();
            const top = document.elementFromPoint(r.left + r.width / 2, r.top + Math.min(r.height / 2, 8));
            return { outline: style.outlineStyle, inside: r.top >= 0 && r.bottom <= innerHeight, uncovered: e === top || e.contains(top) || !!(top && top.contains(e)) };
          });
          assert.deepEqual(box, { outline: "solid", inside: true, uncovered: true }, name);
          return;
        }
      }
      assert.fail(`"${name}" is not reached by keyboard`);
    };
    await tabTo("Skip to the content");
    await page.keyboard.press("Enter");
    assert.equal(await page.evaluate(() => document.activeElement.tagName), "MAIN");
    await tabTo("attic");
    await page.keyboard.press("Enter");
    await page.getByRole("textbox", { name: "Name", exact: true }).waitFor();
    await until("the heading of the view has the focus", () => page.evaluate(() => document.activeElement.tagName === "H1"));
    await tabTo("Name");
    await page.keyboard.press("Control+A");
    await page.keyboard.type("attic by keyboard");
    await tabTo("Add a trap target");
    await page.keyboard.press("Enter");
    await tabTo("target of trap target 1", "Shift+Tab");
    await page.keyboard.type("192.0.2.9");
    await tabTo("Add a trap target");
    await page.keyboard.press("Enter");
    await tabTo("target of trap target 2", "Shift+Tab");
    await page.keyboard.type("192.0.2.8");
    await tabTo("Move trap target 2 up");
    await page.keyboard.press("Enter");
    assert.equal(await page.getByLabel("target of trap target 1").inputValue(), "192.0.2.8");
    assert.equal(await focused(), "Move trap target 1 up", "the focus goes with the row");
    await tabTo("Review …");
    await page.keyboard.press("Enter");
    await page.getByRole("region", { name: "Difference of the file" }).waitFor();
    const boxes = page.getByRole("checkbox", { name: /^Go on in spite of/ });
    for (let n = 0; n < await boxes.count(); ++n) {
      await boxes.nth(n).focus();
      await page.keyboard.press("Space");
    }
    await until("the change may be applied", async () => (await page.getByRole("button", { name: "Apply" }).getAttribute("aria-disabled")) === "false");
    await tabTo("Apply");
    await page.keyboard.press("Enter");
    await page.getByRole("heading", { name: "The change is made" }).waitFor();
    await until("the result has the focus", async () => (await focused()) === "The change is made");
    assert.equal((await console.get("/devices/18")).settings.name.value, "attic by keyboard");
    await picture(page, "applied-light");
    await page.context().close();
  });

  test("keeps the focus where what had it goes away", async () => {
    const page = await open(browser, console.address);
    await page.getByRole("link", { name: "kitchen" }).click();
    const name = page.getByRole("textbox", { name: "Name", exact: true });
    const press = async (words) => {
      await page.getByRole("button", { name: words, exact: true }).focus();
      await page.keyboard.press("Enter");
    };
    const focusIsOn = async (locator, after) => {
      await until("the focus is kept after " + after, () => locator.evaluate((e) => e === document.activeElement));
      assert.notEqual(await page.evaluate(() => document.activeElement.tagName), "BODY");
    };
    const heading = page.getByRole("heading", { level: 1, name: "kitchen" });
    await name.fill("kitchen south");
    await press("Undo the change of Name");
    await page.getByText("Nothing is changed.").waitFor();
    await focusIsOn(name, "the undo of a text");
    await page.getByLabel("From the room device").check();
    await press("Undo the change of Name from the project");
    await page.getByText("Nothing is changed.").waitFor();
    await focusIsOn(page.getByLabel("From the room device"), "the undo of a switch");
    await press("Move trap target 2 up");
    await press("Undo the change of Trap targets");
    await page.getByText("Nothing is changed.").waitFor();
    await focusIsOn(page.getByRole("button", { name: "Add a trap target" }), "the undo of the trap targets");
    await page.getByRole("combobox", { name: "Read community" }).selectOption("replace");
    await press("Undo the change of Read community");
    await page.getByText("Nothing is changed.").waitFor();
    await focusIsOn(page.getByRole("combobox", { name: "Read community" }), "the undo of a community");

    await name.fill("kitchen south");
    await page.getByRole("button", { name: "Review …" }).click();
    await page.getByRole("region", { name: "Difference of the file" }).waitFor();
    await press("Back");
    await name.waitFor();
    await focusIsOn(heading, "the way back");
    for (const words of ["Take it over, keep my changes", "Discard my changes"]) {
      await name.fill("kitchen south");
      await name.focus();
      assert.equal((await console.call("POST", "/host/restart", {})).status, 200);
      await focusIsOn(page.getByRole("heading", { level: 2, name: "The host was started again" }), "the end of the form");
      await press(words);
      await name.waitFor();
      await focusIsOn(heading, words);
    }
    await page.context().close();
  });

  test("tells a screen reader where it is", async () => {
    const page = await open(browser, console.address + "");
    await page.getByRole("link", { name: "kitchen" }).click();
    await page.getByRole("textbox", { name: "Name", exact: true }).waitFor();
    for (const role of ["banner", "main", "contentinfo"]) assert.equal(await page.getByRole(role).count(), 1, role);
    assert.equal(await page.getByRole("navigation", { name: "Views" }).count(), 1);
    assert.equal(await page.getByRole("heading", { level: 1, name: "kitchen" }).count(), 1);
    await until("the window has the title of the view", async () => /^kitchen – project\.xml$/.test(await page.title()));
    const described = await page.getByRole("textbox", { name: "Name", exact: true }).getAttribute("aria-describedby");
    await page.getByRole("textbox", { name: "Name", exact: true }).fill("# kitchen");
    await page.getByText("value-begins-with-hash").waitFor();
    assert.ok(await page.evaluate((ids) => ids.split(" ").some((id) => document.getElementById(id)?.textContent.includes("begins with #")), described), "the finding describes its field");
    await page.context().close();
  });
});
