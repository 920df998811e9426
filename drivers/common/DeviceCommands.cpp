#include "drivers/common/DeviceCommands.h"

#include <charconv>
#include <initializer_list>
#include <limits>
#include <optional>
#include <utility>

#include "drivers/common/SettingNames.h"
#include "host/H7XML.h"
#include "host/ToString.h"

namespace drivers {

namespace {

// <Success/>, or <Fail> with what is wrong.
h7::auto_com<H7XML::INode> Answer(const std::string& wrong) {
  return H7XML::CreateXmlNode(wrong.empty() ? "Success" : "Fail", wrong);
}

std::string FindMissing(const ICmdMessage& message, std::initializer_list<const char*> names) {
  for (const char* const name : names) {
    if (!message.Has(name)) {
      std::string all;
      for (const char* const each : names) {
        all += all.empty() ? "" : ", ";
        all += each;
      }
      return "the parameter " + std::string(name) + " is missing; needed: " + all;
    }
  }
  return std::string();
}

// The whole of `text` as a decimal number.
template <class Number>
std::optional<Number> ReadNumber(const std::string& text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || last != end) {
    return std::nullopt;
  }
  return number;
}

// For messages about numbers that ReadNumber<int> reads.
std::string RangeFrom(int least) {
  return std::to_string(least) + " to " + std::to_string(std::numeric_limits<int>::max());
}

std::string OperationNames() {
  std::string names;
  for (const DeviceOperation operation : kDeviceOperations) {
    names += names.empty() ? "" : ", ";
    names += NameOf(operation);
  }
  return names;
}

}  // namespace

DeviceCommands::DeviceCommands(SnmpSettings& settings, DeviceOperations& operations, Driver driver)
    : m_settings(settings), m_operations(operations), m_driver(std::move(driver)) {}

void DeviceCommands::Register(UICmdDispatcher& dispatcher) {
  dispatcher.RegisterUICmd("Announce", [this](const ICmdMessage&) { return Answer(m_driver.announce()); });
  dispatcher.RegisterUICmd("Withdraw", [this](const ICmdMessage&) {
    m_driver.withdraw();
    return Answer(std::string());
  });
  dispatcher.RegisterUICmd("SetSetting", [this](const ICmdMessage& message) { return OnSetSetting(message); });
  dispatcher.RegisterUICmd("EraseSetting", [this](const ICmdMessage& message) { return OnEraseSetting(message); });
  dispatcher.RegisterUICmd("AddTrapTarget", [this](const ICmdMessage& message) { return OnAddTrapTarget(message); });
  dispatcher.RegisterUICmd("ClearTrapTargets", [this](const ICmdMessage&) {
    m_settings.trapTargets.Set({});
    return AnswerChange(std::string());
  });
  dispatcher.RegisterUICmd("FailOperation", [this](const ICmdMessage& message) { return OnFailOperation(message); });
  dispatcher.RegisterUICmd("GetSettings", [this](const ICmdMessage&) { return OnGetSettings(); });
  dispatcher.RegisterUICmd("GetFilePath",
                           [this](const ICmdMessage&) { return H7XML::CreateXmlNode("filePath", m_driver.filePath()); });
  dispatcher.RegisterUICmd("GetCounts", [this](const ICmdMessage&) { return OnGetCounts(); });
}

DeviceCommands::Reply DeviceCommands::AnswerChange(const std::string& wrong) {
  if (wrong.empty()) {
    m_driver.settingsChanged();
  }
  return Answer(wrong);
}

DeviceCommands::Reply DeviceCommands::OnSetSetting(const ICmdMessage& message) {
  const std::string missing = FindMissing(message, {"name", "value"});
  return AnswerChange(missing.empty() ? SetSettingByName(m_settings, message.GetString("name"), message.GetString("value"))
                                      : missing);
}

DeviceCommands::Reply DeviceCommands::OnEraseSetting(const ICmdMessage& message) {
  const std::string missing = FindMissing(message, {"name"});
  return AnswerChange(missing.empty() ? EraseSettingByName(m_settings, message.GetString("name")) : missing);
}

DeviceCommands::Reply DeviceCommands::OnAddTrapTarget(const ICmdMessage& message) {
  std::string missing = FindMissing(message, {"target", "community", "port"});
  if (missing.empty() && message.GetString("target").empty()) {
    missing = "the target is empty; give a target, and community and port where they are known";
  }
  if (missing.empty()) {
    m_settings.trapTargets.Add(
        TrapTarget(message.GetString("target"), message.GetString("community"), message.GetString("port")));
  }
  return AnswerChange(missing);
}

DeviceCommands::Reply DeviceCommands::OnFailOperation(const ICmdMessage& message) {
  const std::string missing = FindMissing(message, {"operation", "status"});
  if (!missing.empty()) {
    return Answer(missing);
  }
  const std::string name = message.GetString("operation");
  const std::optional<DeviceOperation> operation = OperationNamed(name);
  if (!operation) {
    return Answer("\"" + name + "\" is not an operation; allowed are " + OperationNames());
  }
  const std::optional<int> status = ReadNumber<int>(message.GetString("status"));
  if (!status) {
    return Answer("the status \"" + message.GetString("status") + "\" is not a whole number from " +
                  RangeFrom(std::numeric_limits<int>::min()) + "; 0 ends the failing");
  }
  std::optional<unsigned long> times;
  if (message.Has("times")) {
    const std::optional<int> given = ReadNumber<int>(message.GetString("times"));
    if (!given || *given < 1) {
      return Answer("times is \"" + message.GetString("times") + "\"; give a whole number from " + RangeFrom(1) +
                    ", or leave it out for every time");
    }
    times = static_cast<unsigned long>(*given);
  }
  m_operations.Fail(*operation, *status, times);
  return Answer(std::string());
}

DeviceCommands::Reply DeviceCommands::OnGetSettings() {
  const Reply reply = H7XML::CreateXmlNode("settings", std::string());
  VisitSettings(m_settings, [&reply](const NamedSetting& setting) {
    const Reply element = H7XML::CreateXmlNode("setting", std::string());
    element->SetNamedString("name", setting.name);
    element->SetNamedString("value", setting.value);
    if (setting.erased != nullptr) {
      element->SetNamedString("erased", h7::ToString(*setting.erased));
    }
    reply->AppendChild(*element);
  });
  for (const TrapTarget& target : m_settings.trapTargets.Get()) {
    const Reply element = H7XML::CreateXmlNode("trapTarget", std::string());
    element->SetNamedString("target", target.target);
    element->SetNamedString("community", target.community);
    element->SetNamedString("port", target.port);
    reply->AppendChild(*element);
  }
  return reply;
}

DeviceCommands::Reply DeviceCommands::OnGetCounts() {
  const Reply reply = H7XML::CreateXmlNode("counts", std::string());
  for (const DeviceOperation operation : kDeviceOperations) {
    const Reply element = H7XML::CreateXmlNode("count", std::string());
    element->SetNamedString("operation", NameOf(operation));
    element->SetNamedULong("value", m_operations.Count(operation));
    reply->AppendChild(*element);
  }
  return reply;
}

}  // namespace drivers
