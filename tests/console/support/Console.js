// `devhost serve` with a project of its own, as somebody would start it.
import { Program, freeUdpPort, output } from "./processes.js";
import { until } from "./until.js";

export const PROGRAM = process.env.DEVHOST || new URL("../../../build/release/bin/devhost", import.meta.url).pathname;

// Communities of the devices. Nothing that a browser gets may hold one of them.
export const SECRETS = { read: "zr-our-house", write: "zw-k3tchen", trap: "zt-housetraps" };

const escaped = (text) => text.replace(/&/g, "&amp;").replace(/"/g, "&quot;").replace(/</g, "&lt;");
const settings = (list) => Object.entries(list).map(([name, value]) => `<setting name="${name}" value="${escaped(value)}"/>`).join("");

// Two devices with a real daemon each, a simulated one, three variables; `more` stands at the end.
export async function writeProject(folder, more = "") {
  const ports = { kitchen: await freeUdpPort(), cellar: await freeUdpPort() };
  const common = { managed: "true", enabled: "true", communityRead: SECRETS.read, communityWrite: SECRETS.write };
  const device = (id, name, module, attributes, values, traps = "") => {
    folder.write(`${name}/snmpd.conf`, "# By hand, before there was an agent.\nview systemonly included .1.3.6.1.2.1.1\n");
    return `<driver id="${id}" name="${name}" module="${module}"><config folder="{project}/${name}" version="1.2.0" ${attributes}>${settings(values)}${traps}</config></driver>\n`;
  };
  const project = folder.write("project.xml", `<project>\n<driver id="1" name="agent" module="snmp_configuration_agent.so"/>\n${
    device(12, "kitchen", "local_snmpd.so", `port="${ports.kitchen}"`, { ...common, sysContact: "Ada, ground floor", sysLocation: "left of the door", sysName: "kitchen" },
      `<trapTarget target="127.0.0.1" community="${SECRETS.trap}" port="9"/><trapTarget target="127.0.0.1" port="10"/>`)}${
    device(15, "cellar", "local_snmpd.so", `port="${ports.cellar}"`, { ...common, sysName: "cellar" })}${
    device(18, "attic", "simulated_device.so", "", { sysName: "attic" })}${more}
<variable device="12" id="1" name="temperature"/><variable device="12" id="2" name="door open"/><variable device="15" id="1" name="humidity"/>\n</project>\n`);
  return { project, ports };
}

// Many simulated devices that share a file each in one folder of its own.
export function writeManyDevices(folder, count) {
  let text = '<project>\n<driver id="1" name="agent" module="snmp_configuration_agent.so"/>\n';
  for (let id = 2; id < count + 2; ++id) {
    folder.write(`d${id}/snmpd.conf`, "# empty\n");
    text += `<driver id="${id}" name="controller-${id}" module="simulated_device.so"><config folder="{project}/d${id}" version="1.0.${id % 7}"/></driver>\n`;
  }
  return folder.write("project.xml", text + "</project>\n");
}

export class Console {
  // options: project, folder, and `words` for more options of the command
  static async start({ project, folder, words = [], port = 0 }) {
    const console = new Console();
    console.folder = folder;
    console.words = ["serve", "--project", project, "--state", folder.path("states"), ...words];
    await console.start(port);
    return console;
  }

  async start(port) {
    this.program = new Program(PROGRAM, [...this.words, "--port", String(port)]);
    const [address] = await until("devhost serve prints its address", () => {
      if (!this.program.isRunning) throw new Error("devhost serve has ended: " + this.program.text);
      return /http:\/\/127\.0\.0\.1:\d+\/#\S+/.exec(this.program.text);
    });
    this.address = address;
    this.origin = new URL(address).origin;
    this.port = Number(new URL(address).port);
    this.token = new URL(address).hash.slice(1);
  }

  // A request as a program makes it: { status, body }.
  async call(method, path, body, headers = {}) {
    const response = await fetch(this.origin + "/api/v1" + path, { method, body: body && JSON.stringify(body),
      headers: { "X-Devhost-Token": this.token, ...(body && { "Content-Type": "application/json" }), ...headers } });
    const text = await response.text();
    return { status: response.status, text, body: text ? JSON.parse(text) : null };
  }

  get(path) { return this.call("GET", path).then((answer) => answer.body); }
  async whenUp() { await until("the host is up", async () => ["up", "busy"].includes((await this.get("/session")).host.state), 60000); }

  // The process in which the drivers live: the one child of the front, found through all that watch it.
  async hostProcesses() {
    const children = async (pid) => (await output("cat", [`/proc/${pid}/task/${pid}/children`])).trim().split(/\s+/).filter(Boolean).map(Number);
    const all = [];
    for (let level = await children(this.program.pid); level.length;) {
      const here = level;
      level = [];
      for (const pid of here) {
        const words = (await output("cat", [`/proc/${pid}/cmdline`]).catch(() => "")).split("\0");
        if (words.includes("__host")) all.push(pid);
        level.push(...await children(pid).catch(() => []));
      }
    }
    return all;
  }

  end(signal) { return this.program.end(signal); }
}

// What the daemon on that port answers, by a program that is not ours. "" when it does not answer twice within so many seconds.
export async function served(folder, port, community, name, seconds = 10) {
  folder.write("ask/snmp.conf", `defVersion 2c\ndefCommunity ${community}\n`);
  return output("snmpget", ["-On", "-Oqv", "-m", "", "-t", String(seconds), "-r", "1", `udp:127.0.0.1:${port}`, { contact: ".1.3.6.1.2.1.1.4.0", name: ".1.3.6.1.2.1.1.5.0" }[name]],
    { env: { ...process.env, SNMPCONFPATH: folder.path("ask"), SNMP_PERSISTENT_DIR: folder.path("ask") } }).then((text) => text.trim().replace(/^"|"$/g, ""), () => "");
}
