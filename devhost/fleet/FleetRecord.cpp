#include "devhost/fleet/FleetRecord.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr char kTitle[] = "devhost fleet record 1\n";

[[noreturn]] void Fail(const std::string& path, const std::string& problem) {
  throw RecordError("cannot use the record " + Quoted(path) + ": " + problem);
}

std::string Reason(int error) {
  return std::generic_category().message(error);
}

// Tells texts apart; nobody gains anything by making two that have the same number.
std::uint64_t FingerprintOf(const std::string& text) {
  std::uint64_t number = 14695981039346656037U;
  for (const char letter : text) {
    number = (number ^ static_cast<unsigned char>(letter)) * 1099511628211U;
  }
  return number;
}

}  // namespace

FleetRecord::FleetRecord(const std::string& path, bool resumes)
    : m_path(path),
      m_file(::open(path.c_str(), O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | (resumes ? 0 : O_CREAT | O_EXCL),
                    0600)) {
  if (!m_file.IsOpen()) {
    Fail(path, errno == EEXIST ? "it is there, so an earlier run has not come to its end; allowed: --resume, or another file"
               : errno == ENOENT && resumes
                   ? "it is not there; allowed with --resume: the record of a run that has not come to its end"
               : errno == ENOENT ? "its folder is not there; allowed: a file in a folder that exists"
                                 : Reason(errno));
  }
  Lock();
  if (resumes) {
    Read();
  } else {
    Append(kTitle);
  }
}

std::string FleetRecord::KeyOf(const std::string& project, const std::string& device, const std::string& settings) {
  return AsWord(project) + " " + AsWord(device) + " " + std::to_string(FingerprintOf(settings));
}

void FleetRecord::Lock() const {
  struct stat status = {};
  ::fstat(m_file.Get(), &status);
  if (!S_ISREG(status.st_mode)) {
    Fail(m_path, "it is not a file");
  }
  if (status.st_uid != ::geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    Fail(m_path, "others could have written it; allowed: a file of your own that no other user can write");
  }
  if (::flock(m_file.Get(), LOCK_EX | LOCK_NB) != 0) {
    Fail(m_path, errno == EWOULDBLOCK ? "another run is using it" : Reason(errno));
  }
}

void FleetRecord::Read() {
  const std::string text = ReadDescriptorText(m_file.Get(), m_path);
  if (!StartsWith(text, kTitle)) {
    Fail(m_path, "it is not a record of devhost fleet");
  }
  std::size_t at = sizeof kTitle - 1;
  for (std::size_t end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    m_keys.insert(text.substr(at, end - at));
  }
  if (at != text.size()) {
    Append("\n");
  }
}

void FleetRecord::Append(const std::string& line) const {
  Output output(m_file.Get());
  output.Write(line);
  if (output.Error() != 0 || ::fdatasync(m_file.Get()) != 0) {
    Fail(m_path, Reason(output.Error() != 0 ? output.Error() : errno));
  }
}

void FleetRecord::Add(const std::string& key) {
  Append(key + "\n");
  m_keys.insert(key);
}

void FleetRecord::Remove() {
  if (::unlink(m_path.c_str()) != 0) {
    Fail(m_path, "all is done, but it cannot be removed: " + Reason(errno));
  }
}

}  // namespace devhost
