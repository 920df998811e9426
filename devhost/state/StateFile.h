#ifndef DEVHOST_STATE_STATE_FILE_H
#define DEVHOST_STATE_STATE_FILE_H

#include <sys/stat.h>

#include <cstddef>
#include <optional>
#include <string>

namespace devhost {

// The files of a state folder, each named relative to the folder's open descriptor, so that they stay in the folder that was
// locked, whatever becomes of its path. All throw StateError with the reason only: the caller knows the place.

// The most that a state may have. A million variables take about a tenth of this.
inline constexpr std::size_t kLargestState = std::size_t{1024} * 1024 * 1024;

// Who else could have written a file or folder, in words; "" when only this user and root can.
std::string WhoElseCanWrite(const struct stat& status);

// The text of a file; empty when there is none. Only a regular file of at most kLargestState bytes is read, which nobody
// else could have written; a symbolic link to one is refused.
std::optional<std::string> ReadStateFile(int folder, const std::string& name);

// Replaces a file, or makes it, with mode 0600. At any moment, also after a crash, the file is the old or the new one: the
// text goes to NAME.new and onto the disk before that takes the file's name. Only one process at a time may do this.
void ReplaceStateFile(int folder, const std::string& name, const std::string& text);

// Removes a file when there is one.
void RemoveStateFile(int folder, const std::string& name);

// Gives a file, or whatever stands there, the first free name of NAME.damaged, NAME.damaged-2 and so on. Returns that name.
std::string PutStateFileAside(int folder, const std::string& name);

// The same for a file that also keeps its name, until ReplaceStateFile gives that to another one.
std::string CopyStateFileAside(int folder, const std::string& name);

}  // namespace devhost

#endif
