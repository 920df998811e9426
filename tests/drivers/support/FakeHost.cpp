#include "tests/drivers/support/FakeHost.h"

#include <stdexcept>

#include "host/H7XML.h"

namespace {

class Message final : public ICmdMessage {
 public:
  explicit Message(const std::map<std::string, std::string>& parameters) : m_parameters(parameters) {}
  std::string GetString(const char* name) const override { return Has(name) ? m_parameters.at(name) : std::string(); }
  unsigned long GetULong(const char* name) const override { return Has(name) ? std::stoul(m_parameters.at(name)) : 0; }
  bool Has(const char* name) const override { return m_parameters.count(name) != 0; }

 private:
  const std::map<std::string, std::string>& m_parameters;
};

}  // namespace

FakeHost::FakeHost() : m_formerSink(devhost::SetLogSink(this)) {
  m_instances.instances[devhost::DriverServices_IID] = static_cast<devhost::DriverServices*>(this);
}

FakeHost::~FakeHost() {
  devhost::SetLogSink(m_formerSink);
}

IDriverManager& FakeHost::GetDriverManager() {
  throw std::logic_error("device drivers ask for no drivers");
}

void FakeHost::Dispatcher::RegisterUICmd(const std::string& name,
                                         boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)> handler) {
  names.push_back(name);
  handlers[name] = handler;
}

std::string FakeHost::Command(const std::string& name, const std::map<std::string, std::string>& parameters) {
  return ToText(*m_dispatcher.handlers.at(name)(Message(parameters)));
}

void FakeHost::Log(unsigned int level, const char* line, const void*) noexcept {
  log.push_back(std::to_string(level) + ": " + line);
}

std::string ToText(const H7XML::INode& node) {
  std::string text = "<" + node.GetName();
  for (const char* const name : {"version", "name", "operation", "value", "erased", "target", "community", "port", "running",
                                 "pid", "address", "online", "pending", "restartDue", "type", "fingerprint", "state"}) {
    const std::string value = node.GetNamedString(name);
    if (!value.empty()) {
      text += " " + std::string(name) + "=" + value;
    }
  }
  text += ">" + node.GetValue();
  const auto children = node.GetChildren();
  for (auto child = children->First(); child; child = children->Next()) {
    text += ToText(*child);
  }
  return text;
}

h7::auto_com<H7XML::INode> ToNode(const std::string& xml) {
  const auto document = H7XML::CreateXmlDocument(xml);
  if (!document) {
    throw std::invalid_argument("no XML: " + xml);
  }
  return document->GetRootElement();
}
