#include "tests/e2e/World.h"

#include <fcntl.h>
#include <grp.h>
#include <net/if.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

constexpr char kFolderName[] = "SNMP_E2E_FOLDER";  // set inside the world
constexpr char kDiskName[] = "SNMP_E2E_DISK";
constexpr unsigned int kNobody = 65534;

std::string Reason(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

void Print(const std::string& line) {
  std::printf("[ world    ] %s\n", line.c_str());
  std::fflush(stdout);
}

// Copies the built files, laid out as in the build folder so that the program finds its modules, and the project's files
// that the tests read.
void CopyBuild(const fs::path& folder) {
  for (const char* const room : {"bin", "lib", "tests", "source", "tmp", "disk"}) {
    fs::create_directory(folder / room);
  }
  for (const char* const room : {"tests/data", "docs"}) {
    fs::create_directories(folder / "source" / room);
    fs::copy(fs::path(SOURCE_FOLDER) / room, folder / "source" / room, fs::copy_options::recursive);
  }
  fs::copy_file(BUILT_PROGRAM, folder / "bin/devhost");
  for (const char* const library : {BUILT_LIBRARY, BUILT_AGENT, BUILT_DEVICE}) {
    fs::copy_file(library, folder / "lib" / fs::path(library).filename());
  }
  fs::copy_file("/proc/self/exe", folder / "tests/e2e");
  // The modes were copied, too, and perhaps only root may read the project.
  const fs::perms exec = fs::perms::owner_exec;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    const bool open = (entry.status().permissions() & exec) != fs::perms::none;
    fs::permissions(entry, open ? fs::perms(0755) : fs::perms(0644));
  }
}

void WriteFile(const char* path, const std::string& text) {
  const int file = ::open(path, O_WRONLY | O_CLOEXEC);
  const bool written = file >= 0 && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  if (file >= 0) {
    ::close(file);
  }
  if (!written) {
    throw std::runtime_error(Reason(path));
  }
}

// Inside a user namespace, an ordinary user may make the other two namespaces. The process keeps its user, and loses the
// rights at the next exec.
void EnterUserNamespace() {
  const std::string user = std::to_string(::getuid());
  const std::string group = std::to_string(::getgid());
  if (::unshare(CLONE_NEWUSER) != 0) {
    throw std::runtime_error(Reason("no user namespace"));
  }
  WriteFile("/proc/self/setgroups", "deny");
  WriteFile("/proc/self/uid_map", user + " " + user + " 1");
  WriteFile("/proc/self/gid_map", group + " " + group + " 1");
}

void EnterNetwork() {
  if (::unshare(CLONE_NEWNET) != 0) {
    throw std::runtime_error(Reason("no network namespace"));
  }
  const int handle = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq request = {};
  std::strcpy(request.ifr_name, "lo");
  const bool up = ::ioctl(handle, SIOCGIFFLAGS, &request) == 0 &&
                  (request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP), true) &&
                  ::ioctl(handle, SIOCSIFFLAGS, &request) == 0;
  const std::string reason = Reason("lo does not come up");
  ::close(handle);
  if (!up) {
    throw std::runtime_error(reason);
  }
}

void MountDisk(const std::string& path, uid_t owner) {
  if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    throw std::runtime_error(Reason("no mount namespace"));
  }
  const std::string options = "size=1m,mode=0755,uid=" + std::to_string(owner);
  if (::mount("tmpfs", path.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) != 0) {
    throw std::runtime_error(Reason("no small disk"));
  }
}

// Makes one part of the world, or prints why the tests run without it.
template <typename Make>
bool Try(const char* with, const char* without, const Make& make) {
  try {
    make();
    Print(with);
    return true;
  } catch (const std::runtime_error& error) {
    Print(std::string(without) + " (" + error.what() + ")");
    return false;
  }
}

bool BecomeOrdinary() {
  return ::setgroups(0, nullptr) == 0 && ::setresgid(kNobody, kNobody, kNobody) == 0 &&
         ::setresuid(kNobody, kNobody, kNobody) == 0;
}

// Runs in the child: makes the world and starts the program inside. Returns only when that fails.
int Enter(const fs::path& folder, bool drop, char** argv) {
  if (::geteuid() != 0) {
    Try("a user namespace", "no namespaces", EnterUserNamespace);
  }
  Try("a network of its own", "the network of this machine", EnterNetwork);
  const std::string disk = folder / "disk";
  const uid_t owner = drop ? kNobody : ::getuid();
  if (Try("a small disk", "no small disk", [&disk, owner] { MountDisk(disk, owner); })) {
    ::setenv(kDiskName, disk.c_str(), 1);
  }
  if (drop && !BecomeOrdinary()) {
    Print(Reason("not run: cannot become user 65534"));
    return kNotRun;
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // again, because the change of user has cleared it
  const std::string program = folder / "tests/e2e";
  if (::chdir((folder / "tmp").c_str()) != 0) {  // this user may not have access to the current folder
    Print(Reason("cannot enter a folder"));
    return 1;
  }
  ::execv(program.c_str(), argv);
  Print(Reason("cannot start " + program));
  return 1;
}

int Run(const fs::path& folder, bool drop, char** argv) {
  CopyBuild(folder);
  fs::permissions(folder, fs::perms(0755));
  if (drop && ::chown((folder / "tmp").c_str(), kNobody, kNobody) != 0) {
    throw std::runtime_error(Reason("cannot give a folder away"));
  }
  ::setenv(kFolderName, folder.c_str(), 1);
  ::setenv("TMPDIR", (folder / "tmp").c_str(), 1);
  ::setenv("HOME", (folder / "tmp").c_str(), 1);
  ::setenv("LD_LIBRARY_PATH", (folder / "lib").c_str(), 1);  // the build's own folder may be closed to this user
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::_exit(Enter(folder, drop, argv));
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) {
    throw std::runtime_error(Reason("no child"));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

std::string Inside(const char* name) {
  const char* const value = ::getenv(name);
  return value == nullptr ? std::string() : value;
}

}  // namespace

int RunInWorld(User user, char** argv) {
  const bool root = ::geteuid() == 0;
  if (user == User::Root && !root) {
    Print("not run: these tests need root, and this is user " + std::to_string(::geteuid()));
    return kNotRun;
  }
  Print(user == User::Root ? "as root" : "as an ordinary user");
  const testsupport::ScratchFolder folder;
  return Run(folder.Path(), root && user == User::Ordinary, argv);
}

bool InsideWorld() {
  return !Inside(kFolderName).empty();
}

std::string ModulePath(const std::string& name) {
  return Inside(kFolderName) + "/lib/" + name;
}

std::string ProgramPath(const std::string& name) {
  return Inside(kFolderName) + "/bin/" + name;
}

std::string SourcePath(const std::string& name) {
  return Inside(kFolderName) + "/source/" + name;
}

std::string SmallDisk() {
  return Inside(kDiskName);
}

bool IsRoot() {
  return ::geteuid() == 0;
}

}  // namespace e2e
