// The distribution's Chromium, and what a test wants to know of a page.
import { createRequire } from "node:module";
import { mkdirSync, readFileSync } from "node:fs";

const modules = process.env.CONSOLE_MODULES || new URL("../../../build/console/npm", import.meta.url).pathname;
const require = createRequire(modules + "/package.json");
const { chromium } = require("playwright-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

export const PICTURES = process.env.CONSOLE_PICTURES || new URL("../../../build/console", import.meta.url).pathname;

// Chromium's sandbox needs namespaces of its own, which root in a container may not make.
const SANDBOX = process.getuid() === 0 ? ["--no-sandbox"] : [];

export const launch = (args = []) => chromium.launch({ executablePath: process.env.CHROMIUM || "/usr/bin/chromium", args: [...SANDBOX, ...args] });

const DEADLINE = Number(process.env.CONSOLE_DEADLINE || 60000);

// Opens the address in a window of its own. `trouble` collects what a page must not do, `received` all that the server has sent
// but the stream of events, `asked` the hosts that were asked.
export async function open(browser, address, options = {}) {
  const context = await browser.newContext({ viewport: { width: 1200, height: 850 }, ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(DEADLINE);
  page.trouble = [];
  page.received = [];
  page.asked = new Set();
  page.on("pageerror", (error) => page.trouble.push(String(error.stack)));
  page.on("console", (message) => ["error", "warning"].includes(message.type()) && !/Failed to load resource/.test(message.text()) && page.trouble.push(message.text()));
  page.on("request", (request) => page.asked.add(new URL(request.url()).host));
  page.on("response", async (response) => {
    if (!response.url().endsWith("/events")) page.received.push(`${response.url()}\n${JSON.stringify(response.headers())}\n${await response.text().catch(() => "")}`);
  });
  await page.goto(address);
  return page;
}

// What axe finds, as lines; empty when it is content.
export async function violations(page) {
  await page.evaluate(axe + ";0");
  const { violations: found } = await page.evaluate(() => window.axe.run());
  return found.map((v) => `${v.id}: ${v.help}: ${v.nodes.map((n) => n.html.slice(0, 160)).join(" | ")}`);
}

// The elements that make the page scroll sideways.
export const tooWide = (page) => page.evaluate(() => (document.documentElement.scrollWidth <= innerWidth + 1 ? []
  : [...document.querySelectorAll("body *")].filter((e) => e.getBoundingClientRect().right > innerWidth + 1 && !e.closest(".scroll, pre")).map((e) => e.outerHTML.slice(0, 120))));

export async function picture(page, name) {
  mkdirSync(PICTURES, { recursive: true });
  await page.screenshot({ path: `${PICTURES}/${name}.png` });
}

export const goTo = (page, fragment) => page.evaluate((hash) => { location.hash = hash; }, "#/" + fragment);
export const textOf = (page) => page.evaluate(() => document.body.innerText + [...document.querySelectorAll("input, textarea")].map((e) => e.value).join("\n"));
