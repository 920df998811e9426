// What the page weighs and how long it takes: times are printed, since a busy machine would make any bound a lie.
import assert from "node:assert/strict";
import { createServer } from "node:http";
import { readFileSync } from "node:fs";
import { after, before, describe, test } from "node:test";
import { Console, writeManyDevices } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch, open, picture } from "./support/Browser.js";

const DEVICES = 1000;
const FILES = new URL("../../devhost/page/", import.meta.url);
const print = (what, value) => console_.log(`figure: ${what}: ${value}`);
const console_ = globalThis.console;
const median = (list) => [...list].sort((a, b) => a - b)[list.length >> 1];

describe(`a project of ${DEVICES} devices`, () => {
  const folder = new Folder();
  let browser, console, page;

  before(async () => {
    console = await Console.start({ project: writeManyDevices(folder, DEVICES), folder });
    await console.whenUp();
    browser = await launch();
    page = await open(browser, console.address);
    await page.getByRole("link", { name: "controller-2", exact: true }).waitFor({ timeout: 60000 });
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  test("is listed and filtered without a stall", async () => {
    await picture(page, "thousand-light");
    // From an input to the first frame that shows its result, to the last row, and the longest time without a frame meanwhile.
    const wanted = { c: DEVICES, "controller-5": 111, "controller-55": 11, "offline-nowhere": 0, "": DEVICES };
    const measured = await page.evaluate(async (wanted) => {
      const frame = () => new Promise((done) => requestAnimationFrame(() => setTimeout(done)));
      const input = document.querySelector("input[type=search]");
      const times = {};
      for (const [text, count] of Object.entries(wanted)) {
        const begin = performance.now(), end = begin + 60000;
        let last = begin, longest = 0, first = 0, rows;
        input.value = text;
        input.dispatchEvent(new Event("input", { bubbles: true }));
        do {
          await frame();
          const now = performance.now();
          longest = Math.max(longest, now - last);
          first ||= now - begin;
          last = now;
          rows = document.querySelectorAll("tbody tr").length;
        } while (rows !== count && last < end);
        times[text || "(all)"] = { rows, first: Math.round(first), all: Math.round(last - begin), longest: Math.round(longest) };
      }
      return times;
    }, wanted);
    for (const [text, t] of Object.entries(measured)) print(`filter "${text}"`, `first rows ${t.first} ms, all ${t.rows} rows ${t.all} ms, longest time without a frame ${t.longest} ms`);
    assert.deepEqual(Object.values(measured).map((t) => t.rows), Object.values(wanted));
  });

  test("is there soon after a reload", async () => {
    const times = [];
    for (let n = 0; n < 3; ++n) {
      await page.reload();
      await page.getByRole("link", { name: "controller-2", exact: true }).waitFor();
      times.push(await page.evaluate(() => Math.round(performance.now())));
    }
    print(`${DEVICES} devices on the screen after`, times.join(", ") + " ms");
  });
});

describe("a small project", () => {
  const folder = new Folder();
  let browser, console;

  before(async () => {
    console = await Console.start({ project: writeManyDevices(folder, 3), folder });
    await console.whenUp();
    browser = await launch();
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  test("comes as fast as from a plain static server", async () => {
    const names = new Set();
    const page = await open(browser, console.address);
    await page.getByRole("link", { name: "controller-2" }).waitFor();
    for (const entry of await page.evaluate(() => performance.getEntriesByType("resource").map((e) => e.name))) if (!entry.includes("/api/")) names.add(new URL(entry).pathname.slice(1));
    const types = { html: "text/html", js: "text/javascript", css: "text/css", svg: "image/svg+xml" };
    const plain = createServer((request, response) => {
      const name = request.url.slice(1) || "index.html";
      try {
        const text = readFileSync(new URL(name, FILES));
        response.setHeader("Content-Type", types[name.split(".").pop()]).end(text);
      } catch { response.writeHead(404).end(); }
    });
    await new Promise((done) => plain.listen(0, "127.0.0.1", done));
    const loads = { "devhost serve": console.address, "plain static server": `http://127.0.0.1:${plain.address().port}/` };
    const times = {};
    for (let n = 0; n < 5; ++n) {
      for (const [what, address] of Object.entries(loads)) {
        const fresh = await open(browser, address);
        await fresh.waitForFunction(() => document.querySelector("h1"));
        (times[what] ||= []).push(await fresh.evaluate(() => Math.round(performance.getEntriesByType("paint").find((e) => e.name === "first-contentful-paint")?.startTime ?? performance.now())));
        await fresh.context().close();
      }
    }
    plain.close();
    for (const [what, list] of Object.entries(times)) print(`first view from ${what}`, `${median(list)} ms (${list.join(", ")})`);
    let weight = readFileSync(new URL("index.html", FILES)).length;
    for (const name of names) weight += readFileSync(new URL(name, FILES)).length;
    print("weight of the page", `${weight} bytes in ${names.size + 1} files`);
    assert.ok(weight < 80000, `${weight} bytes`);
  });

  test("learns of an event at once", async () => {
    const page = await open(browser, console.address);
    await page.getByRole("link", { name: "controller-2" }).waitFor();
    await goTo(page, "log");
    await page.getByRole("log", { name: "What happens" }).waitFor();
    // From the moment at which the front took the event in, to the page that has drawn it; both on the clock of this machine.
    await page.evaluate(() => {
      window.delays = [];
      const log = document.querySelector("[role=log]");
      new MutationObserver(() => window.delays.push(Date.now())).observe(log, { childList: true, subtree: true });
    });
    const delays = [];
    for (let n = 0; n < 20; ++n) {
      await page.evaluate(() => { window.delays = []; });
      const begin = Date.now();
      await console.call("POST", "/command", { driver: 1, name: "AddManagedDevice", parameters: { deviceId: "2" } });
      await page.waitForFunction(() => window.delays.length > 0);
      delays.push((await page.evaluate(() => window.delays[0])) - begin);
    }
    print("from the command to the log of the page", `median ${median(delays)} ms, longest ${Math.max(...delays)} ms`);
  });
});
