#ifndef HOST_UI_CMD_DISPATCHER_H
#define HOST_UI_CMD_DISPATCHER_H

#include <boost/function.hpp>
#include <string>

#include "host/HostApi.h"
#include "host/ICmdMessage.h"
#include "host/INode.h"
#include "host/auto_com.h"

// Brings the commands of the configuration tool to one driver. Implemented by the host: every driver has a dispatcher of its
// own, held by its `H7BaseDriver` for as long as the driver lives. The order of the operations is a binary contract.
class H7_HOST_API UICmdDispatcher {
 public:
  // Binds `name` (matched exactly) to `handler`. Drivers call this from `RegisterCommands`. The host calls the handler for
  // each such command, one at a time, and sends the node that it returns to the tool as the reply. The host drops the
  // handler before it destroys the driver. A command that nobody registered never reaches a driver: the host answers it
  // itself. Registering a name a second time replaces the handler and is reported as bad manners.
  /* 1 */ virtual void RegisterUICmd(const std::string& name,
                                     boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)> handler) = 0;

 protected:
  ~UICmdDispatcher() = default;
};

#endif
