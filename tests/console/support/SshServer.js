// A real SSH server as an ordinary process, with an account that only it knows.
import { chmodSync, writeFileSync } from "node:fs";
import { Program, freePort, output } from "./processes.js";
import { Folder } from "./Folder.js";
import { until } from "./until.js";

const NOBODY = 65534;
const FOLDERS = "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";

export class SshServer {
  constructor() {
    this.keys = new Folder();
    this.files = new Folder();
    chmodSync(this.keys.root, 0o755);
  }

  async start(text) {
    const isRoot = process.getuid() === 0;
    const [uid, gid] = isRoot ? [NOBODY, NOBODY] : [process.getuid(), process.getgid()];
    this.port = await freePort();
    for (const name of ["host", "client"]) await output("ssh-keygen", ["-q", "-t", "ed25519", "-N", "", "-C", "test", "-f", this.keys.path(name)]);
    this.keys.write("authorized", this.keys.read("client.pub"));
    this.keys.write("passwd", `controller:x:${uid}:${gid}::/:/bin/sh\n`, 0o644);
    this.keys.write("group", `controller:x:${gid}:\n`, 0o644);
    this.keys.write("config", `Port ${this.port}\nListenAddress 127.0.0.1\nHostKey "${this.keys.path("host")}"\nAuthorizedKeysFile "${this.keys.path("authorized")}"
PidFile none\nUsePAM no\nStrictModes no\nPasswordAuthentication no\nKbdInteractiveAuthentication no\nPrintMotd no\nSetEnv PATH=${FOLDERS}\n`, 0o644);
    const [type, key] = this.keys.read("host.pub").split(" ");
    this.keys.write("known", `[127.0.0.1]:${this.port} ${type} ${key}\n`);
    this.file = this.files.path("snmpd.conf");
    writeFileSync(this.file, text);
    const env = { PATH: FOLDERS, LD_PRELOAD: "libnss_wrapper.so", NSS_WRAPPER_PASSWD: this.keys.path("passwd"), NSS_WRAPPER_GROUP: this.keys.path("group") };
    const words = ["/usr/sbin/sshd", "-D", "-e", "-f", this.keys.path("config")];
    if (isRoot) {
      for (const path of ["host", "authorized"]) await output("chown", [`${NOBODY}:${NOBODY}`, this.keys.path(path)]);
      await output("chown", ["-R", `${NOBODY}:${NOBODY}`, this.files.root]);
      words.unshift("setpriv", "--reuid", String(NOBODY), "--regid", String(NOBODY), "--clear-groups", "--");
    }
    this.server = new Program(words[0], words.slice(1), { env });
    await until("the SSH server answers", () => {
      if (!this.server.isRunning) throw new Error("sshd has ended: " + this.server.text);
      return this.server.text.includes("Server listening");
    });
  }

  // The configuration element of a driver whose controller this is.
  get element() {
    return `<config host="127.0.0.1" port="${this.port}" user="controller" key="${this.keys.path("client")}" knownHosts="${this.keys.path("known")}" file="${this.file}"/>`;
  }

  async end() {
    if (this.server) await this.server.end();
    this.keys.remove();
    this.files.remove();
  }
}
