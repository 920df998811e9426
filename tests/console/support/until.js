// Waiting with a deadline, and nothing else.
import { setTimeout as pause } from "node:timers/promises";

// Answers with the first true value of `look`, or fails with `what` after the deadline.
export async function until(what, look, milliseconds = Number(process.env.CONSOLE_DEADLINE || 60000)) {
  const end = Date.now() + milliseconds;
  for (;;) {
    const found = await look();
    if (found) return found;
    if (Date.now() > end) throw new Error(`not within ${milliseconds} ms: ${what}`);
    await pause(20);
  }
}
