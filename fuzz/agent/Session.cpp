#include "fuzz/agent/Session.h"

#include "devhost/xml/XmlReader.h"

namespace fuzz {
namespace {

using Kind = Operation::Kind;

unsigned long ReadId(Input& input) {
  constexpr unsigned long kIds[8] = {0, 1, 2, 3, 5, 0x7fffffff, 0x80000000, 0xffffffff};
  return kIds[input.Below(8)];
}

// Returns an id as a command, an event or a list may contain it: mostly a number.
std::string ReadIdText(Input& input) {
  constexpr const char* kTexts[16] = {"0", "1",  "2",  "3",          "5",    "2147483647", "2147483648", "4294967295",
                                      "3", " 3", "3x", "4294967296", "0003", "-1",         "",           "+3"};
  return kTexts[input.Below(16)];
}

std::string ReadBoolText(Input& input) {
  constexpr const char* kTexts[8] = {"false", "true", "0", "1", "TRUE", "", " true", "2"};
  return kTexts[input.Below(8)];
}

devhost::XmlElement Element(const std::string& name, const std::string& text) {
  devhost::XmlElement element;
  element.name = name;
  element.text = text;
  return element;
}

devhost::XmlElement ReadTrapTargets(Input& input) {
  devhost::XmlElement list = Element("snmpTrapTargets", "");
  for (unsigned int count = input.Below(4); count != 0; --count) {
    devhost::XmlElement trap = Element(input.Flag() ? "other" : "trapTarget", "");
    const char* const names[] = {"target", "community", "port"};
    for (const char* const name : names) {
      if (input.Below(8) != 7) {
        trap.children.push_back(Element(name, input.Text()));
      }
    }
    list.children.push_back(trap);
  }
  return list;
}

// Returns a device settings element with up to fifteen children. Any of them may stand twice or be missing, and the text may
// be cut off.
std::string ReadSettings(Input& input) {
  devhost::XmlElement root = Element("managedDevice", "");
  root.children.push_back(Element("deviceId", ReadIdText(input)));
  for (unsigned int count = input.Below(16); count != 0; --count) {
    constexpr const char* kTexts[] = {"snmpCommunityReadSetting", "snmpCommunityWriteSetting", "snmpSysContactSetting",
                                      "snmpSysLocationSetting", "snmpSysNameSetting"};
    constexpr const char* kFlags[] = {"snmpIsManagedDevice",
                                      "snmpIsConfigDirty",
                                      "snmpEnabledSetting",
                                      "snmpUsePrimaryContactSetting",
                                      "snmpUseProjectOwnerAddressSetting",
                                      "snmpUseRoomDeviceSetting"};
    const unsigned int which = input.Below(16);
    if (which < 5) {
      root.children.push_back(Element(kTexts[which], input.Text()));
    } else if (which < 11) {
      root.children.push_back(Element(kFlags[which - 5], ReadBoolText(input)));
    } else if (which == 11) {
      root.children.insert(root.children.begin(), Element("deviceId", ReadIdText(input)));
    } else {
      root.children.push_back(ReadTrapTargets(input));
    }
  }
  std::string text = devhost::XmlText(root, devhost::XmlStyle::Compact);
  const unsigned int cut = input.Below(16);
  return cut < 14 ? text : text.substr(0, text.size() * (cut - 14) / 2);
}

std::string ReadEvent(Input& input) {
  constexpr const char* kNames[8] = {
      "OnProjectLoaded", "OnVariableAdded", "OnUserVariableAdded", "OnVariableRemoved", "OnItemRemoved", "OnSomething", "",
      "onprojectloaded"};
  constexpr const char* kParameters[8] = {"iddevice", "idvariable", "iditem", "idroom",
                                          "IdDevice", "",           "name",   "idvariable"};
  devhost::XmlElement event = Element("event", "");
  event.attributes.push_back({"name", kNames[input.Below(8)]});
  for (unsigned int count = input.Below(4); count != 0; --count) {
    devhost::XmlElement parameter = Element("parameter", "");
    parameter.attributes.push_back({"name", kParameters[input.Below(8)]});
    parameter.text = ReadIdText(input);
    event.children.push_back(parameter);
  }
  return devhost::XmlText(event, devhost::XmlStyle::Compact);
}

// Returns a list of variables, as the host returns it or as a state contains it. The text may be cut off.
devhost::XmlElement ReadVariables(Input& input) {
  devhost::XmlElement list = Element("variables", "");
  for (unsigned int count = input.Below(8); count != 0; --count) {
    devhost::XmlElement variable = Element(input.Flag() ? "other" : "variable", "");
    variable.attributes = {{"deviceid", ReadIdText(input)},
                           {"variableid", ReadIdText(input)},
                           {"hidden", ReadBoolText(input)},
                           {"snmpTrapEnabled", ReadBoolText(input)}};
    list.children.push_back(variable);
  }
  return list;
}

std::string ReadList(Input& input) {
  const std::string text = devhost::XmlText(ReadVariables(input), devhost::XmlStyle::Compact);
  return input.Below(8) == 7 ? text.substr(0, text.size() / 2) : text;
}

std::string ReadState(Input& input) {
  const unsigned int kind = input.Below(4);
  if (kind == 0) {
    return "";
  }
  devhost::XmlElement state = Element("SNMPState", "");
  if (kind != 3) {
    state.children.push_back(ReadVariables(input));
  }
  if (kind == 2) {
    state.children.push_back(ReadVariables(input));
  }
  return devhost::XmlText(state, devhost::XmlStyle::Compact);
}

void ReadChange(unsigned char letter, Input& input, Operation& operation) {
  operation.device = input.Below(4);
  switch (letter) {
    case 'T' % 32:
      operation.kind = Kind::SetText;
      operation.number = input.Below(8);
      operation.text = input.Text();
      break;
    case 'L' % 32:
      operation.kind = Kind::AddTrap;
      operation.text = input.Text();
      operation.secondText = input.Text();
      operation.number = input.Below(2);
      break;
    case 'O' % 32:
      operation.kind = Kind::SetSwitches;
      operation.number = input.Byte();
      break;
    case 'E' % 32:
      operation.kind = Kind::SetErased;
      operation.number = input.Byte();
      break;
    case 'B' % 32: {
      constexpr int kStatuses[8] = {0, -9, 1, -1, 9, -10, -8, 7};
      operation.kind = Kind::SetStatus;
      operation.number = input.Below(8);
      operation.status = kStatuses[input.Below(8)];
      break;
    }
    default:
      operation.kind = Kind::SetFile;
      operation.text = input.Text() + input.Text() + input.Text();
      break;
  }
}

void ReadCommand(const char* name, Input& input, Operation& operation) {
  operation.kind = Kind::Command;
  operation.text = name;
  if (input.Below(16) != 15) {
    operation.parameters = {{"deviceId", ReadIdText(input)}};
  }
}

}  // namespace

Operation ReadOperation(Input& input) {
  Operation operation;
  const unsigned char letter = input.Byte() % 32;
  switch (letter) {
    case 'A' % 32:
      operation.kind = Kind::Announce;
      operation.id = ReadId(input);
      operation.device = input.Below(8);
      operation.device = operation.device == 7 ? Operation::kNoDevice : operation.device;
      break;
    case 'W' % 32:
      operation.kind = Kind::Withdraw;
      operation.id = ReadId(input);
      break;
    case 'S' % 32:
      operation.kind = Kind::SetState;
      operation.id = ReadId(input);
      break;
    case 'G' % 32:
      operation.kind = Kind::Command;
      operation.text = "GetDeviceList";
      break;
    case 'X' % 32:
      operation.kind = Kind::Command;
      operation.text = "SetDeviceState";
      operation.parameters = {{"xml", ReadSettings(input)}};
      break;
    case 'C' % 32:
      ReadCommand("AddManagedDevice", input, operation);
      break;
    case 'D' % 32:
      ReadCommand("DeleteManagedDevice", input, operation);
      break;
    case 'R' % 32:
      ReadCommand("RebootController", input, operation);
      break;
    case 'Y' % 32:
      ReadCommand("StopMasterAgent", input, operation);
      break;
    case 'Z' % 32:
      ReadCommand("StartMasterAgent", input, operation);
      break;
    case 'N' % 32: {
      constexpr unsigned int kEventIds[8] = {5, 11, 34, 35, 36, 5, 5, 4};
      operation.kind = Kind::Event;
      operation.number = kEventIds[input.Below(8)];
      operation.text = ReadEvent(input);
      break;
    }
    case 'P' % 32:
      operation.kind = Kind::Persist;
      break;
    case 'I' % 32:
      operation.kind = Kind::Initialize;
      operation.text = ReadState(input);
      break;
    case 'K' % 32:
      operation.kind = Kind::Restart;
      break;
    case 'M' % 32:
      operation.kind = Kind::RegisterCommands;
      break;
    case 'Q' % 32:
      operation.kind = Kind::Destroy;
      break;
    case 'U' % 32:
      operation.kind = Kind::Create;
      break;
    case 'V' % 32:
      operation.kind = Kind::AddVariable;
      operation.id = ReadId(input);
      operation.secondId = ReadId(input);
      operation.flag = input.Below(8) == 7;
      operation.text = input.Text();
      break;
    case 'J' % 32:
      operation.kind = Kind::TakeVariable;
      operation.id = ReadId(input);
      operation.secondId = ReadId(input);
      break;
    case 'H' % 32:
      operation.kind = Kind::SetDrivers;
      operation.number = input.Below(16);
      break;
    case '@' % 32:
      operation.kind = Kind::Refuse;
      operation.flag = input.Flag();
      break;
    case '[' % 32:
    case ']' % 32:
      operation.kind = Kind::SetList;
      operation.flag = letter == ']' % 32;
      operation.text = ReadList(input);
      break;
    default:
      ReadChange(letter, input, operation);
      break;
  }
  return operation;
}

Step ReadStep(Input& input) {
  Step step;
  step.operation = ReadOperation(input);
  for (unsigned int count = input.Below(4); count != 0; --count) {
    Plan plan;
    plan.at = input.Below(64) + 1;
    plan.throws = !input.Flag();
    if (!plan.throws) {
      plan.nested = ReadOperation(input);
    }
    step.plans.push_back(plan);
  }
  return step;
}

}  // namespace fuzz
