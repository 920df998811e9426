#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/engine/Host.h"
#include "devhost/engine/HostError.h"
#include "devhost/project/DriverNames.h"
#include "devhost/project/Project.h"
#include "devhost/secrets/Masker.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kDevice{"device", "", "Name or id of the device's driver in the project", Takes::Text, true};
const CommandOption kProject{"--project", "FILE", "Project file", Takes::Path, true};
const CommandOption kYes{"--yes", "FINGERPRINT", "Do not ask: trust the host key if it has this fingerprint", Takes::Text};

constexpr char kAskForKey[] = "GetHostKey";
constexpr char kTrustKey[] = "TrustHostKey";

constexpr char kFooter[] =
    "Asks the controller of a device for its SSH host key, shows the fingerprint, and asks\n"
    "whether it is the right one. Only then the key is added to the known-hosts file that the\n"
    "project names for the device. Compare it with what the controller shows at its own\n"
    "console: ssh-keygen -lf /etc/ssh/ssh_host_ed25519_key.pub. A key that differs from the\n"
    "known one is never added; take the old line out of the file first, when you know why.\n"
    "\n"
    "Exit status: 0 the host key is known; 1 it is not trusted, or the controller cannot be\n"
    "asked; 2 wrong usage, a project or device that is wrong, or nobody can be asked: standard\n"
    "input is not a terminal, and --yes is missing.\n"
    "\n"
    "Example: trust the controller of a device.\n"
    "\n"
    "  devhost trust --project project.xml kitchen";

// Prints why the driver cannot do what it is asked for.
class LogPrinter final : public HostObserver {
 public:
  LogPrinter(Console& console, const Masker& secrets) : m_console(console), m_secrets(secrets) {}

 private:
  void OnOccurrence(const Occurrence& occurrence) override {
    if (occurrence.kind == Occurrence::Kind::Log) {
      m_console.Complain(m_secrets.Text(occurrence.text, WrittenBy::Others));
    }
  }

  Console& m_console;
  const Masker& m_secrets;
};

// The device's driver alone. Throws ProjectError when the project does not have it.
DriverEntry FindDevice(const Arguments& arguments) {
  const std::string file = arguments.Text(kProject);
  const Project project = ReadProject(file, ModuleFolder(arguments));
  try {
    const unsigned long id = DriverNames(project.drivers).Find(arguments.Text(kDevice));
    return *std::find_if(project.drivers.begin(), project.drivers.end(),
                         [id](const DriverEntry& driver) { return driver.id == id; });
  } catch (const std::runtime_error& error) {
    throw ProjectError(file + ": " + error.what());
  }
}

std::string Attribute(const XmlElement& element, const char* name) {
  const std::string* const value = element.FindAttribute(name);
  return value != nullptr ? OneLine(*value) : std::string();
}

bool Asks(Console& console) {
  console.Out().Write("Is this the host key of the controller? Type yes to trust it: ");
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "yes";
}

ExitStatus TrustKey(Host& host, const DriverEntry& device, const std::string& fingerprint, const std::string& knownHosts,
                    const Masker& secrets, Console& console) {
  const XmlElement reply = ReadXml(host.Command(device.id, kTrustKey, {{"fingerprint", fingerprint}}));
  if (reply.name != "Success") {
    console.Complain(secrets.Text(reply.text, WrittenBy::Others));
    return ExitStatus::Failed;
  }
  console.Out().Write("added to " + knownHosts + "\n");
  return ExitStatus::Good;
}

ExitStatus Judge(Host& host, const DriverEntry& device, const Arguments& arguments, const Masker& secrets,
                 Console& console) {
  const XmlElement key = ReadXml(host.Command(device.id, kAskForKey, {}));
  if (key.name != "hostKey") {
    console.Complain(secrets.Text(key.text, WrittenBy::Others));
    return ExitStatus::Failed;
  }
  const std::string fingerprint = Attribute(key, "fingerprint");
  const std::string knownHosts = Attribute(key, "knownHosts");
  const std::string state = Attribute(key, "state");
  console.Out().Write(Attribute(key, "address") + " has the host key\n" + Attribute(key, "type") + " " + fingerprint + "\n");
  if (state == "known") {
    console.Out().Write("It is known already in " + knownHosts + "\n");
    return ExitStatus::Good;
  }
  if (state != "unknown") {
    console.Complain("another host key is known in " + knownHosts + ", or this one is revoked there" +
                     "; somebody may stand in between. If the controller has a new key, take the old one out of the file");
    return ExitStatus::Failed;
  }
  if (arguments.Has(kYes) && arguments.Text(kYes) != fingerprint) {
    console.Complain("this is not the fingerprint that was given; nothing was added");
    return ExitStatus::Failed;
  }
  if (!arguments.Has(kYes) && ::isatty(STDIN_FILENO) != 1) {
    console.Complain("standard input is not a terminal, so nobody can be asked; give the fingerprint with --yes");
    return ExitStatus::Wrong;
  }
  if (!arguments.Has(kYes) && !Asks(console)) {
    console.Complain("not trusted; nothing was added");
    return ExitStatus::Failed;
  }
  return TrustKey(host, device, fingerprint, knownHosts, secrets, console);
}

ExitStatus Trust(const Arguments& arguments, Console& console) {
  const DriverEntry device = FindDevice(arguments);
  Masker secrets(arguments.Has(kShowSecrets));
  secrets.Xml(device.configXml);
  LogPrinter log(console, secrets);
  Host host(log);
  try {
    host.Load(device);
  } catch (const HostError& error) {
    console.Complain(secrets.Text(error.what(), WrittenBy::Others));
    return ExitStatus::Wrong;
  }
  const std::vector<std::string> commands = host.Commands(device.id);
  if (std::find(commands.begin(), commands.end(), kTrustKey) == commands.end()) {
    throw ProjectError(arguments.Text(kProject) + ": the controller of " + device.name +
                       " has no host key; allowed: a device with the module ssh_snmpd.so");
  }
  return Judge(host, device, arguments, secrets, console);
}

}  // namespace

Command MakeTrust() {
  return {"trust",
          "Show the SSH host key of a device's controller, and trust it",
          {kProject, kModuleFolder, kYes, kShowSecrets, kDevice},
          kFooter,
          &Trust};
}

}  // namespace devhost
