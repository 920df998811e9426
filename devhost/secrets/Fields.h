#ifndef DEVHOST_SECRETS_FIELDS_H
#define DEVHOST_SECRETS_FIELDS_H

#include <string_view>

namespace devhost {

// What is known about a name that elements and attributes of XML and parameters of commands and events have.
enum class Field {
  Unknown,    // its value may be anything
  Part,       // holds other elements
  Shown,      // its value is a text that is never a secret
  Switch,     // its value is true, false or a number; any other text is not what it should be
  Name,       // the name of a setting or variable
  Operation,  // the name of an operation of a device
  Value,      // the value of a setting, or a count
  Address,    // shown when it is made of numbers: a community in the wrong place is not
  Port,       // the same
  Config,     // a whole snmpd.conf
  Secret,     // a community
  FreeText    // a reason, which may quote anything
};

Field FindField(std::string_view name);

enum class Setting { Unknown, Shown, Switch, Secret };

// Whether a device has an operation of that name, which scripts let fail and drivers count.
bool IsOperation(std::string_view name);

// What is known about a setting of a device driver.
Setting FindSetting(std::string_view name);

// Whether that is the name of a setting, perhaps misspelt.
bool IsNearSetting(std::string_view name);

}  // namespace devhost

#endif
