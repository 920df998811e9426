#ifndef DEVHOST_JSON_SNAPSHOT_OBJECT_H
#define DEVHOST_JSON_SNAPSHOT_OBJECT_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "devhost/operations/History.h"

namespace devhost {

// Settings that differ: name, before, after.
nlohmann::ordered_json SettingObjects(const std::vector<SettingChange>& settings);

// How two copies differ: difference, settings.
nlohmann::ordered_json DifferenceObject(const CopyDifference& difference);

// A snapshot: snapshot (its number), time, operation, finished, settings (the names of those that were changed).
nlohmann::ordered_json SnapshotObject(const Snapshot& snapshot, bool showSecrets);

// What its operation may be called where it is shown. Snapshots are files that a user can edit: an operation that is not one
// of ours may say anything.
std::string ShownOperation(const Snapshot& snapshot, bool showSecrets);

// The names of the settings that the operation has changed.
std::vector<std::string> ChangedBy(const Snapshot& snapshot, bool showSecrets);

}  // namespace devhost

#endif
