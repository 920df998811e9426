#ifndef TESTS_E2E_WORLD_H
#define TESTS_E2E_WORLD_H

#include <string>

namespace e2e {

// As whom the tests run. An ordinary user may enter no folder of root's and open no port below 1024.
enum class User { Root, Ordinary };

// The exit status that says: not run here, the reason was printed.
inline constexpr int kNotRun = 77;

// Makes a world for the tests and runs this program again inside it, with the same arguments: a copy of what was built in a
// scratch folder that the user can read, a network and a mount table of its own where they can be made, a small disk. Prints
// which of these it has. Returns the exit status, kNotRun when this process cannot become that user. Nothing of it is left.
int RunInWorld(User user, char** argv);

// Whether this process was started by RunInWorld.
bool InsideWorld();

// What the world holds, for the tests inside.
std::string ModulePath(const std::string& name);
std::string ProgramPath(const std::string& name);
// A copy of that file or folder of the project: one of tests/data, docs.
std::string SourcePath(const std::string& name);
// A folder on a disk of 1 MiB that this user may fill; empty where none could be mounted.
std::string SmallDisk();
bool IsRoot();

}  // namespace e2e

#endif
