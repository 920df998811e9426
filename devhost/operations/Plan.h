#ifndef DEVHOST_OPERATIONS_PLAN_H
#define DEVHOST_OPERATIONS_PLAN_H

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/operations/DeviceSettings.h"
#include "devhost/operations/Snapshots.h"
#include "devhost/preview/DeviceLife.h"
#include "devhost/project/ChosenDevice.h"
#include "devhost/system/FileText.h"

namespace devhost {

// A device, and where what is kept about it lies.
struct Target {
  ChosenDevice chosen;
  std::string file = {};       // what messages call the snmpd.conf; "" for "snmpd.conf of NAME"
  std::string stateFolder;     // of the drivers' states; "" when none are kept
  std::string snapshotFolder;  // made when it is missing
  bool showSecrets = false;
  bool livesOn = false;  // its driver does, and keeps settings that are not in the file, whatever folder there is
};

// Settings that a device is to have.
struct Change {
  Target target;
  NamedText settings;              // the device settings element
  std::set<std::string> accepted;  // rules whose errors do not stop the change
  std::string operation = "apply";
  std::vector<std::string> restartCommand = {};  // run when the change is in the file; none to run nothing
  // Changes text of others below the section in the same step, unless it is empty. Doing it twice is doing it once. Such a
  // change stops where the device cannot be reached.
  std::function<void(std::string&)> edit = nullptr;
  bool wantsDifference = true;  // in its plan
};

// What messages call the snmpd.conf of a target.
std::string FileNameOf(const Target& target);
// What is kept for the device now, as XML; "" for nothing. Throws StateError.
std::string StateOf(const Target& target);

// What a change would do. A plan changes nothing, and may be kept for as long as somebody looks at it. What is there to be
// shown is masked, unless secrets are to be shown.
struct Plan {
  enum class Verdict {
    Nothing,  // the device is as the settings say
    Change,   // it would change
    Stop      // the change must not be made, or nobody can tell what it would do
  };

  Verdict verdict = Verdict::Stop;
  std::string file;                     // what the difference and the findings call the snmpd.conf
  bool changesFile = false;             // else it would stay as it is
  std::string difference;               // of the file, as a unified diff, where it changes and one is wanted; else ""
  std::vector<SettingChange> settings;  // those that would change
  // What surprises in the settings and what the file would lose; then, as warnings, the lines of the file that will win over
  // the new section. Those are named by the file as it will be.
  std::vector<Finding> findings;
  std::vector<std::string> messages;  // what else there is to say, a line each; the last one is why it stops
  bool isReachable = true;            // false: the device gave what it last knew, and keeps what it gets for later
  // With the verdict Nothing: the snapshot of a change that the daemon has not been told of, because its restart command was
  // not run or has failed; 0 when there is none.
  unsigned long restartDue = 0;
  // With the verdict Nothing, of a device: the daemon may not have been told of what is in the file, because the last change
  // has not come to its end, or because the state of the driver says so. Then the change is made once more.
  bool isDueAgain = false;
  DeviceCopy before;  // with secrets, as the next
  DeviceCopy after;   // valid unless nobody can tell
};

// Judges the settings by the rules of "devhost advise" and previews the change. An error of a rule that is not accepted
// stops it, even where there is nothing to change, and so does a loss of text.
//
// With a state folder, a setting that only the device keeps counts as a change; without one, nothing but the file does,
// since such a setting would end with the driver.
//
// Throws PreviewError and XmlError for wrong settings, StateError, FileError and ProgramError.
Plan PlanChange(const Change& change);
// The same in a life of the device that goes on, so that its driver does not have to connect again for the change. With
// `file`, which may be null, the device is asked for its settings alone, and that is its file.
Plan PlanChange(const Change& change, DeviceLife& life, const DeviceLife::File* file = nullptr);

}  // namespace devhost

#endif
