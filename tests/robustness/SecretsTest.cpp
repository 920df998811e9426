// Files, settings, configurations and states with secrets in all encodings and kinds of damage, through every command of the
// program and every way out of it: no secret of four bytes or more comes out.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>
#include <string>
#include <vector>

#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"
#include "tests/robustness/Kitchen.h"
#include "tests/robustness/Measure.h"
#include "tests/support/HostileSecrets.h"

namespace testsupport {
namespace {

using devhost::AsWord;
using Words = std::vector<std::string>;

// One folder with secrets wherever they can be.
class HostileKitchen : public Kitchen {
 public:
  explicit HostileKitchen(unsigned int seed)
      : m_random(seed),
        m_secrets([this](std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random); }) {
    m_conf = m_secrets.Config();
    WriteProjectOf(seed % 4 == 0 && !devhost::FindProgram("snmpd").empty() ? "local_snmpd.so" : "simulated_device.so");
    Write("settings.xml", HostileSettings());
    Write("damaged.xml", m_secrets.Xml());
    Write("state/driver-12.xml", m_secrets.Xml());
    ::chmod(Path("state").c_str(), 0700);
    Write("script", Script());
  }

  // Runs a command on the folder as it was in the beginning, looks at all that it writes, and returns its exit status. What
  // an earlier command has written of a community behind a line feed is an ordinary line.
  int Expect(const Words& words) {
    WriteConf(m_conf);
    const Measured run = Measure(words, Path());
    const std::string found = m_secrets.FindIn(run.output);
    EXPECT_EQ(found, "") << words.front() << "\n" << run.output << Read("script") << Read("settings.xml") << "\n" << Conf();
    EXPECT_LT(run.status, 128) << run.output;
    return run.status;
  }

 private:
  std::string Attribute(const std::string& name) {
    std::string xml;
    devhost::AppendXmlAttribute(xml, name, m_secrets.Value());
    return xml;
  }

  void WriteProjectOf(const std::string& module) {
    const std::string config = "<config folder=\"{project}/kitchen\" version=\"1.2.0\" versionValid=\"true\">";
    Write("project.xml",
          "<project><driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/><driver id=\"12\" "
          "name=\"kitchen\" module=\"" +
              module + "\">" + config + "<setting name=\"communityWrite\"" + Attribute("value") +
              "/><trapTarget target=\"10.0.0.5\"" + Attribute("community") + " port=\"162\"/></config></driver></project>");
    Write("wrong.xml",
          "<project><driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/><driver id=\"12\" "
          "name=\"kitchen\" module=\"" +
              module + "\">" + config + "<setting name=\"enabled\"" + Attribute("value") + "/></config></driver></project>");
  }

  std::string HostileSettings() {
    devhost::XmlElement root;
    root.name = "managedDevice";
    const auto add = [](devhost::XmlElement& to, const std::string& name, const std::string& text) -> devhost::XmlElement& {
      to.children.emplace_back();
      to.children.back().name = name;
      to.children.back().text = text;
      return to.children.back();
    };
    add(root, "snmpIsManagedDevice", "true");
    add(root, "snmpEnabledSetting", "true");
    add(root, "snmpCommunityReadSetting", m_secrets.Value());
    add(root, "snmpSysNameSetting", "kitchen");
    devhost::XmlElement trap;
    add(trap, "target", m_random() % 2 == 0 ? " " : "10.0.0.6");
    add(trap, "community", m_secrets.Value());
    add(trap, "port", m_random() % 2 == 0 ? "" : "162");
    trap.name = "trapTarget";
    add(root, "snmpTrapTargets", "").children.push_back(trap);
    add(root, "deviceId", "12");
    return devhost::XmlText(root, devhost::XmlStyle::Indented);
  }

  std::string Script() {
    const auto value = [this] { return AsWord(m_secrets.Value()); };
    return "device kitchen show file\n"
           "device kitchen show settings\n"
           "show state kitchen\n"
           "device kitchen set communityRead " +
           value() + "\ndevice kitchen set comunityRead " + value() + "\ndevice kitchen add-trap 10.0.0.5 " + value() +
           " 162\ndevice kitchen add-trap " + value() + " x " + value() +
           "\ncommand to kitchen SetSetting name=communityWrite value=" + value() +
           "\ncommand to kitchen SetSetting value=" + value() + "\ncommand SetDeviceState xml=@settings.xml\n" +
           "command GetDeviceList\n"
           "command SetDeviceState xml=@damaged.xml\n"
           "command StartMasterAgent deviceId=12\n"
           "expect reply is x\n"
           "expect notification matches x\n"
           "expect file kitchen golden settings.xml\n"
           "expect file kitchen is x\n"
           "expect state kitchen is x\n"
           "expect state kitchen golden damaged.xml\n"
           "expect setting kitchen communityRead is " +
           value() +
           "\nexpect setting kitchen communityWrite matches x\n"
           "device kitchen show file\n"
           "device kitchen show settings\n"
           "show state kitchen\n"
           "run cat settings.xml\n"
           "run snmpget -v2c -c " +
           value() +
           " -t 0.01 -r 0 udp:127.0.0.1:9 .1.3\n"
           "restart\n"
           "command GetDeviceList\n";
  }

  std::minstd_rand m_random;
  HostileSecrets m_secrets;
  std::string m_conf;
};

#ifdef MEASURES_MEMORY
constexpr unsigned int kKitchens = 40;
#else
constexpr unsigned int kKitchens = 4;
#endif

TEST(ASecret, ComesOutOfNoCommandHoweverItIsWritten) {
  for (unsigned int seed = 1; seed <= kKitchens && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    HostileKitchen kitchen(seed);
    kitchen.Expect({"check", "kitchen/snmpd.conf"});
    kitchen.Expect({"check", "--json", "--daemon", "kitchen/snmpd.conf"});
    for (const std::string settings : {"settings.xml", "damaged.xml", "kitchen/snmpd.conf"}) {
      kitchen.Expect({"advise", settings});
      kitchen.Expect({"advise", "--json", settings});
      kitchen.Expect({"preview", "--project", "project.xml", "kitchen", settings});
    }
    kitchen.Expect({"preview", "--project", "project.xml", "--state", "state", "kitchen", "settings.xml"});
    kitchen.Expect({"preview", "--json", "--project", "project.xml", "kitchen", "settings.xml"});
    kitchen.Expect({"preview", "--project", "wrong.xml", "kitchen", "settings.xml"});
    kitchen.Expect({"run", "--project", "wrong.xml", "script"});
    kitchen.Expect({"run", "--project", "project.xml", "--state", "state", "script"});
    EXPECT_EQ(kitchen.Expect({"run", "--pretty", "--project", "project.xml", "script"}), 1) << "the script was not played";
    EXPECT_EQ(kitchen.Expect({"run", "--json", "--project", "project.xml", "script"}), 1);
    kitchen.Expect({"run", "--project", "kitchen/snmpd.conf"});
    kitchen.Expect({"run", "--project", "damaged.xml"});
  }
}

// Scripts that are refused before anything happens.
TEST(ASecret, ComesNotOutOfARefusedScript) {
  std::minstd_rand random(3);
  const Kitchen kitchen;
  HostileSecrets secrets(
      [&random](std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random); });
  for (const std::string start :
       {"device kitchen set communityRead x {}", "device kitchen sett communityRead {}",
        "device kitchen add-trap 10.0.0.5 {}", "command SetDeviceState communityRead {}",
        "command to kitchen SetSetting name=communityRead \"value {}\"", "command to kitchen SetSetting value={} value={}",
        "expect setting kitchen communityRead {}", "expect setting kitchen communityRead is {} {}",
        "expect setting kitchen communityRead matches '({}'", "device kitchen online {}", "device kitchen fail CopyTo {}",
        "run snmpgett -c {}", "event Hello community={}", "device kitchen set communityRead '{}"}) {
    for (int i = 0; i != 3; ++i) {
      std::string line = start;
      for (std::size_t at = line.find("{}"); at != std::string::npos; at = line.find("{}")) {
        std::string value = secrets.Value();
        for (char& c : value) {
          c = c == '\n' || c == '\'' || c == '"' || c == '\\' || c == '#' ? '_' : c;
        }
        line.replace(
            at, 2,
            start.find('\'') == std::string::npos && start.find('"') == std::string::npos ? "'" + value + "'" : value);
      }
      kitchen.Write("script", line + "\n");
      const Measured run = Measure({"run", "--project", "project.xml", "script"}, kitchen.Path());
      EXPECT_EQ(run.status, 2) << line << "\n" << run.output;
      EXPECT_EQ(secrets.FindIn(run.output), "") << line << "\n" << run.output;
    }
  }
}

}  // namespace
}  // namespace testsupport
