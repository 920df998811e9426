#ifndef TESTS_DEVHOST_SESSION_SESSION_FIXTURE_H
#define TESTS_DEVHOST_SESSION_SESSION_FIXTURE_H

#include <fcntl.h>
#include <gmock/gmock.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "devhost/session/Session.h"
#include "devhost/system/FileDescriptor.h"
#include "tests/devhost/support/TestModules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// A session with the built agent and a device called kitchen, id 12; a test may add drivers before it starts.
class SessionFixture : public testing::Test {
 protected:
  using Json = nlohmann::json;

  // What became of a request.
  struct Reply {
    int status = 0;
    Json body;
    std::string ErrorCode() const { return body.at("error").at("code"); }
    std::string ErrorText() const { return body.at("error").at("message"); }
  };

  SessionFixture() {
    project.drivers = {{1, "agent", Built("snmp_configuration_agent"), "<config/>"}, Device(12, "kitchen")};
  }

  static std::string Built(const std::string& module) { return std::string(MODULE_FOLDER) + "/" + module + ".so"; }
  DriverEntry Device(unsigned long number, const std::string& name, const std::string& module = "simulated_device") const {
    folder.Write(name + "/snmpd.conf", "# by hand\n");
    return {number, name, Built(module), "<config folder='" + folder.Path(name) + "'/>"};
  }

  void Start(bool showSecrets = false) {
    lines.emplace(::open(folder.Write("lines", "").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    output.emplace(lines->Get());
    secrets.emplace(showSecrets);
    channel.emplace(*output, *secrets);
    session.emplace(means, project, states, *secrets, *channel);
    session->Start();
  }

  void TearDown() override {
    if (session) {
      session->Stop();
    }
  }

  // All that has left the session.
  std::string Said() const { return folder.Read("lines"); }
  std::vector<Json> Lines() const {
    std::vector<Json> all;
    std::istringstream text(Said());
    for (std::string line; std::getline(text, line);) {
      all.push_back(Json::parse(line));
    }
    return all;
  }
  // The events of one kind, in order.
  std::vector<Json> Events(const std::string& kind) const {
    std::vector<Json> events;
    for (const Json& line : Lines()) {
      if (line.contains("event") && line["event"]["kind"] == kind) {
        events.push_back(line["event"]);
      }
    }
    return events;
  }

  Reply Ask(const std::string& method, const std::string& path, const Json& body = Json::object(),
            const std::string& ifMatch = "") {
    session->Play(Json{{"id", ++asked}, {"method", method}, {"path", path}, {"body", body}, {"ifMatch", ifMatch}}.dump());
    const Json answer = Lines().back();
    EXPECT_EQ(answer.value("id", 0), asked);
    return {answer.value("status", 0), answer.value("body", Json())};
  }
  // Sends a command of a device.
  Reply Tell(unsigned long driver, const std::string& name, const Json& parameters = Json::object()) {
    return Ask("POST", "/command", {{"driver", driver}, {"name", name}, {"parameters", parameters}});
  }

  const testsupport::ScratchFolder folder;
  SessionMeans means;
  Project project;
  StateMemory states;
  std::optional<FileDescriptor> lines;
  std::optional<Output> output;
  std::optional<Masker> secrets;
  std::optional<Channel> channel;
  std::optional<Session> session;
  int asked = 0;  // so many requests
};

}  // namespace devhost

#endif
