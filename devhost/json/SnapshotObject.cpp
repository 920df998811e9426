#include "devhost/json/SnapshotObject.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>

#include "devhost/secrets/KnownSecrets.h"

namespace devhost {

using nlohmann::ordered_json;

namespace {

std::string UtcTime(std::int64_t time) {
  const std::time_t seconds = static_cast<std::time_t>(time);
  std::tm fields = {};
  char text[64] = "";
  if (::gmtime_r(&seconds, &fields) != nullptr) {
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &fields);
  }
  return text;
}

}  // namespace

std::string ShownOperation(const Snapshot& snapshot, bool showSecrets) {
  const std::string& operation = snapshot.operation;
  constexpr std::string_view kUndo = "undo ";
  const bool isUndo = operation.compare(0, kUndo.size(), kUndo) == 0 &&
                      operation.find_first_not_of("0123456789", kUndo.size()) == std::string::npos;
  constexpr std::string_view kOthers[] = {"apply", "rotate", "rotate finish", "rotate abort"};
  const bool isOther = std::find(std::begin(kOthers), std::end(kOthers), operation) != std::end(kOthers);
  return showSecrets || isOther || isUndo ? operation : kMask;
}

std::vector<std::string> ChangedBy(const Snapshot& snapshot, bool showSecrets) {
  std::vector<std::string> names;
  if (snapshot.after) {
    const CopyDifference difference = CompareCopies({"", snapshot.before}, {"", *snapshot.after}, showSecrets);
    names.reserve(difference.settings.size());
    for (const SettingChange& setting : difference.settings) {
      names.push_back(setting.name);
    }
  }
  return names;
}

ordered_json SettingObjects(const std::vector<SettingChange>& settings) {
  ordered_json objects = ordered_json::array();
  for (const SettingChange& setting : settings) {
    objects.push_back({{"name", setting.name}, {"before", setting.before}, {"after", setting.after}});
  }
  return objects;
}

ordered_json DifferenceObject(const CopyDifference& difference) {
  return {{"difference", difference.file}, {"settings", SettingObjects(difference.settings)}};
}

ordered_json SnapshotObject(const Snapshot& snapshot, bool showSecrets) {
  return {{"snapshot", snapshot.number},
          {"time", UtcTime(snapshot.time)},
          {"operation", ShownOperation(snapshot, showSecrets)},
          {"finished", snapshot.after.has_value()},
          {"settings", ChangedBy(snapshot, showSecrets)}};
}

}  // namespace devhost
