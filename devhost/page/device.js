import { html, useState } from "./vendor/standalone.module.js";
import { call, read } from "./api.js";
import { announce, deviceOf, readDevices, readOnly, state, useRead, useStore } from "./store.js";
import { badge, button, Confirm, diff, fileText, findingList, focusHeading, has, Heading, hint, messages, note, probed, settingChanges, settingNames, table, TERMS, trouble } from "./parts.js";
import { daemonWords } from "./devices.js";
import { changed, differing, editOf, rebase, setDraft, SettingsForm, wire } from "./settings.js";
import { Review } from "./review.js";

const VIEWS = { settings: ["Settings", Settings], daemon: ["Daemon", Daemon], file: ["File", File], history: ["History", History] };

export function Device({ id, view = "settings" }) {
  useStore("devices");
  const device = deviceOf(id), name = device ? device.name : "Device " + id;
  const View = (VIEWS[view] || VIEWS.settings)[1];
  return html`<div class="bar"><${Heading}>${name}<//>${device && html`<p>${badge(device.module)}${badge(device.managed ? "managed" : "not managed", device.managed && "good")}
      ${badge(device.reachable ? "on line" : "off line", device.reachable ? "good" : "bad")}${device.dirty && badge("not written", "warn")}${device.daemon && badge("daemon: " + daemonWords(device))}</p>`}</div>
    ${device && device.problem && note(device.problem, "bad")}
    <nav class="tabs" aria-label=${name}>${Object.keys(VIEWS).map((key) => html`<a href=${`#/devices/${id}/${key}`} aria-current=${view === key && "page"}>${VIEWS[key][0]}</a>`)}</nav>
    <${View} id=${id} name=${name} path=${"/devices/" + id} device=${device} />`;
}

const shown = (v) => (typeof v === "boolean" ? (v ? "on" : "off") : Array.isArray(v) ? v.map((t) => `${t.target.keep === undefined ? t.target : "hidden"}:${t.port}`).join(", ") : v.keep ? "as it was" : v.value === undefined ? v : v.value ? "a new one" : "erased");

// All but the last number of a base is the life of the host.
const lifeOf = (base) => base.replace(/\.\d+$/, "");

// Who has changed the device cannot be told: perhaps oneself, with a change that was cut off.
function Conflict({ draft, fresh, onTake, onDrop }) {
  const old = editOf(draft.settings), now = editOf(fresh.settings), moved = differing(old, now), mine = changed(draft);
  const left = differing(now, draft.edit), made = mine.filter((f) => !left.includes(f)), again = lifeOf(draft.base) !== lifeOf(fresh.base);
  return html`<section class="note warn" role="alert"><${Heading} level="h2">${again ? "The host was started again" : "Changed meanwhile"}<//>
    <p>${moved.length ? "These settings have changed since you read them." : `The ${again ? "settings are as you read them. Perhaps the " : ""}file or a community has changed since.`}${has(made) && ` The device has this of yours already: ${made.map((f) => TERMS[f]).join(", ")}.`}</p>
    ${has(moved) && table("What has moved", ["Setting", "You had read", "Now", "Yours"], moved.map((f) => [TERMS[f], shown(old[f]), shown(now[f]), mine.includes(f) ? shown(draft.edit[f]) : "not changed"]))}
    <div class="buttons">${button("Take it over, keep my changes", onTake, { class: "main" })}${button("Discard my changes", onDrop)}</div></section>`;
}

function Settings({ id, name, path }) {
  const { data, error, reload, forget } = useRead(path, useStore("changes")[id]);
  const kept = useStore("drafts")[id];
  const [reviewing, review] = useState(false);
  if (!data) return trouble(error, reload) || hint("Reading the device …");
  const draft = kept || { settings: data.settings, base: data.base, edit: editOf(data.settings) };
  // What was read before a change that is made is not a base for the next one.
  const back = () => { focusHeading(); review(false); if (kept) reload(); else forget(); };
  if (reviewing) {
    return html`<${Review} device=${id} name=${name} title=${"Review the change of " + name} verb="Apply" conflict=${back} onBack=${back} onDone=${() => { if (state.drafts[id] === kept) setDraft(id); readDevices(); }}
      body=${{ settings: wire(draft.edit) }} plan=${path + "/preview"} apply=${["PUT", path + "/settings"]} base=${draft.base} />`;
  }
  if (kept && data.base !== kept.base) {
    return html`<${Conflict} draft=${kept} fresh=${data} onDrop=${() => { focusHeading(); setDraft(id); }} onTake=${() => {
      focusHeading(); setDraft(id, rebase(kept, data.settings, data.base)); announce("Taken over."); }} />`;
  }
  return html`${trouble(error, reload)}${messages(data.messages)}${data.fileProblem && note(`The device does not give its file, so nothing can be changed: ${data.fileProblem}.`, "bad")}${!data.reachable && note("The device is off line. These are the settings that it was last known to have. A change waits until it is back.", "warn")}
    <${SettingsForm} key=${draft.base} id=${id} draft=${draft} onReview=${() => kept && review(true)} />`;
}

// What is under way, and what it came to.
function useJob() {
  const [job, set] = useState({});
  return [job, async (what, promise) => {
    set({ what });
    await promise.then((answer) => { set({ answer }); announce(what + ": done"); }, (error) => set({ error }));
    readDevices();
  }];
}

const ACTIONS = { reboot: ["Reboot", "The controller restarts, and does not answer meanwhile."], stop: ["Stop SNMP", "The SNMP daemon of the device stops."], start: ["Start SNMP", "The SNMP daemon of the device starts."] };

function Daemon({ name, path, device }) {
  const [{ what, answer, error }, run] = useJob(), [asked, ask] = useState();
  const managed = device && device.managed;
  return html`<div class="buttons">${button("Ask the daemon", () => run("Ask the daemon", read(path + "/effective")))}${!readOnly() && html`
      ${button("Send test traps", () => run("Test traps", call("POST", path + "/test-trap", {})))}${Object.keys(ACTIONS).map((key) => button(ACTIONS[key][0] + " …", () => ask(key)))}
      ${button(managed ? "Give the device up" : "Manage the device", () => run(managed ? "Give up" : "Manage", managed ? call("DELETE", path + "/managed") : call("PUT", path + "/managed", {})))}`}</div>
    ${what && hint(what + " …")}${trouble(error)}${answer && answer.items && probed(answer)}${answer && answer.reply && note(html`The agent answers <code>${answer.reply}</code>`)}
    ${!what && !error && !answer && hint("What the daemon serves is asked over SNMP, and put beside what is configured. A test trap goes to each trap target.")}
    ${asked && html`<${Confirm} title=${ACTIONS[asked][0]} text=${ACTIONS[asked][1]} name=${name} onClose=${() => ask()}
      onYes=${(typed) => run(ACTIONS[asked][0], call("POST", path + "/actions", { action: asked, device: typed }))} />`}`;
}

function File({ id, path }) {
  const version = useStore("changes")[id], { data, error, reload } = useRead(path + "/file", version), judged = useRead(path + "/findings", version), [job, run] = useJob();
  const drift = job.answer, section = data && data.section;
  return html`${trouble(error, reload)}<h2>Findings</h2>${judged.data ? findingList(judged.data.findings, "Findings about the file") || note("Nothing in the file will surprise its owner.", "good") : trouble(judged.error) || hint("Reading …")}
    <h2>Drift</h2>${button("Look for drift", () => run("Drift", read(path + "/drift")))}${job.what && hint("Looking …")}${trouble(job.error)}
    ${drift && html`${drift.verdict === "none" ? note("No drift: file and settings are as the last change has left them.", "good") : note(drift.reason || "File or settings have drifted.", "warn")}
      ${findingList(drift.overridden, "Overridden")}${messages(drift.messages)}${settingChanges(drift.settings)}${drift.difference && diff(drift.difference, "Drift")}`}
    ${data && html`<h2>snmpd.conf</h2>${hint(section ? `The agent’s section is shaded: lines ${section.first} to ${section.last}.` : "The file has no section of the agent.")}
      ${fileText(data.text, (n) => section && n >= section.first && n <= section.last)}`}`;
}

function History({ id, name, path }) {
  const version = useStore("changes")[id], { data, error, reload } = useRead(path + "/history", version);
  const [[number, against], show] = useState([]), [undoing, undo] = useState();
  const compared = useRead(number && `${path}/history/${number}?against=${against}`, version);
  const back = () => { focusHeading(); undo(); reload(); };
  if (undoing) {
    return html`<${Review} device=${id} name=${name} title=${`Put ${name} back as it was before change ${undoing}`} verb="Put back" onBack=${back} onDone=${readDevices}
      conflict=${() => { announce("That was out of date. Look again."); back(); }}
      body=${{ snapshot: undoing }} plan=${path + "/undo/preview"} apply=${["POST", path + "/undo"]} />`;
  }
  if (!data) return trouble(error, reload);
  const act = (words, n, then) => button(words, then, { "aria-label": `${words} (change ${n})` });
  return html`${data.damaged.map((d) => note(`Snapshot ${d.number} is damaged: ${d.problem}`, "bad"))}
    ${data.snapshots.length ? table("Changes", ["Change", "When", "What", "Result", "Look, or put back"], data.snapshots.map(({ number: n, time, operation, finished, settings }) => [n, new Date(time).toLocaleString("en-GB"), html`${operation} <span class="hint">${settingNames(settings)}</span>`, finished ? "finished" : badge("not finished", "warn"),
      html`<div class="buttons">${act("Difference", n, () => show([n, "before"]))}${act("Before it, against now", n, () => show([n, "now"]))}${!readOnly() && act("Undo …", n, () => undo(n))}</div>`]).reverse())
      : note("Nothing was changed yet. Each change keeps a snapshot of what was there before.")}
    ${trouble(compared.error)}${compared.data && html`<${Heading} key=${number + against} level="h2">${against === "now" ? `Before change ${number}, against now` : "What change " + number + " did"}<//>
      ${settingChanges(compared.data.settings)}${diff(compared.data.difference, "Difference")}`}`;
}
