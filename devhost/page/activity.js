import { html, useEffect } from "./vendor/standalone.module.js";
import { useRead } from "./store.js";
import { clock, Heading, note, table, trouble } from "./parts.js";

const MOST = 50, STEP = 10, HIGH = 72, ROOM = 56;
const sum = (list) => list.reduce((a, b) => a + b, 0);

function plot(d, minute, most, slowest) {
  const dots = d.probeMs.map((ms, n) => ms !== null && [n * STEP + 5, HIGH - 4 - (ms / slowest) * ROOM]).filter(Boolean);
  return html`<svg viewBox="0 0 600 88" role="img" aria-label=${`${d.name}: ${sum(d.requests)} requests, ${sum(d.restarts)} restarts, ${dots.length} minutes with a probe`}>
    ${[0, 15, 30, 45, 60].map((m) => html`<path class="grid" d=${`M${m * STEP} 0V${HIGH}`} /><text x=${m * STEP} y="85" text-anchor=${{ 0: "start", 60: "end" }[m] || "middle"}>${minute(m)}</text>`)}
    <path class="base" d="M0 72H600" />${d.requests.map((count, n) => count > 0 && html`<path class="requests" d=${`M${n * STEP + 1} ${HIGH}v${(-count / most) * ROOM}h8V${HIGH}z`} />`)}
    ${d.restarts.map((count, n) => count > 0 && html`<path class="restart" d=${`M${n * STEP + 5} 2l5 9h-10z`} />`)}
    <polyline class="line" points=${dots.join(" ")} />${dots.map(([x, y]) => html`<circle class="probe" cx=${x} cy=${y} r="2.5" />`)}</svg>`;
}

export function Activity() {
  const { data, error, reload } = useRead("/activity");
  useEffect(() => { const timer = setInterval(reload, 15000); return () => clearInterval(timer); }, []);
  const busy = ((data && data.devices) || []).filter((d) => sum(d.requests) + sum(d.restarts) + sum(d.probeMs) > 0);
  const shown = busy.slice(0, MOST), most = Math.max(1, ...shown.flatMap((d) => d.requests)), slowest = Math.max(1, ...shown.flatMap((d) => d.probeMs));
  const minute = (n) => clock(data.from + n * 60000).slice(0, 5);
  return html`<${Heading}>The last hour<//>${trouble(error, reload)}${data && !busy.length && note("No device was asked or changed in the last hour.")}
    ${busy.length > 0 && html`<p class="legend"><span class="requests">requests a minute (most: ${most})</span> <span class="restart">daemon started anew</span> <span class="probe">probe (slowest: ${slowest.toFixed(1)} ms)</span></p>`}
    ${shown.map((d) => html`<section key=${d.id} class="plot"><h2>${d.name}</h2>${plot(d, minute, most, slowest)}<details><summary>${d.name} as a table</summary>
      ${table("The last hour of " + d.name, ["Minute", "Requests", "Restarts", "Probe"], d.requests.map((r, n) => [minute(n), r, d.restarts[n], d.probeMs[n] === null ? "" : d.probeMs[n].toFixed(1) + " ms"]).filter((r) => r[1] || r[2] || r[3]))}</details></section>`)}
    ${busy.length > MOST && note(`${busy.length - MOST} more devices were busy.`)}`;
}
