// A folder of its own for each test, which goes with it.
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";

export class Folder {
  constructor() { this.root = mkdtempSync(join(tmpdir(), "console-test-")); }
  path(name) { return join(this.root, name); }
  read(name) { return readFileSync(this.path(name), "utf8"); }
  write(name, text, mode = 0o600) {
    mkdirSync(dirname(this.path(name)), { recursive: true });
    writeFileSync(this.path(name), text, { mode });
    return this.path(name);
  }
  remove() { rmSync(this.root, { recursive: true, force: true }); }
}
