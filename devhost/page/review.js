import { html, useEffect, useState } from "./vendor/standalone.module.js";
import { asking, call } from "./api.js";
import { announce, readOnly, state, update, useStore } from "./store.js";
import { button, diff, findingList, has, Heading, hint, messages, note, probed, settingChanges, ticking, trouble } from "./parts.js";

const STEPS = { judge: "Judge the settings", preview: "Try the change on a scratch device", snapshot: "Keep a snapshot",
  set: "Change the device", look: "Look at the device again", probe: "Ask the daemon" };
const MARKS = { begun: "…", done: "✓", failed: "✗" };
const DONE = { unchanged: "Nothing had to be changed", changed: "The change is made", waits: "The device gets the change when it is back",
  stopped: "The change was stopped", failed: "The change has failed" };
const KINDS = { unchanged: "good", changed: "good", waits: "warn" };

function Steps({ device }) {
  const steps = useStore("steps")[device] || [];
  return html`<ol class="steps" aria-label="Steps" aria-live="polite">${steps.map((s) => html`<li class=${s.state}>${MARKS[s.state]} ${
    STEPS[s.step] || s.step} <span class="hint">${s.state} ${s.text}</span></li>`)}</ol>`;
}

// `plan` is the path that tells what the body would change, `apply` the method and path that change it; conflict() follows status 412.
export function Review({ device, name, title, verb, body, plan, apply, base, onBack, onDone, conflict }) {
  const [accepted, accept] = useState([]);
  const [{ found, error, result, going }, set] = useState({});
  const failed = (e) => (e.status === 412 ? conflict() : set({ found, error: e }));
  const look = () => asking((signal) => call("POST", plan, { ...body, accepted }, { signal }), (answer) => set({ found: answer }), failed);
  useEffect(look, [accepted]);
  const may = found && !going && found.verdict === "would-change" && !readOnly();
  const start = () => {
    update({ steps: { ...state.steps, [device]: [] } });
    set({ found, going: true });
    call(...apply, { ...body, accepted }, { base: base || found.base }).then((answer) => {
      set({ result: answer });
      announce(`${name}: ${DONE[answer.verdict]}.`);
      if (answer.verdict in KINDS) onDone();  // else it is not made
    }, failed);
  };
  if (result) {
    return html`<${Heading} key="made" level="h2">${DONE[result.verdict]}<//>${note(result.reason || (result.snapshot ? `Snapshot ${result.snapshot} has what was there before.`
      : "There was no need for a snapshot."), KINDS[result.verdict] || "bad")}<${Steps} device=${device} />${settingChanges(result.settings)}
      ${findingList(result.findings, "Findings")}${messages(result.messages)}${probed(result.probe)}<div class="buttons">${button("Back to " + name, onBack, { class: "main" })}</div>`;
  }
  const rules = [...new Set([...(found ? found.findings : []).filter((f) => f.severity === "error").map((f) => f.rule), ...accepted])];
  return html`<${Heading} key="plan" level="h2">${title}<//>${trouble(error, look)}${!found && !error && hint("The change is tried on a scratch device …")}
    ${found && html`${found.verdict !== "would-change" && note(found.reason || "Nothing would change.", found.reason && "bad")}${settingChanges(found.settings)}
      ${has(found.findings) && html`<h3>What is lost, and what to know</h3>${findingList(found.findings, "Findings about the change")}`}
      ${rules.map((rule) => html`<label class="switch"><input ...${ticking(accepted.includes(rule), (on) =>
        accept(on ? [...accepted, rule] : accepted.filter((r) => r !== rule)))} />Go on in spite of <code>${rule}</code></label>`)}
      ${messages(found.messages)}<h3>The file</h3>${diff(found.difference, "Difference of the file")}
      ${found.notPutBack && html`<h3>Not put back</h3>${hint("The agent writes only its section. This text stays as it is now.")}${diff(found.notPutBack, "What is not put back")}`}`}
    ${going && html`<${Steps} device=${device} />`}<div class="buttons sticky">${button(going ? "Under way …" : verb, () => may && start(), { class: "main", "aria-disabled": !may })}
      ${button("Back", () => going || onBack(), { "aria-disabled": Boolean(going) })}</div>`;
}
