// A change of a device from the form to its daemon, and back.
import assert from "node:assert/strict";
import { after, before, describe, test } from "node:test";
import { Console, served, SECRETS, writeProject } from "./support/Console.js";
import { Folder } from "./support/Folder.js";
import { goTo, launch, open, textOf } from "./support/Browser.js";
import { until } from "./support/until.js";

const fresh = "zn-replaced-community";

describe("a change", () => {
  const folder = new Folder();
  let browser, console, page, ports;

  before(async () => {
    const written = await writeProject(folder);
    ports = written.ports;
    console = await Console.start({ project: written.project, folder });
    await console.whenUp();
    browser = await launch();
    page = await open(browser, console.address);
  });
  after(async () => {
    await browser.close();
    await console.end();
    folder.remove();
  });

  const review = async () => {
    await page.getByRole("button", { name: "Review …" }).click();
    await page.getByRole("region", { name: "Difference of the file" }).waitFor();
  };
  // The second trap target has a port and no community, which is an error, and stays one.
  const goOn = async (verb) => {
    for (const box of await page.getByRole("checkbox", { name: /^Go on in spite of/ }).all()) await box.check();
    const button = page.getByRole("button", { name: verb });
    await until("the change may be made", async () => (await button.getAttribute("aria-disabled")) === "false");
    await button.click();
  };

  test("the devices of the project are listed, and the address keeps no token", async () => {
    await page.getByRole("link", { name: "kitchen" }).waitFor();
    assert.deepEqual(await page.getByRole("rowheader").allInnerTexts().then((names) => names.map((n) => n.trim())), ["kitchen", "cellar", "attic"]);
    assert.equal(new URL(page.url()).hash, "#/devices");
  });

  test("the filter knows the words of the table", async () => {
    const expected = { managed: ["kitchen", "cellar"], unmanaged: ["attic"], written: ["kitchen", "cellar", "attic"], unwritten: [], "off line": [],
      "on line": ["kitchen", "cellar", "attic"], offline: [], "unm att": ["attic"], ITCHE: ["kitchen"], "": ["kitchen", "cellar", "attic"] };
    for (const [filter, names] of Object.entries(expected)) {
      await page.getByRole("searchbox", { name: "Filter" }).fill(filter);
      await page.getByText(`${names.length} of 3`, { exact: true }).waitFor();
      assert.deepEqual((await page.getByRole("rowheader").allInnerTexts()).map((n) => n.trim()), names, filter);
    }
  });

  test("an action needs the name of its device, and starts its daemon", async () => {
    await goTo(page, "devices/12/daemon");
    await page.getByRole("button", { name: "Start SNMP …" }).click();
    const yes = page.getByRole("dialog").getByRole("button", { name: "Start SNMP" });
    await page.getByLabel("Type kitchen to confirm").fill("cellar");
    await yes.click({ force: true });
    assert.ok(await page.getByRole("dialog").isVisible(), "a wrong name confirms nothing");
    await page.getByLabel("Type kitchen to confirm").fill("kitchen");
    await yes.click();
    await page.getByText("The agent answers <Success/>").waitFor();
    await page.getByText("daemon: runs").waitFor();
  });

  test("findings stand beside the field while one types", async () => {
    await goTo(page, "devices/12/settings");
    const name = page.getByRole("textbox", { name: "Name", exact: true });
    await name.fill("# kitchen");
    await page.getByRole("list", { name: "Findings about Name" }).getByText("value-begins-with-hash").waitFor();
    assert.equal(await name.getAttribute("aria-invalid"), "true");
    await page.getByRole("button", { name: "Undo the change of Name" }).click();
    assert.equal(await name.inputValue(), "kitchen");
    await page.getByRole("list", { name: "Findings about Name" }).waitFor({ state: "detached" });
  });

  test("a switch of the project takes the text away from the form", async () => {
    await page.getByLabel("From the room device").check();
    assert.equal(await page.getByRole("textbox", { name: "Name", exact: true }).getAttribute("readonly"), "true");
    await page.getByRole("button", { name: "Undo the change of Name from the project" }).click();
    assert.equal(await page.getByRole("textbox", { name: "Name", exact: true }).getAttribute("readonly"), null);
  });

  test("review shows what changes and what is lost, and stops at errors", async () => {
    await page.getByRole("textbox", { name: "Name", exact: true }).fill("kitchen north");
    await page.getByRole("combobox", { name: "Read community" }).selectOption("replace");
    await page.getByLabel("New: Read community").fill(fresh);
    await page.getByRole("button", { name: "Move trap target 2 up" }).click();
    await review();
    const changes = await page.getByRole("region", { name: "Settings that change" }).innerText();
    assert.match(changes, /Name\s+kitchen\s+kitchen north/);
    assert.match(changes, /Read community\s+\*{5}\s+\*{5}/);
    assert.match(await page.getByRole("region", { name: "Difference of the file" }).innerText(), /^\+sysName {2}kitchen north$/m);
    await page.getByText("What is lost, and what to know").waitFor();
    await page.getByText("trap-port-as-community").first().waitFor();
    const apply = page.getByRole("button", { name: "Apply" });
    assert.equal(await apply.getAttribute("aria-disabled"), "true");
    for (const box of await page.getByRole("checkbox", { name: /^Go on in spite of/ }).all()) await box.check();
    await until("the change may be applied", async () => (await apply.getAttribute("aria-disabled")) === "false");
  });

  test("apply shows its steps, and what the daemon serves", async () => {
    await page.getByRole("button", { name: "Apply" }).click();
    await page.getByRole("heading", { name: "The change is made" }).waitFor();
    // The steps come with the events, which may be behind the answer.
    const steps = page.getByRole("list", { name: "Steps" });
    for (const step of ["Keep a snapshot", "Change the device", "Ask the daemon"]) await steps.getByText(`✓ ${step}`).waitFor();
    await page.getByText("The daemon serves what is configured.").waitFor();
    assert.match(await page.getByRole("region", { name: "What the daemon serves" }).innerText(), /name\s+as configured\s+kitchen north/);
    assert.equal(await served(folder, ports.kitchen, fresh, "name"), "kitchen north");
    assert.equal(await served(folder, ports.kitchen, SECRETS.read, "name", 0.5), "", "the old community is gone");
  });

  test("the trap targets stand in the new order, with their own communities", async () => {
    await page.getByRole("button", { name: "Back to kitchen" }).click();
    assert.equal(await page.getByLabel("port of trap target 1").inputValue(), "10");
    const file = folder.read("kitchen/snmpd.conf").split("\n").filter((line) => line.startsWith("trap"));
    assert.equal(file.findIndex((line) => line.includes(SECRETS.trap)), file.length - 1, file.join("\n"));
  });

  test("history shows the change, and undo takes it back", async () => {
    await goTo(page, "devices/12/history");
    await page.getByRole("button", { name: "Difference (change 1)" }).click();
    await page.getByRole("heading", { name: "What change 1 did" }).waitFor();
    assert.match(await page.getByRole("region", { name: "Difference", exact: true }).innerText(), /^\+sysName {2}kitchen north$/m);
    await page.getByRole("button", { name: "Undo … (change 1)" }).click();
    await page.getByRole("region", { name: "Difference of the file" }).waitFor();
    await goOn("Put back");
    await page.getByRole("heading", { name: "The change is made" }).waitFor();
    assert.equal(await served(folder, ports.kitchen, SECRETS.read, "name"), "kitchen");
  });

  test("an emptied text counts as erased, and says so", async () => {
    await goTo(page, "devices/12/settings");
    await page.getByRole("textbox", { name: "Contact", exact: true }).fill("");
    await page.getByText("It will be emptied, and counts as erased.").waitFor();
    await review();
    await goOn("Apply");
    await page.getByRole("heading", { name: "The change is made" }).waitFor();
    await page.getByRole("button", { name: "Back to kitchen" }).click();
    await page.getByText("Erased: it stays empty.").waitFor();
  });

  test("text above the section is named as lost, and is not lost before that is accepted", async () => {
    const before = folder.read("kitchen/snmpd.conf");
    folder.write("kitchen/snmpd.conf", "# what somebody wrote above\n" + before);
    await goTo(page, "devices");
    await page.getByRole("link", { name: "kitchen" }).click();
    await page.getByRole("textbox", { name: "Location", exact: true }).fill("upstairs");
    await review();
    const lost = page.getByRole("list", { name: "Findings about the change" }).getByRole("listitem").filter({ hasText: "text-above-section" });
    await lost.waitFor();
    assert.match(await lost.innerText(), /error/);
    assert.match(await page.getByRole("region", { name: "Difference of the file" }).innerText(), /^-# what somebody wrote above$/m);
    assert.equal(await page.getByRole("button", { name: "Apply" }).getAttribute("aria-disabled"), "true");
    assert.match(folder.read("kitchen/snmpd.conf"), /what somebody wrote above/);
    await page.getByRole("button", { name: "Back", exact: true }).click();
    await page.getByRole("button", { name: "Discard" }).click();
    folder.write("kitchen/snmpd.conf", before);
  });

  test("a trap flag of a variable is set", async () => {
    await goTo(page, "variables");
    // Not check(), which looks whether the box is ticked: it is what the server says, and that is behind.
    await page.getByLabel("Trap for door open of kitchen").click();
    await until("the server has the flag", async () => (await console.get("/variables")).variables.some((v) => v.device === 12 && v.id === 2 && v.trapEnabled));
    await page.getByRole("status").getByText("door open: traps on").waitFor();
  });

  test("the conversation shows replies to the letter", async () => {
    await goTo(page, "conversation");
    await page.getByLabel("Command").fill("RebootController");
    await page.getByLabel("Value").fill("99");
    await page.getByRole("button", { name: "Send" }).click();
    await page.getByRole("log", { name: "Conversation" }).getByText("<Fail/>", { exact: true }).waitFor();
  });

  test("an event goes out with all its parameters", async () => {
    await page.getByLabel("To").selectOption("event");
    await page.getByLabel("Event", { exact: true }).fill("OnVariableRemoved");
    const options = await page.getByLabel("Parameter", { exact: true }).evaluate((e) => [...e.list.options].map((o) => o.value));
    assert.deepEqual(options, ["iditem", "idroom", "iddevice", "idvariable"]);
    const rows = [["iddevice", "12"], ["idvariable", "2"], ["iditem", "5"], ["iditem", "6"]];
    for (const [n, [name, value]] of rows.entries()) {
      if (n) await page.getByRole("button", { name: "Add a parameter" }).click();
      await page.getByLabel(n ? `Parameter ${n + 1}` : "Parameter", { exact: true }).fill(name);
      await page.getByLabel(n ? `Value ${n + 1}` : "Value", { exact: true }).fill(value);
    }
    const sent = page.waitForRequest("**/api/v1/event");
    await page.getByRole("button", { name: "Send" }).click();
    assert.deepEqual((await sent).postDataJSON(), { name: "OnVariableRemoved", parameters: { iddevice: ["12"], idvariable: ["2"], iditem: ["5", "6"] } });
    const log = page.getByRole("log", { name: "Conversation" });
    await log.getByText("(sent)").waitFor();
    assert.deepEqual((await log.getByText(/^id\w+=/).allInnerTexts()).map((text) => text.trim()), ["iddevice=12", "idvariable=2", "iditem=5", "iditem=6"]);
  });

  test("the log has what has happened, and can be filtered", async () => {
    await goTo(page, "log");
    const log = page.getByRole("log", { name: "What happens" });
    await log.getByText("<DeviceChanged><id>12</id></DeviceChanged>").first().waitFor();
    await page.getByLabel("Show").selectOption("notification");
    await until("only notifications stand there", async () => (await log.locator(":scope > div").evaluateAll((lines) => lines.every((line) => line.className === "notification"))));
    await page.getByLabel("Filter").fill("no such text");
    await page.getByText("Nothing matches.").waitFor();
  });

  test("the hour is drawn, and stands in a table, too", async () => {
    await goTo(page, "activity");
    await page.getByRole("img", { name: /^kitchen: [1-9]\d* requests/ }).waitFor();
    await page.getByText("kitchen as a table").click();
    await page.getByRole("region", { name: "The last hour of kitchen" }).waitFor();
  });

  test("neither the page nor its traffic holds a community", async () => {
    let everything = "";
    for (const view of ["devices", "devices/12/settings", "devices/12/daemon", "devices/12/file", "devices/12/history", "variables", "log", "conversation", "activity"]) {
      await goTo(page, view);
      await page.getByRole("heading", { level: 1 }).waitFor();
      await until("all is there", async () => !(await page.getByText(/^(Reading|The change is tried)/).count()));
      everything += await textOf(page) + await page.content();
    }
    const stop = new AbortController();
    const events = await fetch(console.origin + "/api/v1/events", { headers: { "X-Devhost-Token": console.token, "Last-Event-ID": "1" }, signal: stop.signal });
    const reader = events.body.getReader(), end = setTimeout(() => stop.abort(), 2000);
    try { for (let part; !(part = await reader.read()).done;) everything += Buffer.from(part.value).toString(); } catch { /* the stream has no end of its own */ }
    clearTimeout(end);
    everything += page.received.join("\n");
    assert.match(everything, /DeviceChanged/, "the events were read");
    assert.match(everything, /"readCommunity":\{/, "the settings were read");
    for (const secret of [...Object.values(SECRETS), fresh]) assert.ok(!everything.includes(secret), `${secret} has left the host process`);
  });

  test("nothing comes from another host, and the page complains of nothing", () => {
    assert.deepEqual([...page.asked], [new URL(console.origin).host]);
    assert.deepEqual(page.trouble, []);
  });
});
