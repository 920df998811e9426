#ifndef DEVHOST_DRIVER_COMMAND_MESSAGE_H
#define DEVHOST_DRIVER_COMMAND_MESSAGE_H

#include <string>

#include "devhost/text/Parameters.h"
#include "host/ICmdMessage.h"

namespace devhost {

// The parameters of one command. Where a name stands twice, the first one answers.
class CommandMessage : public ICmdMessage {
 public:
  virtual ~CommandMessage() = default;
  // `parameters` outlive the message.
  explicit CommandMessage(const Parameters& parameters) : m_parameters(parameters) {}

  std::string GetString(const char* name) const override;
  unsigned long GetULong(const char* name) const override;
  bool Has(const char* name) const override;

 private:
  const std::string* Find(const char* name) const;

  const Parameters& m_parameters;
};

}  // namespace devhost

#endif
