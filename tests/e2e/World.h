#ifndef TESTS_E2E_WORLD_H
#define TESTS_E2E_WORLD_H

#include <string>

namespace e2e {

// The user that runs the tests. An ordinary user may not enter root's folders or open ports below 1024.
enum class User { Root, Ordinary };

// The exit status when the tests cannot run here. The reason was printed.
inline constexpr int kNotRun = 77;

// Makes a world for the tests and runs this program again inside it, with the same arguments. The world has a copy of the
// built files in a scratch folder that the user can read and, where possible, a network and a mount table of its own and a
// small disk. Prints which of these it has. Leaves nothing behind. Returns the exit status, or kNotRun when this process
// cannot become that user.
int RunInWorld(User user, char** argv);

// Whether this process was started by RunInWorld.
bool InsideWorld();

// Paths inside the world, for the tests.
std::string ModulePath(const std::string& name);
std::string ProgramPath(const std::string& name);
// The copy of a file or folder of the project, in tests/data or docs.
std::string SourcePath(const std::string& name);
// A folder on a disk of 1 MiB that this user may fill; empty when no disk could be mounted.
std::string SmallDisk();
bool IsRoot();

}  // namespace e2e

#endif
