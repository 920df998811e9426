import { html, render, useEffect, useRef, useState } from "./vendor/standalone.module.js";
import { call, takeToken } from "./api.js";
import { announce, listen, nameOf, start, useStore } from "./store.js";
import { Activity } from "./activity.js";
import { Conversation } from "./talk.js";
import { Device } from "./device.js";
import { Devices } from "./devices.js";
import { Log } from "./log.js";
import { Variables } from "./variables.js";
import { badge, button, Heading, note } from "./parts.js";

const VIEWS = { devices: ["Devices", Devices], variables: ["Variables", Variables], log: ["Log", Log], conversation: ["Conversation", Conversation], activity: ["Activity", Activity] };

function useRoute() {
  const [route, go] = useState(location.hash);
  useEffect(() => addEventListener("hashchange", () => {
    if (takeToken()) listen();  // without loading the page anew: it may have drafts
    go(location.hash);
  }), []);
  const [, view, id, tab] = route.split("/");
  return { view: VIEWS[view] ? view : "devices", id, tab };
}

const refusal = (status) => html`<main class="refusal"><${Heading}>${status === 401 ? "The address is not complete" : "The server refuses this page"}<//>
  <p>${status === 401 ? "Each start of devhost serve makes a new key and prints an address with it. This tab has no key, or an old one."
    : "The page was opened under another name or from another page."}</p>
  <p>Look at the terminal where <code>devhost serve</code> runs. Open the address that it has printed, with all that stands behind the <code>#</code>.</p></main>`;

const restart = () => button("Start the host again", () => call("POST", "/host/restart", {}).then(() => announce("The host starts again."), (e) => announce(e.message)));
const alarm = (title, text, action) => html`<div class="note bad" role="alert"><p><b>${title}</b> ${text}</p>${action}</div>`;

const seconds = (job) => Math.round((Date.now() - job.since) / 1000);

function Host() {
  const session = useStore("session"), gone = useStore("gone"), slow = useStore("slow");
  if (gone) return alarm("devhost serve does not answer.", `What you see may be out of date. The next attempt follows within ${gone.seconds} s.`, button("Try now", gone.retry));
  const { state, reason, call: long, job } = session ? session.host : {};
  if (long && state !== "ended") return alarm("The host waits for a driver.", `${long} has not returned${job ? `; ${job.method} ${job.path} waits for it since ${seconds(job)} s` : ""}.`, restart());
  if (state === "ended") {
    return alarm("The host has ended.", reason, restart());
  }
  if (state === "starting") return note("The drivers of the project are being loaded …");
  return slow && job && note(`The host is busy with ${job.method} ${job.path}, since ${seconds(job)} s.`);
}

function App() {
  const { view, id, tab } = useRoute(), main = useRef();
  const session = useStore("session"), refused = useStore("refused"), status = useStore("status"), drafts = useStore("drafts");
  const slow = useStore("slow");
  useStore("devices");
  const [title, View] = VIEWS[view], elsewhere = Object.keys(drafts).filter((d) => d !== id);
  useEffect(() => { document.title = `${id ? nameOf(id) : title} – ${session ? session.project : "devhost"}`; });
  if (refused) return refusal(refused);
  // The session was read while a request was under way, if only its own; it says more when that takes long.
  const host = session && (session.host.state === "busy" && !slow ? "up" : session.host.state);
  return html`<header><a class="skip" href="#/" onClick=${(event) => { event.preventDefault(); main.current.focus(); }}>Skip to the content</a><p><b>devhost</b> ${session && session.project}</p>
      <nav aria-label="Views">${Object.keys(VIEWS).map((key) => html`<a href=${"#/" + key} aria-current=${key === view && (id ? "true" : "page")}>${VIEWS[key][0]}</a>`)}</nav>
      ${session && html`<p>${session.readOnly && badge("read only")}${session.showsSecrets && badge("secrets shown", "warn")}${badge("host " + host, { ended: "bad", starting: "" }[host] || "good")}</p>`}</header>
    <main ref=${main} tabindex="-1"><${Host} />${elsewhere.length > 0 && note(["Not applied yet: ", elsewhere.map((d) => html`<a href=${"#/devices/" + d}>${nameOf(d)}</a> `)], "warn")}
      ${view === "devices" && id ? html`<${Device} key=${id + tab} id=${Number(id)} view=${tab} />` : html`<${View} key=${view} />`}</main>
    <footer><p role="status">${status}</p>${session && html`<p class="hint">devhost ${session.version}, contract ${session.contract}</p>`}</footer>`;
}

takeToken();
start();
render(html`<${App} />`, document.getElementById("app"));
