import { html, useState } from "./vendor/standalone.module.js";
import { call } from "./api.js";
import { readOnly, useRead } from "./store.js";
import { button, clock, Heading, hint, select, trouble, typing } from "./parts.js";

const told = [];
const nth = (n) => (n ? " " + (n + 1) : "");

export function Conversation() {
  const { data, error, reload } = useRead("/commands");
  const [form, set] = useState({ to: "", name: "GetDeviceList", rows: [{ parameter: "deviceId", value: "" }] }), [, draw] = useState();
  const drivers = (data || { drivers: [] }).drivers, driver = drivers.find((d) => String(d.id) === form.to) || (form.to !== "event" && drivers[0]);
  const put = (change) => set({ ...form, ...change });
  const putRow = (n, change) => put({ rows: form.rows.map((row, k) => (k === n ? { ...row, ...change } : row)) });
  const send = async (event) => {
    event.preventDefault();
    const said = { name: form.name, parameters: {} };
    // A parameter may stand several times.
    for (const { parameter, value } of form.rows) if (value) said.parameters[parameter] = [...(said.parameters[parameter] || []), value];
    const entry = { ...said, time: Date.now(), to: driver ? driver.name : "all" };
    told.unshift(entry);
    draw({});
    await (driver ? call("POST", "/command", { driver: driver.id, ...said }) : call("POST", "/event", said))
      .then((answer) => { entry.reply = answer.reply || (driver ? "(no reply)" : "(sent)"); }, (e) => { entry.reply = e.message; });
    draw({});
  };
  const input = (label, list, value, change) => html`<label><span>${label}</span><input list=${list} ...${typing(value, change)} /></label>`;
  const words = (id, list) => html`<datalist id=${id}>${list.map((value) => html`<option value=${value} />`)}</datalist>`;
  return html`<${Heading}>Conversation<//>${hint("What a configuration tool would send. It goes to the driver as it stands, without any advice.")}${trouble(error, reload)}
    ${readOnly() ? hint("Read only: nothing can be sent.") : data && html`<form class="talk" onSubmit=${send}>
      ${select("To", driver ? driver.id : "event", (to) => put({ to }), { ...Object.fromEntries(drivers.map((d) => [d.id, `${d.name} (${d.id})`])), event: "all: a system event" })}
      ${words("names", driver ? driver.commands : data.events)}${words("parameters", driver ? ["deviceId", "xml"] : ["iditem", "idroom", "iddevice", "idvariable"])}
      ${input(driver ? "Command" : "Event", "names", form.name, (name) => put({ name }))}${form.rows.map(({ parameter, value }, n) => html`
        ${input("Parameter" + nth(n), "parameters", parameter, (text) => putRow(n, { parameter: text }))}
        <label class="wide"><span>Value${nth(n)}</span><textarea rows=${n ? 1 : 3} ...${typing(value, (text) => putRow(n, { value: text }))} /></label>`)}
      <div class="buttons wide">${button("Add a parameter", () => put({ rows: [...form.rows, { parameter: "", value: "" }] }))}<button class="main">Send</button></div></form>`}
    <div class="told" role="log" aria-label="Conversation">${told.map((t) => html`<p><time>${clock(t.time)}</time> <b>${t.name}</b> to ${t.to}</p>
      ${Object.entries(t.parameters).map(([key, values]) => values.map((value) => html`<pre>${key}=${value}</pre>`))}<pre class="reply">${t.reply || "…"}</pre>`)}</div>`;
}
