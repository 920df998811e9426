import { html, useState } from "./vendor/standalone.module.js";
import { call } from "./api.js";
import { announce, nameOf, readOnly, useRead, useStore } from "./store.js";
import { filterBox, has, Heading, note, table, ticking, trouble } from "./parts.js";

export function Variables() {
  useStore("devices");
  const { data, error, reload } = useRead("/variables", useStore("changes").flags);
  const [filter, setFilter] = useState(""), [failed, fail] = useState();
  const set = (v, trapEnabled) => call("PUT", `/variables/${v.device}/${v.id}`, { trapEnabled }).then(() => { fail(); announce(`${v.name}: traps ${trapEnabled ? "on" : "off"}`); }, fail).then(reload);
  const found = ((data && data.variables) || []).filter((v) => `${v.name} ${nameOf(v.device)}`.toLowerCase().includes(filter.toLowerCase()));
  return html`<div class="bar"><${Heading}>Variables<//>${filterBox(filter, setFilter)}</div>${trouble(failed || error, () => { fail(); reload(); })}
    ${has(found) && table("Variables", ["Name", "Device", "Id", "Kind", "Trap"], found.map((v) => [v.name, nameOf(v.device), v.id, v.user ? "user variable" : "variable",
      html`<input aria-label=${`Trap for ${v.name} of ${nameOf(v.device)}`} ...${ticking(v.trapEnabled, (on) => set(v, on))} disabled=${readOnly()} />`]))}
    ${data && !found.length && note(filter ? "No variable matches." : "The project has no variables.")}`;
}
