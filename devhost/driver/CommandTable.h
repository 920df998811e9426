#ifndef DEVHOST_DRIVER_COMMAND_TABLE_H
#define DEVHOST_DRIVER_COMMAND_TABLE_H

#include <memory>
#include <string>
#include <vector>

#include "devhost/driver/ServiceCheck.h"
#include "host/UICmdDispatcher.h"

namespace devhost {

// The commands of one driver.
class CommandTable : public UICmdDispatcher {
 public:
  using Handler = boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>;

  virtual ~CommandTable() = default;
  // `check` outlives it, and hears of names that are registered twice.
  explicit CommandTable(ServiceCheck& check) : m_check(check) {}

  void RegisterUICmd(const std::string& name, Handler handler) override;

  // The handler of that name, null when there is none. It may be replaced while it runs, so it is shared.
  std::shared_ptr<const Handler> Find(const std::string& name) const;
  // In the order of registration.
  std::vector<std::string> Names() const;
  // Drops all handlers.
  void Clear() noexcept { std::vector<Command>().swap(m_commands); }

 private:
  struct Command {
    std::string name;
    std::shared_ptr<const Handler> handler;
  };
  ServiceCheck& m_check;
  std::vector<Command> m_commands;
};

}  // namespace devhost

#endif
