import { useState, useEffect, useRef } from "./vendor/standalone.module.js";
import { asking, call, follow, isRefusal, read, watchPending } from "./api.js";

export const state = {
  session: null, devices: null,  // as the server tells them
  trouble: null,                 // the error of the last reading of the devices
  refused: 0,                    // the status by which the server has refused this page
  gone: null,                    // { seconds, retry } while nobody answers
  generation: 0,                 // rises when all that was read may be out of date
  log: [], steps: {},            // events, and the steps of the last operation by device
  changes: {},                   // by device, and `flags`: the number of the last event that told of a change
  drafts: {},                    // by device: { settings, base, edit }
  status: "",                    // what the last operation came to
  slow: false,                   // a request has been waiting for a while
};

const listeners = new Set();
export function update(change) {
  Object.assign(state, change);
  for (const listener of [...listeners]) listener();
}

// A member of the state; the component is drawn again when it is another one.
export function useStore(member) {
  const [, draw] = useState(0), now = useRef();
  now.current = state[member];
  useEffect(() => {
    const look = () => state[member] !== now.current && draw((n) => n + 1);
    listeners.add(look);
    look();
    return () => listeners.delete(look);
  }, []);
  return now.current;
}

// What GET PATH answers: { data, error, reload, forget }. It is read again when all may be out of date, and when the version is
// another one. `reload` shows what was read until the new answer is there, `forget` does not.
export function useRead(path, version) {
  const generation = useStore("generation");
  const [answer, set] = useState({}), [again, reload] = useState(0);
  useEffect(() => {
    if (path) return asking((signal) => read(path, signal), (data) => set({ path, data }), (error) => set((old) => ({ ...(old.path === path && old), path, error })));
  }, [path, version, generation, again]);
  return { ...(answer.path === path && answer), reload: () => reload((n) => n + 1), forget: () => { set({}); reload((n) => n + 1); } };
}

export const announce = (status) => update({ status });
export const readOnly = () => Boolean(state.session && state.session.readOnly);
export const deviceOf = (id) => (state.devices || []).find((d) => d.id === Number(id));
export const nameOf = (id) => (deviceOf(id) || { name: id }).name;

let once;
const readSession = () => call("GET", "/session", undefined, { quiet: true })
  .then((session) => update({ session }), ({ status }) => {
    if (isRefusal(status)) return update({ refused: status });
    clearTimeout(once);
    once = status && setTimeout(readSession, 1000);  // the stream says when nobody answers
  });

let reading, due;
export async function readDevices() {
  if (reading) return void (due = true);
  reading = true;
  await read("/devices").then(({ devices }) => update({ devices, trouble: null }), (trouble) => update({ trouble }));
  reading = false;
  if (due) { due = false; setTimeout(readDevices, 150); }
}

function readAll() {
  update({ generation: state.generation + 1 });
  readSession();
  readDevices();
}

const KEPT = 1000;

function happened(event) {
  const change = { log: [...state.log.slice(-KEPT), event] }, { kind, device } = event;
  if (kind === "step") {
    const old = (state.steps[device] || []).filter((s) => s.step !== event.step);
    change.steps = { ...state.steps, [device]: [...old, event] };
  }
  // A notification writes a large id as a negative number.
  const moved = kind === "notification" && /^<DeviceChanged><id>(-?\d+)</.exec(event.xml);
  if (moved || kind === "flag") change.changes = { ...state.changes, [moved ? moved[1] >>> 0 : "flags"]: event.n };
  update(change);
  if (kind === "devices" || kind === "notification") readDevices();
  if (kind === "host") (event.state === "up" ? readAll : readSession)();
}

let following;

// Follows the events; after a refusal again, with another key.
export function listen() {
  if (state.refused) update({ refused: 0, log: [], steps: {} });
  following = following || follow({ open: () => { update({ gone: null }); readAll(); }, event: happened, stale: readAll, gone: (gone) => update({ gone }),
    refused: (refused) => { following = null; update({ refused }); } });
}

export function start() {
  let timer;
  watchPending((count) => {
    clearInterval(timer);
    if (count) timer = setInterval(() => { update({ slow: true }); readSession(); }, 1000);
    else if (state.slow) update({ slow: false });
  });
  listen();
  addEventListener("beforeunload", (event) => Object.keys(state.drafts).length && event.preventDefault());
}
