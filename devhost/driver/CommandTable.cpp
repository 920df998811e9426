#include "devhost/driver/CommandTable.h"

#include <utility>

namespace devhost {

void CommandTable::RegisterUICmd(const std::string& name, Handler handler) {
  const ServiceCall call(m_check, "RegisterUICmd", ServiceCheck::From::Initialize);
  if (!call.IsAllowed()) {
    return;
  }
  std::shared_ptr<const Handler> shared = std::make_shared<const Handler>(std::move(handler));
  for (Command& command : m_commands) {
    if (command.name == name) {
      command.handler.swap(shared);
      m_check.Report("command \"" + name + "\" was registered twice; the later handler counts");
      return;
    }
  }
  m_commands.push_back({name, std::move(shared)});
}

std::shared_ptr<const CommandTable::Handler> CommandTable::Find(const std::string& name) const {
  for (const Command& command : m_commands) {
    if (command.name == name) {
      return command.handler;
    }
  }
  return nullptr;
}

std::vector<std::string> CommandTable::Names() const {
  std::vector<std::string> names;
  for (const Command& command : m_commands) {
    names.push_back(command.name);
  }
  return names;
}

}  // namespace devhost
