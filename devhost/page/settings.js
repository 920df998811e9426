import { html, useEffect, useState } from "./vendor/standalone.module.js";
import { asking, call } from "./api.js";
import { state, update, readOnly } from "./store.js";
import { button, findingList, has, hint, quiet, TERMS, ticking, typing } from "./parts.js";

const FROM = { contact: "usePrimaryContact", location: "useOwnerAddress", name: "useRoomDevice" };
const PROJECT = { contact: "the project’s primary contact", location: "the address of the project’s owner", name: "the room device" };
const HINTS = { readCommunity: "The password for reading.", writeCommunity: "The password for changing values on the device.",
  contact: "sysContact: who looks after the device.", location: "sysLocation: where the device is.", name: "sysName: what the network calls the device." };

// A text that may hold a secret comes hidden. It is kept, or replaced unseen.
export function editOf(s) {
  const edit = { enabled: s.enabled, readCommunity: { keep: true }, writeCommunity: { keep: true } }, text = (t, keep) => (t.hidden ? { keep } : t);
  for (const field in FROM) Object.assign(edit, { [field]: s[field].hidden ? { keep: true } : s[field].value, [FROM[field]]: s[FROM[field]] });
  return { ...edit, trapTargets: s.trapTargets.map((t, n) => ({ row: n, target: text(t.target, n), community: { keep: n }, port: text(t.port, n) })) };
}

export const differing = (a, b) => Object.keys(a).filter((field) => JSON.stringify(a[field]) !== JSON.stringify(b[field]));
export const changed = (draft) => differing(editOf(draft.settings), draft.edit);

// What goes over the wire: without the members that only the page needs.
export function wire(edit) {
  const secret = ({ keep, value }) => (keep === undefined ? { value } : { keep });
  return { ...edit, readCommunity: secret(edit.readCommunity), writeCommunity: secret(edit.writeCommunity),
    trapTargets: edit.trapTargets.map(({ target, community, port }) => ({ target, community: secret(community), port })) };
}

// The draft on top of newer settings: what it changes stays, all else is taken over. The kept community of a trap target is
// found again by target and port; where it is not, it has to be given again.
export function rebase(draft, settings, base) {
  const edit = editOf(settings), mine = changed(draft);
  for (const field of mine) edit[field] = draft.edit[field];
  if (mine.includes("trapTargets")) {
    const taken = new Set();
    edit.trapTargets = edit.trapTargets.map((t) => {
      const old = draft.settings.trapTargets[t.row];
      if (!old) return t;
      const keep = settings.trapTargets.findIndex((now, n) => !taken.has(n) && !now.target.hidden && now.target === old.target && now.port === old.port);
      const text = (value) => (typeof value === "string" ? value : "");
      if (keep < 0) return { row: "lost" + t.row, target: text(t.target), community: { value: "", typing: true, ask: true }, port: text(t.port) };
      taken.add(keep);
      return { ...t, row: keep, community: t.community.keep === undefined ? t.community : { keep } };
    });
  }
  return { settings, base, edit };
}

export function setDraft(id, draft) {
  const drafts = { ...state.drafts };
  if (draft && changed(draft).length) drafts[id] = draft; else delete drafts[id];
  update({ drafts });
}

// The rules judge what is typed, a moment later.
function useAdvice(id, edit) {
  const [findings, set] = useState([]);
  useEffect(() => {
    let stop = () => clearTimeout(timer);
    const timer = setTimeout(() => {
      stop = asking((signal) => call("POST", `/devices/${id}/advise`, { settings: wire(edit) }, { quiet: true, signal }), (answer) => set(answer.findings));
    }, 250);
    return () => stop();
  }, [id, edit]);
  return findings;
}

const shownText = (value, set) => (typeof value === "string" ? typing(value, set) : { ...typing("", set), placeholder: "hidden; kept as it is" });

const focusOn = (id) => document.getElementById(id).focus();
const undoable = (form, field) => form.changed.includes(field) && html` <span class="tag">changed</span> ${
  quiet("Undo", () => { focusOn(field); form.undo(field); }, { "aria-label": "Undo the change of " + TERMS[field] })}`;

// Label, value, hint and findings of a setting. `inside` gets the attributes that bind them.
function field(form, name, inside, words, label) {
  const own = form.of(name);
  return html`<div class=${"field" + (form.changed.includes(name) ? " changed" : "")}>
    <div class="label">${label || html`<label for=${name}>${TERMS[name]}</label>`}${undoable(form, name)}</div>
    <div>${inside({ id: name, "aria-describedby": `${name}-hint ${name}-findings`, "aria-invalid": form.bad(own) })}${hint(words, name + "-hint")}
      ${findingList(own, "Findings about " + TERMS[name], name + "-findings")}</div></div>`;
}

function textField(form, name) {
  const { edit, settings } = form.draft, from = FROM[name], isChanged = form.changed.includes(name);
  const empty = isChanged ? "It will be emptied, and counts as erased." : settings[name].erased ? "Erased: it stays empty."
    : "Empty: the agent fills it from the device’s file, where that has a value.";
  return field(form, name, (aria) => html`<input ...${aria} ...${shownText(edit[name], (value) => form.set(name, value))} readonly=${form.fixed || edit[from]} />
    <label class="switch"><input id=${from} ...${ticking(edit[from], (value) => form.set(from, value))} disabled=${form.fixed} />From ${PROJECT[name]}</label>${undoable(form, from)}`,
  [HINTS[name], " ", edit[from] ? "From the project: this text is the project’s business." : edit[name] === "" && empty]);
}

// A secret is kept, replaced or erased. The page knows whether one is set, not what it is.
function Secret({ id, label, value, old, isSet, set, fixed, aria }) {
  const [seen, see] = useState(false);
  const mode = value.keep !== undefined ? "keep" : value.typing ? "replace" : "erase";
  const options = { keep: old && (isSet ? "Keep" : "Keep: not set"), replace: isSet ? "Replace" : "Set", erase: isSet ? "Erase" : mode === "erase" && "None" };
  const choose = (next) => set(next === "keep" ? old : { value: "", typing: next === "replace" });
  return html`<div class="secret"><select ...${aria} aria-label=${label} disabled=${fixed} onChange=${(e) => choose(e.target.value)}>
      ${Object.keys(options).map((key) => options[key] && html`<option value=${key} selected=${key === mode}>${options[key]}</option>`)}</select>
    ${mode === "replace" && html`<input aria-label=${"New: " + label} ...${aria} ...${typing(value.value, (text) => set({ value: text, typing: true }))} id=${id + "-new"}
        type=${seen ? "text" : "password"} autocomplete="new-password" />${quiet(seen ? "Hide" : "Show", () => see(!seen), { "aria-label": (seen ? "Hide: " : "Show: ") + label })}`}</div>`;
}

function SecretField({ form, name }) {
  const now = form.draft.edit[name], { set, erased, value } = form.draft.settings[name];
  const [seen, see] = useState(false);
  return field(form, name, (aria) => html`<${Secret} id=${name} label=${TERMS[name]} value=${now} old=${{ keep: true }} isSet=${set} aria=${aria} fixed=${form.fixed}
      set=${(next) => form.set(name, next)} />${value && quiet(seen ? "Hide the present one" : "Show the present one", () => see(!seen))}${seen && html`<code>${value}</code>`}`,
  [HINTS[name], " ", now.keep ? (set ? "It is set." : erased ? "Erased: it stays unset." : "It is not set.") : now.value === "" && "It will be erased."]);
}

function TrapTargets({ form }) {
  const targets = form.draft.edit.trapTargets, old = form.draft.settings.trapTargets;
  const set = (next) => form.set("trapTargets", next);
  const change = (n, part) => set(targets.map((t, k) => (k === n ? { ...t, ...part } : t)));
  const move = (n, by) => set(targets.map((t, k) => targets[k === n ? n + by : k === n + by ? n : k]));
  const about = (n, part) => findingList(form.of(`trapTargets[${n}].${part}`), `Findings about the ${part} of trap target ${n + 1}`, `trap-${n}-${part}`);
  const aria = (n, part) => ({ "aria-label": `${part} of trap target ${n + 1}`, "aria-describedby": `trap-${n}-${part}`, "aria-invalid": form.bad(form.of(`trapTargets[${n}].${part}`)) });
  const input = (n, part) => html`<td class=${part}><input ...${aria(n, part)} placeholder=${part} ...${shownText(targets[n][part], (value) => change(n, { [part]: value }))} readonly=${form.fixed} />${about(n, part)}</td>`;
  const order = (n, by, sign, words) => button(sign, () => targets[n + by] && move(n, by), { "aria-disabled": !targets[n + by], "aria-label": `Move trap target ${n + 1} ${words}` });
  return html`<fieldset class=${"traps" + (form.changed.includes("trapTargets") ? " changed" : "")}><legend>Trap targets${undoable(form, "trapTargets")}</legend>
    ${hint("Where the daemon sends its traps, in this order.")}${findingList(form.of("trapTargets"), "Findings about Trap targets", "trapTargets-findings")}
    ${has(targets) && html`<table><thead><tr>${["Target", "Port", "Community", "Order"].map((t) => html`<th scope="col">${t}</th>`)}</tr></thead><tbody>
      ${targets.map((t, n) => html`<tr key=${t.row}>${input(n, "target")}${input(n, "port")}
        <td><${Secret} id=${"trap-" + t.row} label=${`community of trap target ${n + 1}`} value=${t.community} fixed=${form.fixed} isSet=${old[t.row] && old[t.row].community.set}
          old=${old[t.row] && { keep: t.row }} set=${(community) => change(n, { community })} />${t.community.ask && hint("The list has moved: give the community again.")}${about(n, "community")}</td>
        <td class="order">${!form.fixed && html`${order(n, -1, "↑", "up")}${order(n, 1, "↓", "down")}${button("✕", () => {
          set(targets.filter((_, k) => k !== n)); focusOn("trapTargets"); }, { "aria-label": `Remove trap target ${n + 1}` })}`}</td></tr>`)}</tbody></table>`}
    ${!targets.length && hint(old.length ? "The list will be erased." : form.draft.settings.trapTargetsErased ? "Erased: the list stays empty." : "None.")}
    ${!form.fixed && button("Add a trap target", () => set([...targets, { row: "new" + Date.now(), target: "", community: { value: "" }, port: "162" }]), { id: "trapTargets" })}</fieldset>`;
}

export function SettingsForm({ id, draft, onReview }) {
  const findings = useAdvice(id, draft.edit), fixed = readOnly(), old = editOf(draft.settings);
  const put = (edit) => setDraft(id, { ...draft, edit });
  const form = { draft, fixed, changed: changed(draft), of: (name) => findings.filter((f) => f.field === name), bad: (list) => list.some((f) => f.severity === "error") || undefined,
    set: (name, value) => put({ ...draft.edit, [name]: value }), undo: (name) => put({ ...draft.edit, [name]: old[name] }) };
  const none = !form.changed.length;
  return html`<form class="settings" onSubmit=${(event) => { event.preventDefault(); onReview(); }}>
    ${findingList(findings.filter((f) => !f.field || !(f.field.split(/[.[]/)[0] in old)), "Findings about all settings")}
    ${field(form, "enabled", (aria) => html`<label class="switch"><input ...${aria} ...${ticking(draft.edit.enabled, (value) => form.set("enabled", value))} disabled=${fixed} />The device answers SNMP</label>`, !draft.edit.enabled && "Switched off. The settings stay in the file.", html`<span>SNMP</span>`)}
    <${SecretField} form=${form} name="readCommunity" /><${SecretField} form=${form} name="writeCommunity" />
    ${textField(form, "contact")}${textField(form, "location")}${textField(form, "name")}<${TrapTargets} form=${form} />
    <div class="buttons sticky">${fixed ? hint("Read only: nothing can be changed here.") : html`<button class="main" aria-disabled=${none}>Review …</button>
      ${button("Discard", () => setDraft(id, null), { "aria-disabled": none })}
      <p class="hint" role="status">${none ? "Nothing is changed." : "Not applied: " + form.changed.map((f) => TERMS[f]).join(", ")}</p>`}</div></form>`;
}
