#ifndef DRIVERS_HOSTPROBE_SERVICE_CHECKS_H
#define DRIVERS_HOSTPROBE_SERVICE_CHECKS_H

class IDriverManager;
class IInstanceManager;
class IVariableManager;

namespace drivers {

class Report;

// Checks publication by one driver. All that it publishes is withdrawn again.
void CheckPublication(Report& report, IInstanceManager& instances, IDriverManager& drivers);

// Checks the variables of the project; flags that it sets are set back. Without variables there is nothing to check.
void CheckVariables(Report& report, IVariableManager& variables);

// Checks the log. The host's log then has a line that ends with `log: text, -1, 4294967295, 100%`.
void CheckLog(Report& report);

}  // namespace drivers

#endif
