#include "drivers/common/SettingNames.h"

namespace drivers {

namespace {

// One row for each setting: exactly one of the three members is set.
struct Row {
  const char* name;
  bool SnmpSettings::*toggle;
  ErasableText SnmpSettings::*text;
  ErasableTrapTargets SnmpSettings::*list;
};

const Row kRows[] = {
    {"managed", &SnmpSettings::managed, nullptr, nullptr},
    {"configDirty", &SnmpSettings::configDirty, nullptr, nullptr},
    {"enabled", &SnmpSettings::enabled, nullptr, nullptr},
    {"communityRead", nullptr, &SnmpSettings::communityRead, nullptr},
    {"communityWrite", nullptr, &SnmpSettings::communityWrite, nullptr},
    {"sysContact", nullptr, &SnmpSettings::sysContact, nullptr},
    {"usePrimaryContact", &SnmpSettings::usePrimaryContact, nullptr, nullptr},
    {"sysLocation", nullptr, &SnmpSettings::sysLocation, nullptr},
    {"useProjectOwnerAddress", &SnmpSettings::useProjectOwnerAddress, nullptr, nullptr},
    {"sysName", nullptr, &SnmpSettings::sysName, nullptr},
    {"useRoomDevice", &SnmpSettings::useRoomDevice, nullptr, nullptr},
    {"trapTargets", nullptr, nullptr, &SnmpSettings::trapTargets},
};

const Row* FindRow(const std::string& name) {
  for (const Row& row : kRows) {
    if (name == row.name) {
      return &row;
    }
  }
  return nullptr;
}

bool CanBeSet(const Row& row) {
  return row.list == nullptr;
}

bool CanBeErased(const Row& row) {
  return row.toggle == nullptr;
}

std::string Names(bool (*fits)(const Row&)) {
  std::string names;
  for (const Row& row : kRows) {
    if (fits(row)) {
      names += names.empty() ? "" : ", ";
      names += row.name;
    }
  }
  return names;
}

}  // namespace

bool ReadSwitch(const std::string& text, bool& value) {
  if (text == "true" || text == "1") {
    value = true;
  } else if (text == "false" || text == "0") {
    value = false;
  } else {
    return false;
  }
  return true;
}

std::string SetSettingByName(SnmpSettings& settings, const std::string& name, const std::string& value) {
  const Row* const row = FindRow(name);
  if (row == nullptr || !CanBeSet(*row)) {
    return "\"" + name + "\" is not a setting with a value; allowed are " + Names(CanBeSet);
  }
  if (row->text != nullptr) {
    (settings.*row->text).Set(value);
    return std::string();
  }
  if (!ReadSwitch(value, settings.*row->toggle)) {
    return "\"" + value + "\" is not a value of the switch " + name + "; allowed are true and false";
  }
  return std::string();
}

std::string EraseSettingByName(SnmpSettings& settings, const std::string& name) {
  const Row* const row = FindRow(name);
  if (row == nullptr || !CanBeErased(*row)) {
    return "\"" + name + "\" is not a setting that can be erased; allowed are " + Names(CanBeErased);
  }
  if (row->text != nullptr) {
    (settings.*row->text).Erase();
  } else {
    (settings.*row->list).Erase();
  }
  return std::string();
}

void VisitSettings(const SnmpSettings& settings, const std::function<void(const NamedSetting&)>& visit) {
  for (const Row& row : kRows) {
    if (row.toggle != nullptr) {
      visit({row.name, settings.*row.toggle ? "true" : "false", nullptr});
    } else if (row.text != nullptr) {
      const bool erased = (settings.*row.text).WasErased();
      visit({row.name, (settings.*row.text).Get(), &erased});
    } else {
      const bool erased = (settings.*row.list).WasErased();
      visit({row.name, std::to_string((settings.*row.list).Get().size()), &erased});
    }
  }
}

}  // namespace drivers
