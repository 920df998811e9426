import { html, useMemo, useState } from "./vendor/standalone.module.js";
import { nameOf, useStore } from "./store.js";
import { button, clock, filterBox, Heading, note, select } from "./parts.js";

const GROUPS = { all: "Everything", notification: "Notifications", reply: "Commands and replies", log: "Log lines", step: "Steps" };
const MORE = { command: "reply", manners: "log", error: "log", status: "log", probe: "step", restart: "step" };

const parameters = (list) => Object.entries(list || {}).map(([key, value]) => `${key}=${value}`).join(" ");
const words = (e) => [e.operation, e.step, e.state, e.reason, e.verdict, e.ms && e.ms + " ms", e.name, parameters(e.parameters), e.xml, e.level && "level " + e.level, e.text, e.module].filter(Boolean).join(" ");
const who = (e) => e.driver || (e.candidates || []).join("|") || nameOf(e.device);

export function Log() {
  const log = useStore("log");
  const [group, setGroup] = useState("all"), [filter, setFilter] = useState(""), [held, hold] = useState();
  const shown = useMemo(() => (held || log).filter((e) => e.kind !== "devices" && ["all", e.kind, MORE[e.kind]].includes(group) &&
    `${who(e)} ${e.kind} ${words(e)}`.toLowerCase().includes(filter.toLowerCase())).slice(-300).reverse(), [held || log, group, filter]);
  return html`<div class="bar"><${Heading}>Log<//>${select("Show", group, setGroup, GROUPS)}${filterBox(filter, setFilter)}
      ${button("Pause", () => hold(held ? undefined : log), { "aria-pressed": Boolean(held) })}</div>
    ${!shown.length && note(log.length ? "Nothing matches." : "Nothing has happened since this page was opened.")}
    <div class="log" role="log" aria-label="What happens" tabindex="0">${shown.map((e) => html`<div key=${e.n} class=${e.kind}>
      <time>${clock(e.time)}</time><b>${e.kind}</b><i>${who(e)}</i><span>${words(e)}</span></div>`)}</div>`;
}
