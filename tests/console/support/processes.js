// Programs beside the test, each ended by its own process id.
import { execFile, spawn } from "node:child_process";
import { createSocket } from "node:dgram";
import { createServer } from "node:net";
import { promisify } from "node:util";

const run = promisify(execFile);

export async function freePort() {
  const server = createServer();
  await new Promise((done) => server.listen(0, "127.0.0.1", done));
  const { port } = server.address();
  await new Promise((done) => server.close(done));
  return port;
}

// The same for a daemon that listens on UDP.
export async function freeUdpPort() {
  const socket = createSocket("udp4");
  await new Promise((done) => socket.bind(0, "127.0.0.1", done));
  const { port } = socket.address();
  await new Promise((done) => socket.close(done));
  return port;
}

// What the program prints. Fails with its complaint when its status is not 0.
export async function output(program, words, options = {}) {
  return (await run(program, words, { timeout: 30000, ...options })).stdout;
}

// A program that runs until it is ended. `text` is what it has printed so far.
export class Program {
  constructor(program, words, options = {}) {
    this.text = "";
    // It ends with this process, also when that is killed.
    this.child = spawn("setpriv", ["--pdeathsig", "KILL", "--", program, ...words], { stdio: ["ignore", "pipe", "pipe"], ...options });
    for (const stream of [this.child.stdout, this.child.stderr]) stream.on("data", (data) => (this.text += data));
    this.ended = new Promise((done) => this.child.on("exit", (status, signal) => done({ status, signal })));
  }

  get pid() { return this.child.pid; }
  get isRunning() { return this.child.exitCode === null && this.child.signalCode === null; }

  async end(signal = "SIGTERM") {
    if (this.isRunning) this.child.kill(signal);
    return this.ended;
  }
}
