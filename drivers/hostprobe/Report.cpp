#include "drivers/hostprobe/Report.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "host/LogXMessage.h"

namespace drivers {
namespace {

constexpr std::size_t kVerdictWidth = 13;
constexpr std::size_t kIdWidth = 27;
constexpr const char* kVerdicts[] = {"not checked", "under way", "holds", "fails"};

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(text.size() < width ? width - text.size() : 1, ' ');
}

// The file is cut at the end and not at the start: some file systems write to the disk at once when an emptied file is
// closed, which takes longer than all the checks.
bool Overwrite(const std::string& path, const std::string& text) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  if (file < 0) {
    return false;
  }
  const bool isWritten = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         ::ftruncate(file, static_cast<off_t>(text.size())) == 0;
  const int error = errno;
  const bool isClosed = ::close(file) == 0;
  errno = isWritten ? errno : error;
  return isWritten && isClosed;
}

// A host whose log throws breaks a promise that has a line of its own; all others are still checked.
void Log(const std::string& text) {
  try {
    LogXMessage(3, "host_probe: %s", text.c_str());
  } catch (...) {
  }
}

}  // namespace

Report& TheReport() {
  // Only this outlives all drivers of the module.
  static Report report;
  return report;
}

Report::~Report() {
  if (m_drivers.empty() || !IsOpen()) {
    return;
  }
  try {
    // No word to the log: at this time the host may be gone.
    At(Promise::LifeDestroyed) = {Verdict::Fails, true,
                                  "the module was unloaded, or the process ended, while a driver was alive"};
    Write();
  } catch (...) {
  }
}

void Report::Open(const std::string& path, const std::string& title) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  m_path = path;
  m_title = title;
  ReadEarlier();
  Write();
}

void Report::Begin(Promise promise) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  if (IsOpen() && At(promise).verdict != Verdict::Fails) {
    Line& line = At(promise);
    const Line before = line;
    line.verdict = Verdict::UnderWay;
    Write();
    line = before;
  }
}

void Report::Note(Promise promise, const std::string& wrong) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  Line& line = At(promise);
  const Verdict verdict = wrong.empty() ? Verdict::Holds : Verdict::Fails;
  if (line.isOfThisLife && (line.verdict == Verdict::Fails || line.verdict == verdict)) {
    return;
  }
  const bool isNews = line.verdict != verdict;
  line = {verdict, true, wrong};
  if (isNews) {
    const PromiseText& text = AllPromises()[static_cast<std::size_t>(promise)];
    Log(std::string(kVerdicts[static_cast<std::size_t>(verdict)]) + ": " + text.id + ": " +
        (wrong.empty() ? text.words : wrong));
  }
  Write();
}

int Report::DriverBegins() {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  m_drivers.insert(++m_lastNumber);
  return m_lastNumber;
}

void Report::DriverEnds(int number) {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  const bool isLatest = m_drivers.upper_bound(number) == m_drivers.end();
  m_drivers.erase(number);
  if (!isLatest) {
    Note(Promise::LifeReverse, "a driver was destroyed before one that was created after it");
  } else if (!m_drivers.empty()) {
    Note(Promise::LifeReverse, "");
  }
  if (m_drivers.empty()) {
    Note(Promise::LifeDestroyed, "");
  }
}

void Report::LogSummary() const {
  Log(Summary());
}

void Report::ReadEarlier() {
  std::ifstream file(m_path);
  for (std::string line; std::getline(file, line);) {
    TakeEarlier(line);
  }
}

void Report::TakeEarlier(const std::string& line) {
  if (line.size() < kVerdictWidth + kIdWidth) {
    return;
  }
  const std::string id = line.substr(kVerdictWidth, line.find(' ', kVerdictWidth) - kVerdictWidth);
  for (const PromiseText& text : AllPromises()) {
    Line& known = At(text.promise);
    if (id != text.id || known.isOfThisLife) {
      continue;
    }
    if (line.compare(0, kVerdictWidth, Padded("holds", kVerdictWidth)) == 0) {
      known = {Verdict::Holds, false, ""};
    } else if (line.compare(0, kVerdictWidth, Padded("fails", kVerdictWidth)) == 0) {
      known = {Verdict::Fails, false, line.substr(kVerdictWidth + kIdWidth)};
    } else if (line.compare(0, kVerdictWidth, Padded("under way", kVerdictWidth)) == 0) {
      known = {Verdict::Fails, false, "the host ended during this check"};
    }
  }
}

std::string Report::Summary() const {
  const std::lock_guard<std::recursive_mutex> lock(m_mutex);
  std::size_t counts[] = {0, 0, 0, 0};
  for (const Line& line : m_lines) {
    ++counts[static_cast<std::size_t>(line.verdict)];
  }
  const std::size_t open = counts[0] + counts[1];
  return std::to_string(kPromiseCount) + " promises: " + std::to_string(counts[2]) + " hold, " + std::to_string(counts[3]) +
         " fail, " + std::to_string(open) + " not checked";
}

std::string Report::Text() const {
  std::string text = m_title + "\n" + Summary() + "\n\n";
  for (const PromiseText& promise : AllPromises()) {
    const Line& line = m_lines[static_cast<std::size_t>(promise.promise)];
    const std::string words = line.verdict == Verdict::Fails        ? line.wrong
                              : line.verdict == Verdict::NotChecked ? std::string(promise.needs)
                                                                    : std::string(promise.words);
    text += Padded(kVerdicts[static_cast<std::size_t>(line.verdict)], kVerdictWidth) + Padded(promise.id, kIdWidth);
    for (const char c : words) {
      text += c == '\n' || c == '\r' ? ' ' : c;
    }
    text += '\n';
  }
  return text;
}

void Report::Write() {
  if (!IsOpen() || m_isUnwritable) {
    return;
  }
  if (!Overwrite(m_path, Text())) {
    m_isUnwritable = true;
    Log("cannot write the report \"" + m_path + "\": " + std::strerror(errno));
  }
}

}  // namespace drivers
