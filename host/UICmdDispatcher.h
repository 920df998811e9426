#ifndef HOST_UI_CMD_DISPATCHER_H
#define HOST_UI_CMD_DISPATCHER_H

#include <boost/function.hpp>
#include <string>

#include "host/HostApi.h"
#include "host/ICmdMessage.h"
#include "host/INode.h"
#include "host/auto_com.h"

// Passes the commands of the configuration tool to one driver. Implemented by the host. Every driver has a dispatcher of its
// own, which lives as long as the driver. The order of the operations is a binary contract.
class H7_HOST_API UICmdDispatcher {
 public:
  // Binds `name` (matched exactly) to `handler`. Drivers call this from `RegisterCommands`. The host calls the handler for
  // each such command, one at a time, and sends the node that it returns to the tool as the reply. The host drops the
  // handler before it destroys the driver. When nobody has registered a command, the host answers it itself. Registering a
  // name a second time replaces the handler, and the host reports it as bad manners.
  /* 1 */ virtual void RegisterUICmd(const std::string& name,
                                     boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)> handler) = 0;

 protected:
  ~UICmdDispatcher() = default;
};

#endif
