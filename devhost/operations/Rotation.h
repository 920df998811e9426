#ifndef DEVHOST_OPERATIONS_ROTATION_H
#define DEVHOST_OPERATIONS_ROTATION_H

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/operations/Apply.h"
#include "devhost/operations/Probe.h"

// New communities with an overlap: the section of the agent gets the new ones, and the old ones stay valid below it, between
// two comments, until somebody says that nobody needs them any more. The file alone says how far that has come, so nothing
// is lost when a command is killed.
namespace devhost {

// A rotation that cannot be started, finished or aborted: why and what is allowed, in one line.
class RotationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Communities, "" where there is none or it stays. They are secrets.
struct Communities {
  std::string read;
  std::string write;

  bool AreNone() const { return read.empty() && write.empty(); }
};

// The old communities that a file keeps valid; none when no rotation is open, or when somebody has taken them out. Throws
// RotationError when the lines around them were changed.
Communities OldCommunities(const std::string& file);

// The error "rotation-open" of a change that is not a step of a rotation: it takes a new community out of the section while
// the rotation that brought it is open, so whoever uses that community already is locked out. `before` and `after` are the
// file, `name` is what the finding calls it. Nothing where that is not so.
std::optional<Finding> JudgeRotation(const Change& change, const std::string& before, const std::string& after,
                                     const std::string& name);

// The changes of a rotation, which are planned and made like any other. Each asks the device how it is now, and throws what
// PlanChange throws, SnapshotError and RotationError. A step that was the last change of the device can be said again: that
// changes nothing, or makes up for what is due.

// Gives the device new communities and keeps the old ones valid. Refused where another line has one of them, in an included
// file, too, and while another rotation is open.
Change StartRotation(const Target& target, const Communities& communities);
// Ends it: the old ones are no longer valid.
Change FinishRotation(const Target& target);
// Gives the old ones back to the device: the new ones are no longer valid.
Change AbortRotation(const Target& target);

// What lets somebody in by one of the communities, a line each: lines outside the section and outside those of the rotation,
// of the files that the file includes, too; and what has the daemon read files that cannot be searched from here. `age` is
// what the lines call the communities: "old" or "new". Throws what the changes throw.
std::vector<std::string> StayingPlaces(const Target& target, const Communities& communities, const std::string& age);

// How a rotation ends.
enum class RotationEnd { Finish, Abort };

// The communities that nobody is let in by any more when the open rotation, or the one that the last change has ended, has
// ended like that. Throws what the changes throw.
Communities LeavingCommunities(const Target& target, RotationEnd end);

// Asks the daemon whether it still lets somebody in by communities that have left with that end, and adds what it finds to
// the report; a daemon that has not read the file does. Throws what ProbeDevice throws, and RotationError.
void ProbeLeft(const Target& target, const ProbeMeans& means, const Communities& left, RotationEnd end, ProbeReport& report);

// A rotation as the daemon knows it.
struct RotationLook {
  bool isOpen = false;
  ProbeReport probe;  // of the communities of the section, then of the old ones
};

// Asks the daemon of a device whether the communities work. Throws what ProbeDevice throws, and RotationError.
RotationLook LookAtRotation(const Target& target, const ProbeMeans& means);

}  // namespace devhost

#endif
