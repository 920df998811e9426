#ifndef DEVHOST_CHECK_INSTALLED_DAEMON_H
#define DEVHOST_CHECK_INSTALLED_DAEMON_H

#include <optional>

#include "devhost/snmpd/DirectiveNames.h"

namespace devhost {

// What the installed snmpd lists as its directives. It reads no configuration for that, writes nothing and opens no port.
// Nothing when no snmpd is installed, or when it lists none.
std::optional<DirectiveNames> AskForDirectiveNames();

}  // namespace devhost

#endif
