// A device, a host and a server that are away for a while.
import assert from "node:assert/strict";
import { existsSync } from "node:fs";
import { afterEach, beforeEach, describe, test } from "node:test";
import { Console, served, SECRETS, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch, open } from "./support/Browser.js";
import { until } from "./support/until.js";

describe("what goes away and comes back", () => {
  let folder, browser, console, page, ports, project;

  beforeEach(async () => {
    folder = new Folder();
    ({ project, ports } = await writeProject(folder));
    console = await Console.start({ project, folder });
    await console.whenUp();
    browser = await launch();
    page = await open(browser, console.address);
    await page.getByRole("link", { name: "kitchen" }).waitFor();
  });
  afterEach(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  const command = async (driver, name, parameters = {}) => {
    const answer = await console.call("POST", "/command", { driver, name, parameters });
    assert.deepEqual([answer.status, answer.body.reply], [200, "<Success/>"], answer.text);
  };
  const applied = async () => {
    await page.getByRole("button", { name: "Review …" }).click();
    await page.getByRole("region", { name: "Difference of the file" }).waitFor();
    const boxes = page.getByRole("checkbox", { name: /^Go on in spite of/ });
    for (let n = 0; n < await boxes.count(); ++n) await boxes.nth(n).check();
    const apply = page.getByRole("button", { name: "Apply" });
    await until("the change may be applied", async () => (await apply.getAttribute("aria-disabled")) === "false");
    await apply.click();
  };

  test("a device that is off line gets its change when it is back", async () => {
    await command(1, "StartMasterAgent", { deviceId: "12" });
    await command(12, "SetOnline", { online: "false" });
    await until("the list shows it", () => page.getByRole("row", { name: /kitchen/ }).getByText("off line").isVisible());
    await page.getByRole("link", { name: "kitchen" }).click();
    await page.getByText("The device is off line.").waitFor();
    await page.getByRole("textbox", { name: "Name", exact: true }).fill("kitchen later");
    await applied();
    await page.getByRole("heading", { name: "The device gets the change when it is back" }).waitFor();
    await command(12, "SetOnline", { online: "true" });
    await until("the daemon serves the change", async () => (await served(folder, ports.kitchen, SECRETS.read, "name", 0.5)) === "kitchen later");
    await goTo(page, "devices");
    await until("the list shows it", () => page.getByRole("row", { name: /kitchen/ }).getByText("on line").isVisible());
  });

  test("a server that comes back has another key; the page says so, and goes on with its drafts when it has that", async () => {
    const address = console.address;
    await page.getByRole("link", { name: "attic" }).click();
    await page.getByRole("textbox", { name: "Contact", exact: true }).fill("Grace");
    const hosts = await console.hostProcesses();
    await console.end("SIGKILL");
    // They keep their states first, and have the lock of the folder until then.
    await until("its host process has ended", () => hosts.every((pid) => !existsSync(`/proc/${pid}`)));
    await page.getByText("devhost serve does not answer.").waitFor();
    await console.start(console.port);
    await page.getByRole("heading", { name: "The address is not complete" }).waitFor();
    assert.notEqual(console.address, address);
    await page.goto(console.address);
    await page.getByRole("link", { name: "kitchen" }).waitFor();
    assert.equal(new URL(page.url()).hash, "#/devices");
    await console.call("PUT", "/devices/18/managed", {});
    await until("the page follows the events", () => page.getByRole("row", { name: /attic/ }).getByText("managed").isVisible());
    await page.getByText("Not applied yet:").getByRole("link", { name: "attic" }).click();
    await page.getByRole("heading", { name: "The host was started again" }).waitFor();
    await page.getByRole("button", { name: "Take it over, keep my changes" }).click();
    assert.equal(await page.getByRole("textbox", { name: "Contact", exact: true }).inputValue(), "Grace");
  });

  test("a stream that cannot be had is tried again, and what was missed is read", async () => {
    await page.route("**/api/v1/events", (route) => route.abort());
    await page.reload();
    await page.getByText("devhost serve does not answer.").waitFor();
    const answer = await console.call("PUT", "/devices/18/managed", {});
    assert.equal(answer.status, 200, answer.text);
    await page.unroute("**/api/v1/events");
    await page.getByText("devhost serve does not answer.").waitFor({ state: "detached" });
    await until("what was missed is there", () => page.getByRole("row", { name: /attic/ }).getByText("managed").isVisible());
  });

  test("a server that is busy for a moment is no refusal", async () => {
    let asked = 0;
    await page.route("**/api/v1/session", (route) => (++asked > 1 ? route.continue() : route.fulfill({ status: 503, contentType: "application/json", body: '{"error":{"code":"full","message":"full"}}' })));
    await page.reload();
    await page.getByText("host up").waitFor();
    await page.getByRole("link", { name: "kitchen" }).waitFor();
    assert.ok(asked > 1);
  });

  test("a host process that ends is named, and can be started again", async () => {
    const [host] = (await console.hostProcesses()).slice(-1);
    process.kill(host, "SIGKILL");
    await page.getByText("The host has ended.").waitFor();
    await page.getByRole("button", { name: "Start the host again" }).click();
    await page.getByText("The host has ended.").waitFor({ state: "detached" });
    await console.whenUp();
    await page.getByText("host up").waitFor();
    await page.getByRole("link", { name: "kitchen" }).click();
    assert.equal(await page.getByRole("textbox", { name: "Name", exact: true }).inputValue(), "kitchen");
  });

  test("without a key the page says what to do", async () => {
    const stranger = await open(browser, console.origin + "/");
    await stranger.getByRole("heading", { name: "The address is not complete" }).waitFor();
    await stranger.goto("about:blank");
    await stranger.goto(console.origin + "/#" + "x".repeat(43));
    await stranger.getByRole("heading", { name: "The address is not complete" }).waitFor();
  });

  test("a console that is read-only shows everything and changes nothing", async () => {
    await console.end();
    console.words.push("--read-only");
    await console.start(0);
    await console.whenUp();
    const reader = await open(browser, console.address);
    await reader.getByText("read only").waitFor();
    await reader.getByRole("link", { name: "kitchen" }).click();
    await reader.getByText("Read only: nothing can be changed here.").waitFor();
    assert.equal(await reader.getByRole("textbox", { name: "Name", exact: true }).getAttribute("readonly"), "true");
    assert.equal(await reader.getByRole("button", { name: "Review …" }).count(), 0);
    await goTo(reader, "devices/12/daemon");
    await reader.getByRole("button", { name: "Ask the daemon" }).waitFor();
    assert.equal(await reader.getByRole("button", { name: "Reboot …" }).count(), 0);
    await goTo(reader, "conversation");
    await reader.getByText("Read only: nothing can be sent.").waitFor();
    assert.deepEqual(reader.trouble, []);
  });
});
