import { html, useEffect, useRef, useState } from "./vendor/standalone.module.js";

export const TERMS = { enabled: "SNMP", readCommunity: "Read community", writeCommunity: "Write community", contact: "Contact",
  usePrimaryContact: "Contact from the project", location: "Location", useOwnerAddress: "Location from the project", name: "Name",
  useRoomDevice: "Name from the project", trapTargets: "Trap targets" };
// The same in the words of the agent, and in the same order.
const ELEMENTS = ["Enabled", "CommunityRead", "CommunityWrite", "SysContact", "UsePrimaryContact", "SysLocation", "UseProjectOwnerAddress", "SysName", "UseRoomDevice", "TrapTargets"];

// Attributes of inputs: what is typed goes to `set`.
export const typing = (value, set) => ({ value, autocomplete: "off", spellcheck: false, onInput: (e) => set(e.target.value) });
export const ticking = (checked, set) => ({ type: "checkbox", checked, onChange: (e) => set(e.target.checked) });
export const has = (list) => list && list.length > 0;
export const clock = (ms) => new Date(ms).toLocaleTimeString("en-GB");
export const badge = (words, kind) => html`<span class=${"badge " + (kind || "")}>${words}</span> `;
export const hint = (words, id) => html`<p class="hint" id=${id}>${words}</p>`;
export const note = (words, kind) => html`<p class=${"note " + (kind || "")}>${words}</p>`;
export const button = (words, act, more) => html`<button type="button" onClick=${act} ...${more}>${words}</button>`;
export const quiet = (words, act, more) => button(words, act, { class: "quiet", ...more });
export const lines = (text) => text.replace(/\n$/, "").split("\n");

// What can be wider than the window scrolls by itself, also by keyboard.
const scroll = (label, tag, name, inside) => html`<${tag} class=${name} tabindex="0" role="region" aria-label=${label}>${inside}<//>`;

// The heading of a view takes the focus, so that a screen reader says where one is.
export function Heading({ children, level: Level = "h1" }) {
  const self = useRef();
  useEffect(() => self.current.focus(), []);
  return html`<${Level} ref=${self} tabindex="-1">${children}<//>`;
}

// Before what has the focus goes away.
export const focusHeading = () => document.querySelector("h1").focus();

export const trouble = (error, again) => error && html`<div class="note bad" role="alert"><p>${error.message}</p>${again && button("Try again", again)}</div>`;

export const findingList = (findings, label, id) => has(findings) && html`<ul class="findings" id=${id} aria-label=${label}>${
  findings.map((f) => html`<li class=${f.severity}><b>${f.severity}</b>${!id && f.line ? ` in line ${f.line}` : ""}: ${f.reason}
    ${f.remedy && html`<span class="hint">${f.remedy}</span>`} <code>${f.rule}</code></li>`)}</ul>`;

const MARKS = { "+": "added", "-": "gone", "@": "where" };

// A unified difference as it came. The first character of a line says what it is, with and without colours.
export const diff = (text, label) => (text ? scroll(label, "pre", "diff", lines(text).map((line, n) =>
  html`<span class=${n < 2 ? "where" : MARKS[line[0]]}>${line + "\n"}</span>`)) : hint("The file stays as it is."));

export const fileText = (text, inside) => scroll("snmpd.conf", "pre", "file", lines(text).map((line, n) => html`<span class=${inside(n + 1) && "section"}>${line + "\n"}</span>`));

// The first cell of a row is its heading.
export const row = ([first, ...rest], key) => html`<tr key=${key}><th scope="row">${first}</th>${rest.map((cell) => html`<td>${cell}</td>`)}</tr>`;
export const table = (label, head, rows) => scroll(label, "div", "scroll", html`<table><thead><tr>${head.map((t) => html`<th scope="col">${t}</th>`)}</tr></thead>
  <tbody>${rows.map((r) => (Array.isArray(r) ? row(r) : r))}</tbody></table>`);

const settingName = (name) => (name === "snmpIsManagedDevice" ? "Managed" : Object.values(TERMS)[ELEMENTS.indexOf(name.replace(/^snmp|Setting$/g, ""))] || name);
export const settingNames = (list) => (list || []).map(settingName).join(", ");
const shown = (text) => ({ "": "(empty)", true: "on", false: "off" })[text] || text;
export const settingChanges = (settings) => has(settings) && table("Settings that change", ["Setting", "Before", "After"],
  settings.map((s) => [settingName(s.name), shown(s.before), shown(s.after)]));

export const messages = (list) => has(list) && html`<ul>${list.map((m) => html`<li>${m}</li>`)}</ul>`;

const SERVED = { "as-configured": "The daemon serves what is configured.", differs: "The daemon serves something else than what is configured." };
const PROBED = { good: badge("as configured", "good"), differs: badge("differs", "bad"), "not-asked": "not asked" };

export const probed = (probe) => probe && html`${note([SERVED[probe.verdict] || "The daemon could not be asked.", " ", probe.address], probe.verdict === "as-configured" ? "good" : "warn")}
  ${has(probe.items) && table("What the daemon serves", ["What", "Result", "Configured", "Served"], probe.items.map((i) =>
    [i.name, PROBED[i.verdict], i.configured, html`${i.served} <span class="hint">${i.reason}</span>`]))}${messages(probe.messages)}`;

// Asks first: the name has to be typed.
export function Confirm({ title, text, name, onYes, onClose }) {
  const dialog = useRef();
  const [typed, type] = useState("");
  useEffect(() => dialog.current.showModal(), []);
  const submit = (event) => {
    event.preventDefault();
    if (typed === name) { dialog.current.close(); onYes(typed); }
  };
  return html`<dialog ref=${dialog} onClose=${onClose} aria-labelledby="confirm"><form onSubmit=${submit}><h2 id="confirm">${title}: ${name}</h2><p>${text}</p>
    <label>Type <b>${name}</b> to confirm <input ...${typing(typed, type)} /></label>
    <div class="buttons"><button class="danger" aria-disabled=${typed !== name}>${title}</button>${button("Cancel", () => dialog.current.close())}</div></form></dialog>`;
}

export const filterBox = (value, set) => html`<label><span>Filter</span> <input type="search" ...${typing(value, set)} /></label>`;

export const select = (label, value, set, options) => html`<label><span>${label}</span> <select value=${value} onChange=${(e) => set(e.target.value)}>${
  Object.entries(options).map(([key, words]) => html`<option value=${key} selected=${key === String(value)}>${words}</option>`)}</select></label>`;
