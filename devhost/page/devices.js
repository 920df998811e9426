import { html, useEffect, useMemo, useState } from "./vendor/standalone.module.js";
import { useStore, readDevices } from "./store.js";
import { badge, filterBox, has, Heading, note, row, table, trouble } from "./parts.js";

export const daemonWords = ({ daemon }) => (!daemon ? "" : !daemon.running ? "stopped" : daemon.waits ? "a change waits" : "runs");
const named = (d) => `${d.name} ${d.id} ${d.module} ${d.version}`.toLowerCase();
// A filter finds their beginnings: "unmanaged" has "managed" in it.
const words = (d) => ` ${d.managed ? "managed" : "unmanaged"} ${d.reachable ? "online on line" : "offline off line"} ${d.dirty ? "unwritten" : "written"} ${daemonWords(d)}`;
const PART = 100;  // rows that are drawn at once; the others follow while the page answers
const soft = (text) => html`<span class="hint">${text}</span>`;

const rowOf = (d, draft) => row([html`<a href=${"#/devices/" + d.id}>${d.name}</a> ${draft && badge("not applied", "warn")}`, d.id,
  d.listed ? (d.managed ? badge("managed", "good") : soft("no")) : badge("version too old"), d.problem ? badge("driver fails", "bad") : d.reachable ? "on line" : badge("off line", "bad"),
  d.dirty ? badge("not written", "warn") : soft("written"), html`${daemonWords(d)} ${d.daemon && soft(d.daemon.address)}`, d.version, soft(d.module)], d.id);

export function Devices() {
  const devices = useStore("devices"), error = useStore("trouble"), drafts = useStore("drafts");
  const [filter, setFilter] = useState(""), [limit, setLimit] = useState(PART);
  const rows = useMemo(() => {
    const parts = filter.toLowerCase().split(/\s+/);
    return (devices || []).filter((d) => parts.every((part) => named(d).includes(part) || words(d).includes(" " + part))).map((d) => rowOf(d, drafts[d.id]));
  }, [devices, drafts, filter]);
  const list = useMemo(() => table("Devices", ["Name", "Id", "Managed", "Reachable", "File", "Daemon", "Version", "Driver"], rows.slice(0, limit)), [rows, limit]);
  useEffect(() => { const timer = limit < rows.length && setTimeout(() => setLimit(limit + PART), 20); return () => clearTimeout(timer); }, [rows, limit]);
  return html`<div class="bar"><${Heading}>Devices<//>${filterBox(filter, (text) => { setFilter(text); setLimit(PART); })}
      <p role="status" class="hint">${devices ? `${rows.length} of ${devices.length}` : "Reading the devices …"}</p></div>
    ${trouble(error, readDevices)}${has(rows) && list}${devices && !rows.length && note(devices.length
      ? "No device matches. The filter looks at name, id, driver, version, and words such as “offline” or “managed”."
      : "The project has no device that can be configured over SNMP.")}`;
}
