// Two people and one device; a draft that nobody may lose.
import assert from "node:assert/strict";
import { after, before, describe, test } from "node:test";
import { Console, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch, open } from "./support/Browser.js";
import { until } from "./support/until.js";

const review = async (page) => {
  await page.getByRole("button", { name: "Review …" }).click();
  await page.getByRole("region", { name: "Difference of the file" }).waitFor();
  const boxes = page.getByRole("checkbox", { name: /^Go on in spite of/ });
  for (let n = 0; n < await boxes.count(); ++n) await boxes.nth(n).check();
  await until("the change may be applied", async () => (await page.getByRole("button", { name: "Apply" }).getAttribute("aria-disabled")) === "false");
};
const apply = async (page) => {
  await review(page);
  await page.getByRole("button", { name: "Apply" }).click();
};

const box = (page, name) => page.getByRole("textbox", { name, exact: true });

describe("two tabs", () => {
  const folder = new Folder();
  let browser, console, mine, other;

  before(async () => {
    const { project } = await writeProject(folder);
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    mine = await open(browser, console.address);
    other = await open(browser, console.address);
    for (const page of [mine, other]) {
      await page.getByRole("link", { name: "attic" }).click();
      await page.getByRole("textbox", { name: "Name", exact: true }).waitFor();
    }
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  test("the second one does not overwrite the first", async () => {
    await mine.getByRole("textbox", { name: "Name", exact: true }).fill("attic mine");
    await review(mine);
    await other.getByRole("textbox", { name: "Location", exact: true }).fill("below the roof");
    await apply(other);
    await other.getByRole("heading", { name: "The change is made" }).waitFor();
    await mine.getByRole("button", { name: "Apply" }).click();
    await mine.getByRole("heading", { name: "Changed meanwhile" }).waitFor();
    assert.match(await mine.getByRole("region", { name: "What has moved" }).innerText(), /Location.*below the roof.*not changed/s);
    assert.equal((await console.get("/devices/18")).settings.name.value, "attic");
  });

  test("what has moved can be taken over, and the own change stays", async () => {
    await mine.getByRole("button", { name: "Take it over, keep my changes" }).click();
    assert.equal(await mine.getByRole("textbox", { name: "Name", exact: true }).inputValue(), "attic mine");
    assert.equal(await mine.getByRole("textbox", { name: "Location", exact: true }).inputValue(), "below the roof");
    await apply(mine);
    await mine.getByRole("heading", { name: "The change is made" }).waitFor();
    const { settings } = await console.get("/devices/18");
    assert.deepEqual([settings.name.value, settings.location.value], ["attic mine", "below the roof"]);
  });

  // Else what is typed at once would be on top of them, and the own change would look like one of somebody else.
  test("after a change, the form does not show the settings from before", async () => {
    let answer;
    const asked = new Promise((done) => { answer = done; });
    await mine.route("**/api/v1/devices/18", (route) => asked.then(() => route.continue()));
    await mine.getByRole("button", { name: "Back to attic" }).click();
    await mine.getByText("Reading the device …").waitFor();
    assert.equal(await mine.getByRole("textbox", { name: "Name", exact: true }).count(), 0);
    answer();
    assert.equal(await mine.getByRole("textbox", { name: "Name", exact: true }).inputValue(), "attic mine");
    await mine.unroute("**/api/v1/devices/18");
  });

  test("a form that is not touched follows the other tab by itself", async () => {
    await other.getByRole("button", { name: "Back to attic" }).click();
    const shows = (name, value) => until(`the other tab shows ${value}`, async () => (await other.getByRole("textbox", { name, exact: true }).inputValue()) === value);
    await shows("Name", "attic mine");
    await mine.getByRole("textbox", { name: "Location", exact: true }).fill("above the stairs");
    await apply(mine);
    await shows("Location", "above the stairs");
    await mine.getByRole("button", { name: "Back to attic" }).click();
  });

  test("the file, its history and the variables follow as well", async () => {
    const seen = (what, words) => until(what, async () => (await other.getByRole("main").innerText()).includes(words));
    await goTo(other, "devices/18/file");
    await seen("the file is there", "above the stairs");
    await box(mine, "Location").fill("in the tower");
    await apply(mine);
    await seen("the file follows", "in the tower");
    await mine.getByRole("button", { name: "Back to attic" }).click();
    await goTo(other, "devices/18/history");
    const changes = () => other.getByRole("region", { name: "Changes" }).getByRole("rowheader").count();
    await until("the changes are there", changes);
    const before = await changes();
    await other.getByRole("button", { name: `Before it, against now (change ${before})` }).click();
    await seen("the difference is there", "+sysLocation  in the tower");
    await box(mine, "Location").fill("on the tower");
    await apply(mine);
    await until("the history follows", async () => (await changes()) === before + 1);
    await seen("the difference to what is now follows", "+sysLocation  on the tower");
    await mine.getByRole("button", { name: "Back to attic" }).click();
    await goTo(other, "variables");
    const flag = other.getByLabel("Trap for humidity of cellar");
    assert.equal(await flag.isChecked(), false);
    await console.call("PUT", "/variables/15/1", { trapEnabled: true });
    await until("the flag follows", () => flag.isChecked());
  });

  test("what went wrong with a variable is said until it goes well", async () => {
    await goTo(other, "variables");
    const fail = () => other.route("**/api/v1/variables/15/1", (route) => route.fulfill({ status: 503, contentType: "application/json", body: '{"error":{"code":"full","message":"too much"}}' }), { times: 1 });
    const flag = other.getByLabel("Trap for humidity of cellar"), alert = other.getByText("too much");
    for (const end of [() => flag.click(), () => other.getByRole("button", { name: "Try again" }).click()]) {
      await fail();
      await flag.click();
      await alert.waitFor();
      await end();
      await alert.waitFor({ state: "detached" });
    }
  });

  test("a draft stays while one looks at other views, and closing the tab asks", async () => {
    await mine.getByRole("textbox", { name: "Contact", exact: true }).fill("Grace");
    await goTo(mine, "log");
    await mine.getByText("Not applied yet: attic").waitFor();
    await mine.getByRole("link", { name: "attic" }).click();
    assert.equal(await mine.getByRole("textbox", { name: "Contact", exact: true }).inputValue(), "Grace");
    const asked = new Promise((resolve) => mine.once("dialog", (dialog) => { resolve(dialog.type()); dialog.dismiss(); }));
    await mine.close({ runBeforeUnload: true });
    assert.equal(await asked, "beforeunload");
    await mine.getByRole("button", { name: "Discard" }).click();
    assert.equal(await mine.getByRole("textbox", { name: "Contact", exact: true }).inputValue(), "");
  });
});

describe("a draft", () => {
  const folder = new Folder();
  let browser, console, page;

  before(async () => {
    const { project } = await writeProject(folder);
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    page = await open(browser, console.address);
    await page.getByRole("link", { name: "attic" }).click();
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  test("is not dropped by an undo", async () => {
    await box(page, "Location").fill("under the roof");
    await apply(page);
    await page.getByRole("button", { name: "Back to attic" }).click();
    await box(page, "Contact").fill("Grace");
    await goTo(page, "devices/18/history");
    await page.getByRole("button", { name: "Undo … (change 1)" }).click();
    await until("the change may be undone", async () => (await page.getByRole("button", { name: "Put back" }).getAttribute("aria-disabled")) === "false");
    await page.getByRole("button", { name: "Put back" }).click();
    await page.getByRole("heading", { name: "The change is made" }).waitFor();
    await goTo(page, "devices/18/settings");
    await page.getByRole("heading", { name: "Changed meanwhile" }).waitFor();
    await page.getByRole("button", { name: "Take it over, keep my changes" }).click();
    assert.deepEqual([await box(page, "Contact").inputValue(), await box(page, "Location").inputValue()], ["Grace", ""]);
  });

  test("stays when its change fails", async () => {
    await review(page);
    await console.call("POST", "/command", { driver: 18, name: "Withdraw", parameters: {} });
    await page.getByRole("button", { name: "Apply" }).click();
    await page.getByRole("heading", { name: "The change has failed" }).waitFor();
    await console.call("POST", "/command", { driver: 18, name: "Announce", parameters: {} });
    await page.getByRole("button", { name: "Back to attic" }).click();
    await page.getByText("Not applied: Contact").waitFor();
    assert.equal(await box(page, "Contact").inputValue(), "Grace");
  });

  test("that was begun while another one is applied is not dropped with that", async () => {
    await review(page);
    let answer;
    const asked = new Promise((done) => { answer = done; });
    await page.route("**/api/v1/devices/18/settings", (route) => asked.then(() => route.continue()));
    await page.getByRole("button", { name: "Apply" }).click();
    await goTo(page, "devices/18/history");
    await page.getByText("Look, or put back").waitFor();
    await goTo(page, "devices/18/settings");
    await box(page, "Location").fill("on the roof");
    answer();
    await page.getByRole("heading", { name: "Changed meanwhile" }).waitFor();
    await page.getByRole("button", { name: "Take it over, keep my changes" }).click();
    assert.deepEqual([await box(page, "Contact").inputValue(), await box(page, "Location").inputValue()], ["Grace", "on the roof"]);
  });

  // The heading of what the page says when the device is not as it was read, and its text.
  const asked = async (heading) => {
    await page.getByRole("heading", { name: heading }).waitFor();
    return page.getByRole("alert").innerText();
  };

  test("outlives the host, and nobody is said to have changed the device", async () => {
    assert.equal((await console.call("POST", "/host/restart", {})).status, 200);
    assert.match(await asked("The host was started again"), /^The host was started again\s+The settings are as you read them\. Perhaps the file or a community has changed since\.\s+Take it over/);
    await page.getByRole("button", { name: "Take it over, keep my changes" }).click();
    assert.equal(await box(page, "Location").inputValue(), "on the roof");
  });

  test("is not said to be missing where the device has it already", async () => {
    await box(page, "Contact").fill("Ada");
    const { settings: now, base } = await console.get("/devices/18");
    const settings = { enabled: now.enabled, readCommunity: { keep: true }, writeCommunity: { keep: true }, contact: "Ada", usePrimaryContact: false,
      location: now.location.value, useOwnerAddress: false, name: now.name.value, useRoomDevice: false, trapTargets: [] };
    const { body } = await console.call("PUT", "/devices/18/settings", { accepted: [], settings }, { "If-Match": base });
    assert.equal(body.verdict, "changed");
    assert.match(await asked("Changed meanwhile"), /^Changed meanwhile\s+These settings have changed since you read them\. The device has this of yours already: Contact\.\s+Setting/);
    await page.getByRole("button", { name: "Take it over, keep my changes" }).click();
    await page.getByText("Not applied: Location", { exact: true }).waitFor();
  });
});
