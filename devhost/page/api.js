const KEY = "devhost-token";

// The token in the fragment leaves the address bar at once.
export function takeToken() {
  const given = location.hash.slice(1);
  if (!/^[\w=-]{20,}$/.test(given)) return false;
  sessionStorage.setItem(KEY, given);
  history.replaceState(null, "", "#/devices");
  return true;
}

export const isRefusal = (status) => [401, 403, 421].includes(status);

// Status 0: nobody answers.
export class Refused extends Error {
  constructor(status, body) {
    super((body && body.error && (body.error.message || body.error)) || (status ? `The server answers with status ${status}.` : "The server does not answer."));
    this.status = status;
  }
}

const get = (path, more, options) => fetch("/api/v1" + path,
  { cache: "no-store", ...options, headers: { "X-Devhost-Token": sessionStorage.getItem(KEY) || "", ...more } });

let pending = 0, onPending;
export const watchPending = (listener) => (onPending = listener);

// Answers with the body, or throws Refused. A quiet request is not waited for by anybody.
export async function call(method, path, body, { base, quiet, signal } = {}) {
  if (!quiet) onPending(++pending);
  try {
    const response = await get(path, { ...(body && { "Content-Type": "application/json" }), ...(base && { "If-Match": base }) }, { method, signal, body: body && JSON.stringify(body) })
      .catch(() => { throw new Refused(0); });
    const answer = await response.json().catch(() => null);
    if (!response.ok) throw new Refused(response.status, answer);
    return answer;
  } finally {
    if (!quiet) onPending(--pending);
  }
}

export const read = (path, signal) => call("GET", path, undefined, { signal });

// What ask(signal) promises goes to `then`, or its error to `failed`, unless what this returns is called: then nobody waits for it.
export function asking(ask, then, failed = () => {}) {
  const stop = new AbortController(), unlessStopped = (go) => (answer) => stop.signal.aborted || go(answer);
  ask(stop.signal).then(unlessStopped(then), unlessStopped(failed));
  return () => stop.abort();
}

const SILENCE = 40000;  // the server writes a ping each 15 s

const seen = () => new Promise((go) => {
  const look = () => {
    if (document.hidden) return;
    document.removeEventListener("visibilitychange", look);
    go();
  };
  document.addEventListener("visibilitychange", look);
  look();
});

// Follows the stream for as long as the tab is seen. It is fetch and not EventSource, because a header carries the token.
export async function follow({ open, event, stale, gone, refused }) {
  let last = "0";  // the server still has what has happened lately
  for (let wait = 500; ; wait = Math.min(wait * 2, 15000)) {
    await seen();
    const stop = new AbortController();
    document.addEventListener("visibilitychange", () => document.hidden && stop.abort(), { signal: stop.signal });
    let timer;
    const watch = () => { clearTimeout(timer); timer = setTimeout(() => stop.abort(), SILENCE); };
    try {
      watch();
      const response = await get("/events", { "Last-Event-ID": last }, { signal: stop.signal });
      if (isRefusal(response.status)) return refused(response.status);
      if (response.ok) {
        open();
        wait = 250;
        const reader = response.body.pipeThrough(new TextDecoderStream()).getReader();
        for (let text = "", part; !(part = await reader.read()).done;) {
          watch();
          const blocks = (text + part.value).split("\n\n");
          text = blocks.pop();
          for (const block of blocks) {
            const [, id] = /^id: ?(.+)$/m.exec(block) || [], [, name] = /^event: ?(.+)$/m.exec(block) || [], [, data] = /^data: ?(.+)$/m.exec(block) || [];
            last = id || last;
            if (name === "stale") stale();
            if (!name && data) event(JSON.parse(data));
          }
        }
      }
    } catch { /* the next attempt says more */ }
    clearTimeout(timer);
    stop.abort();
    if (!document.hidden) await new Promise((retry) => { gone({ seconds: Math.ceil(wait / 1000), retry }); setTimeout(retry, wait); });
  }
}
