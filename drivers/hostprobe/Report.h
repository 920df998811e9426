#ifndef DRIVERS_HOSTPROBE_REPORT_H
#define DRIVERS_HOSTPROBE_REPORT_H

#include <array>
#include <exception>
#include <mutex>
#include <set>
#include <string>

#include "drivers/hostprobe/Promise.h"

namespace drivers {

// Which promises hold, as a file with one line for each, and as lines of the host's log. All drivers of the module share one
// report, which outlives them. The file is written again whenever a line changes, and says before each check that the check
// is under way: so a host that crashes leaves a file that names the check.
//
// Nothing here throws but for want of memory. A file that cannot be written is one line in the log.
class Report {
 public:
  Report() = default;
  // At the end of the module: a driver that is still alive breaks a promise.
  ~Report();
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  // From now on the file is `path`. What it holds from an earlier life of the host stays, unless a check of this life has
  // another result. `title` is the first line.
  void Open(const std::string& path, const std::string& title);
  bool IsOpen() const { return !m_path.empty(); }

  // Notes the result of a check: nothing in `wrong` means that the promise holds. What was wrong once in the life of this
  // report stays wrong.
  void Note(Promise promise, const std::string& wrong);

  // Runs a check, which returns what is wrong. An exception is wrong, too.
  template <class Body>
  void Check(Promise promise, Body body) {
    Begin(promise);
    std::string wrong;
    try {
      wrong = body();
    } catch (const std::exception& exception) {
      wrong = std::string("an exception came out of the host: ") + exception.what();
    } catch (...) {
      wrong = "an exception came out of the host that is not a std::exception";
    }
    Note(promise, wrong);
  }

  // How many promises hold, in one line; the second writes it to the log.
  std::string Summary() const;
  void LogSummary() const;

  // A driver of this module begins; returns its number, in the order of creation.
  int DriverBegins();
  // The driver with that number ends.
  void DriverEnds(int number);

 private:
  enum class Verdict { NotChecked, UnderWay, Holds, Fails };
  struct Line {
    Verdict verdict = Verdict::NotChecked;
    bool isOfThisLife = false;
    std::string wrong;
  };

  void Begin(Promise promise);
  Line& At(Promise promise) { return m_lines[static_cast<std::size_t>(promise)]; }
  void ReadEarlier();
  void TakeEarlier(const std::string& line);
  std::string Text() const;
  void Write();

  std::array<Line, kPromiseCount> m_lines;
  std::string m_path;
  std::string m_title;
  bool m_isUnwritable = false;
  std::set<int> m_drivers;  // the numbers of those that are alive
  int m_lastNumber = 0;
  // A host that breaks the promise of one thread must not break the report.
  mutable std::recursive_mutex m_mutex;
};

// The report of this module.
Report& TheReport();

}  // namespace drivers

#endif
