// Pages of others, in the same browser as the console.
import assert from "node:assert/strict";
import { createServer } from "node:http";
import { after, before, describe, test } from "node:test";
import { Console, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { launch, open } from "./support/Browser.js";

describe("a hostile page", () => {
  const folder = new Folder();
  let browser, console, evil, site, page;

  before(async () => {
    const { project } = await writeProject(folder);
    console = await Console.start({ project, folder });
    await console.whenUp();
    evil = createServer((request, response) => response.setHeader("Content-Type", "text/html").end("<!doctype html><title>evil</title><p>evil</p>"));
    await new Promise((done) => evil.listen(0, "127.0.0.1", done));
    site = `http://site.test:${evil.address().port}/`;
    // Every name of the hostile site leads to this machine, as it would after the name has been bound anew.
    browser = await launch(["--host-resolver-rules=MAP *.test 127.0.0.1"]);
    page = await open(browser, site);
  });
  after(async () => {
    await browser.close();
    evil.close();
    await console.end();
    folder.remove();
  });

  test("reaches the server under a name of its own, and is refused (rebinding)", async () => {
    const bound = await browser.newPage();
    const response = await bound.goto(`http://site.test:${console.port}/`);
    assert.equal(response.status(), 421);
    assert.doesNotMatch(await response.text(), /script/);
    const answer = await bound.evaluate(async (token) => (await fetch("/api/v1/devices", { headers: { "X-Devhost-Token": token } })).status, console.token);
    assert.equal(answer, 421, "even with the key");
  });

  test("gets nothing by fetch, even with the key", async () => {
    for (const mode of ["cors", "no-cors"]) {
      const found = await page.evaluate(async ([url, token, mode]) => {
        try {
          const response = await fetch(url, { mode, headers: mode === "cors" ? { "X-Devhost-Token": token } : {} });
          return response.type + ":" + (await response.text());
        } catch (error) { return "blocked"; }
      }, [console.origin + "/api/v1/devices", console.token, mode]);
      assert.ok(found === "blocked" || found === "opaque:", found);
    }
  });

  test("changes nothing by a form", async () => {
    const before = (await console.get("/devices/12")).device.managed;
    const sender = await open(browser, site);
    const [response] = await Promise.all([
      sender.waitForResponse((r) => r.url().startsWith(console.origin)),
      sender.evaluate((url) => {
        const form = Object.assign(document.createElement("form"), { method: "post", enctype: "text/plain", action: url });
        form.append(Object.assign(document.createElement("input"), { name: '{"action":"reboot","device":"kitchen","x":"', value: '"}' }));
        document.body.append(form);
        form.submit();
      }, console.origin + "/api/v1/devices/12/actions"),
    ]);
    assert.ok([401, 403].includes(response.status()), String(response.status()));
    assert.equal((await console.get("/devices/12")).device.managed, before);
    await sender.context().close();
  });

  test("cannot show the console in a frame", async () => {
    await page.evaluate((url) => new Promise((done) => {
      const frame = document.createElement("iframe");
      frame.onload = done;
      frame.src = url;
      document.body.append(frame);
    }), console.address);
    const frame = page.frames().find((f) => f !== page.mainFrame());
    assert.ok(!(await frame.content().catch(() => "")).includes("app.js"), "the frame is empty");
  });

  test("cannot load the console's modules or styles", async () => {
    const loaded = await page.evaluate((origin) => new Promise((done) => {
      const script = document.createElement("script");
      script.type = "module";
      script.onload = () => done("loaded");
      script.onerror = () => done("refused");
      script.src = origin + "/app.js";
      document.head.append(script);
    }), console.origin);
    assert.equal(loaded, "refused");
  });

  test("gets no handle of a console that it opens", async () => {
    const [popup] = await Promise.all([page.context().waitForEvent("page"), page.evaluate((url) => { window.opened = window.open(url); }, console.address)]);
    await popup.getByRole("link", { name: "kitchen" }).waitFor();
    assert.equal(await page.evaluate(() => window.opened.closed), true, "the console is in a group of its own");
    assert.equal(await popup.evaluate(() => window.opener), null);
  });

  test("finds no cookie that it could ride on", async () => {
    const own = await open(browser, console.address);
    await own.getByRole("link", { name: "kitchen" }).waitFor();
    assert.deepEqual(await own.context().cookies(), []);
    assert.equal(own.received.filter((text) => /set-cookie|access-control-allow/i.test(text)).length, 0);
  });
});
