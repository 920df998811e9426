// The files of the page themselves.
import assert from "node:assert/strict";
import { createHash } from "node:crypto";
import { readFileSync, readdirSync } from "node:fs";
import { test } from "node:test";

const FOLDER = new URL("../../devhost/page/", import.meta.url);
const read = (name) => readFileSync(new URL(name, FOLDER), "utf8");

test("the vendored file is the one that vendor/README.md names", () => {
  const sum = createHash("sha256").update(readFileSync(new URL("vendor/standalone.module.js", FOLDER))).digest("hex");
  assert.ok(read("vendor/README.md").includes(`\`${sum}\``), sum);
});

test("the page names no other host and brings no markup as text", () => {
  const own = readdirSync(FOLDER).filter((name) => /\.(js|css|html|svg)$/.test(name));
  assert.ok(own.length > 10);
  for (const name of own) {
    const text = read(name).replace("http://www.w3.org/2000/svg", "");
    assert.doesNotMatch(text, /https?:\/\/|innerHTML|dangerouslySetInnerHTML|insertAdjacentHTML|document\.write|eval\(|style=|<style|localStorage|document\.cookie/, name);
  }
});

test("the lock file names no registry", () => {
  assert.doesNotMatch(readFileSync(new URL("package-lock.json", import.meta.url), "utf8"), /"resolved"|https?:/);
});
