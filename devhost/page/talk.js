// The raw conversation, for authors of tools: what is sent and what is answered, to the letter.
import { html, useState } from "./vendor/standalone.module.js";
import { call } from "./api.js";
import { readOnly, useRead } from "./store.js";
import { button, clock, Heading, hint, select, trouble, typing } from "./parts.js";

const told = [];
const PARAMETERS = { driver: ["deviceId", "xml"], event: ["iditem", "idroom", "iddevice", "idvariable"] };

export function Conversation() {
  const { data, error, reload } = useRead("/commands");
  const [form, set] = useState({ to: "", name: "GetDeviceList", rows: [{ parameter: "deviceId", value: "" }] }), [, draw] = useState();
  const drivers = (data || { drivers: [] }).drivers, driver = drivers.find((d) => String(d.id) === form.to) || (form.to !== "event" && drivers[0]);
  const put = (key) => (value) => set({ ...form, [key]: value });
  const putRow = (n, key) => (value) => set({ ...form, rows: form.rows.map((row, k) => (k === n ? { ...row, [key]: value } : row)) });
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
  const input = (label, id, list, value, change) => html`<label><span>${label}</span><input list=${id} ...${typing(value, change)} /></label><datalist id=${id}>${list.map((option) => html`<option value=${option} />`)}</datalist>`;
  const of = (label, n) => (n ? `${label} ${n + 1}` : label);
  return html`<${Heading}>Conversation<//>${hint("What a configuration tool would send. It goes to the driver as it stands, without any advice.")}${trouble(error, reload)}
    ${readOnly() ? hint("Read only: nothing can be sent.") : data && html`<form class="talk" onSubmit=${send}>
      ${select("To", driver ? driver.id : "event", put("to"), { ...Object.fromEntries(drivers.map((d) => [d.id, `${d.name} (${d.id})`])), event: "all: a system event" })}
      ${input(driver ? "Command" : "Event", "name", driver ? driver.commands : data.events, form.name, put("name"))}
      ${form.rows.map(({ parameter, value }, n) => html`${input(of("Parameter", n), "parameter" + n, PARAMETERS[driver ? "driver" : "event"], parameter, putRow(n, "parameter"))}
        <label class="wide"><span>${of("Value", n)}</span><textarea rows=${n ? 1 : 3} ...${typing(value, putRow(n, "value"))} /></label>`)}
      <div class="buttons wide">${button("Add a parameter", () => set({ ...form, rows: [...form.rows, { parameter: "", value: "" }] }))}<button class="main">Send</button></div></form>`}
    <div class="told" role="log" aria-label="Conversation">${told.map((t) => html`<p><time>${clock(t.time)}</time> <b>${t.name}</b> to ${t.to}</p>
      ${Object.entries(t.parameters).map(([key, values]) => values.map((value) => html`<pre>${key}=${value}</pre>`))}<pre class="reply">${t.reply || "…"}</pre>`)}</div>`;
}
