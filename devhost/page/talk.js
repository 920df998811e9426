// The raw conversation, for authors of tools: what is sent and what is answered, to the letter.
import { html, useState } from "./vendor/standalone.module.js";
import { call } from "./api.js";
import { readOnly, useRead } from "./store.js";
import { clock, Heading, hint, select, trouble, typing } from "./parts.js";

const told = [];

export function Conversation() {
  const { data, error, reload } = useRead("/commands");
  const [form, set] = useState({ to: "", name: "GetDeviceList", parameter: "deviceId", value: "" }), [, draw] = useState();
  const drivers = (data || { drivers: [] }).drivers, driver = drivers.find((d) => String(d.id) === form.to) || (form.to !== "event" && drivers[0]);
  const put = (key) => (value) => set({ ...form, [key]: value });
  const send = async (event) => {
    event.preventDefault();
    const said = { name: form.name, parameters: form.value ? { [form.parameter]: form.value } : {} };
    const entry = { ...said, time: Date.now(), to: driver ? driver.name : "all" };
    told.unshift(entry);
    draw({});
    await (driver ? call("POST", "/command", { driver: driver.id, ...said }) : call("POST", "/event", said))
      .then((answer) => { entry.reply = answer.reply || (driver ? "(no reply)" : "(sent)"); }, (e) => { entry.reply = e.message; });
    draw({});
  };
  const input = (label, key, list) => html`<label><span>${label}</span><input list=${key} ...${typing(form[key], put(key))} /></label><datalist id=${key}>${list.map((value) => html`<option value=${value} />`)}</datalist>`;
  return html`<${Heading}>Conversation<//>${hint("What a configuration tool would send. It goes to the driver as it stands, without any advice.")}${trouble(error, reload)}
    ${readOnly() ? hint("Read only: nothing can be sent.") : data && html`<form class="talk" onSubmit=${send}>
      ${select("To", driver ? driver.id : "event", put("to"), { ...Object.fromEntries(drivers.map((d) => [d.id, `${d.name} (${d.id})`])), event: "all: a system event" })}
      ${input(driver ? "Command" : "Event", "name", driver ? driver.commands : data.events)}${input("Parameter", "parameter", ["deviceId", "xml"])}
      <label class="wide"><span>Value</span><textarea rows="3" ...${typing(form.value, put("value"))} /></label><button class="main">Send</button></form>`}
    <div class="told" role="log" aria-label="Conversation">${told.map((t) => html`<p><time>${clock(t.time)}</time> <b>${t.name}</b> to ${t.to}</p>
      ${Object.entries(t.parameters).map(([key, value]) => html`<pre>${key}=${value}</pre>`)}<pre class="reply">${t.reply || "…"}</pre>`)}</div>`;
}
