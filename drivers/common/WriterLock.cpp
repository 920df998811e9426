#include "drivers/common/WriterLock.h"

#include <cerrno>

#include "drivers/common/FileStatus.h"

namespace drivers {

namespace {

const char kName[] = ".snmpd.conf.lock";

// Each means that another writer finished between two system calls.
const int kMostTries = 100;

int LastStatus() {
  return FileStatusOfErrno(errno);
}

}  // namespace

WriterLock::WriterLock(FileCalls& calls, int folder) : m_calls(calls), m_folder(folder) {}

WriterLock::~WriterLock() {
  if (m_isTaken) {
    m_calls.Remove(m_folder, kName);
  }
}

int WriterLock::Take() {
  bool isStale = true;
  int status = 0;
  for (int count = 0; isStale && count != kMostTries; ++count) {
    status = TakeOnce(isStale);
  }
  m_isTaken = status == 0;
  return status;
}

int WriterLock::TakeOnce(bool& isStale) {
  isStale = false;
  m_file.reset();
  m_file.emplace(m_calls, m_calls.OpenLock(m_folder, kName));
  struct stat held = {};
  struct stat named = {};
  if (!m_file->IsOpen()) {
    const int status = LastStatus();
    const bool isThere = m_calls.Stat(m_folder, kName, named) == 0;
    return isThere && (!S_ISREG(named.st_mode) || status == FileStatusOfErrno(EACCES)) ? kLockUnusable : status;
  }
  if (m_calls.Lock(m_file->Get()) != 0 || m_calls.StatOpened(m_file->Get(), held) != 0) {
    return LastStatus();
  }
  // A pipe can be locked, too, but would be removed at the end.
  if (!S_ISREG(held.st_mode)) {
    return kLockUnusable;
  }
  // A writer who was about to finish may have removed the file after it was opened here. Then its lock keeps nobody out.
  if (m_calls.Stat(m_folder, kName, named) != 0) {
    isStale = errno == ENOENT;
    return LastStatus();
  }
  isStale = held.st_dev != named.st_dev || held.st_ino != named.st_ino;
  return isStale ? FileStatusOfErrno(EWOULDBLOCK) : 0;
}

}  // namespace drivers
