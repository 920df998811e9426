#ifndef DEVHOST_OPERATIONS_ADOPTER_H
#define DEVHOST_OPERATIONS_ADOPTER_H

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "devhost/operations/Adopt.h"
#include "devhost/operations/ReadLines.h"
#include "devhost/preview/DeviceAnswers.h"

namespace devhost {

// Makes settings of the lines of a file, one subject after the other: decides for each line whether it becomes a setting,
// goes, or stays. What a change to the settings would be refused for stays a line.
class Adopter {
 public:
  // The lines outlive this object.
  explicit Adopter(const std::vector<ReadLine>& lines);

  // A contact, location or name: the last line wins.
  void TakeText(const char* keyword, const char* setting, ErasableSetting<std::string>& value);
  // Communities for everybody and everything, one that reads and one that writes: the first line of a community wins.
  void TakeCommunities();
  void TakeTraps();
  // Lines that the section has anyway. `value` is that of the section. Returns whether it is new to the daemon.
  bool TakeSame(const std::string& keyword, const std::string& value);
  // Names what stays: lines with a reason of their own, then the others by their directives. The last step.
  void NameStaying();

  // Whether the line with that number becomes a setting or goes.
  bool IsGone(std::size_t number) const { return m_gone.count(number) != 0; }

  DeviceAnswers answers;  // the settings so far
  Adoption adoption;      // its sentences so far

 private:
  using Lines = std::vector<const ReadLine*>;

  Lines Select(const std::function<bool(const ReadLine&)>& wanted) const;
  // The lines with that keyword, in lower case, which the daemon takes.
  Lines Find(const std::string& keyword) const;
  static std::string Title(const ReadLine& line);
  void Become(const ReadLine& line, const std::string& setting);
  void Go(const Lines& lines, const std::string& reason);
  void Stay(const Lines& lines, const std::string& reason);
  // Of these the daemon keeps the first one, which will be that of the section.
  bool TakeDisks(const Lines& setters, const std::string& value);
  // An included file is read below the section, so its line would win over what becomes a setting.
  bool StaysWithIncluded(const Lines& setters);
  std::string WhyNotCommunity(const ReadLine& line, const Lines& same) const;

  const std::vector<ReadLine>& m_lines;
  std::set<std::size_t> m_gone;
  std::set<std::size_t> m_named;
};

}  // namespace devhost

#endif
