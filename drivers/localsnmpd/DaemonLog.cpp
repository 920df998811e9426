#include "drivers/localsnmpd/DaemonLog.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>

#include "drivers/localsnmpd/ConfigLine.h"

namespace drivers {

namespace {

const char kMask[] = "*****";
const std::size_t kMostOtherLines = 5;
const std::size_t kMostComplaints = 50;
const std::size_t kLongestLine = 400;
const std::string_view kBlanksOfNoTarget = "    ";

// The owner's name for a file that the daemon names relative to its working folder.
std::string OwnersName(std::string file) {
  if (file.compare(0, 3, "../") == 0) {
    file.erase(0, 3);
  }
  return file == "snmpd.conf.served" ? "snmpd.conf" : file;
}

// "FILE: line N: Error: text" as "FILE:N: Error: text"; nothing for other lines.
std::optional<std::string> ReadComplaint(const std::string& line) {
  const std::string before = ": line ";
  const std::size_t at = line.find(before);
  if (at == std::string::npos) {
    return std::nullopt;
  }
  const std::size_t number = at + before.size();
  const std::size_t end = line.find_first_not_of("0123456789", number);
  if (end == std::string::npos || end == number ||
      (line.compare(end, 9, ": Error: ") != 0 && line.compare(end, 11, ": Warning: ") != 0)) {
    return std::nullopt;
  }
  return OwnersName(line.substr(0, at)) + ":" + line.substr(number);
}

bool IsExpected(const std::string& complaint) {
  return complaint.find("separate port argument for sinks is deprecated") != std::string::npos;
}

void Collect(const std::string& community, std::set<std::string>& secrets) {
  std::istringstream words(community);
  for (std::string word; words >> word;) {
    secrets.insert(word);
  }
  secrets.insert(community);
}

// The words of a line of snmpd.conf from the one on that may be a community; 0 for a line that holds none.
std::size_t FirstSecretWord(const std::string& keyword) {
  static const std::set<std::string> kFirst = {"rocommunity", "rwcommunity", "rocommunity6", "rwcommunity6",
                                               "trapcommunity"};
  static const std::set<std::string> kSecond = {"trapsink", "trap2sink", "informsink"};
  static const std::set<std::string> kThird = {"com2sec", "com2sec6", "com2secunix"};
  return kFirst.count(keyword) != 0 ? 1 : kSecond.count(keyword) != 0 ? 2 : kThird.count(keyword) != 0 ? 3 : 0;
}

void CollectFromLine(std::string_view line, std::set<std::string>& secrets) {
  ConfigLine config = ReadConfigLine(line);
  std::size_t first = FirstSecretWord(config.keyword);
  // A sink without a target is written with twice as many blanks; the daemon takes its community for the target.
  const std::size_t begin = line.size() - config.rest.size();
  const bool noTarget = begin >= kBlanksOfNoTarget.size() &&
                        line.substr(begin - kBlanksOfNoTarget.size(), kBlanksOfNoTarget.size()) == kBlanksOfNoTarget;
  first = first == 2 && noTarget ? 1 : first;
  for (std::size_t number = 1; first != 0 && !config.rest.empty(); ++number) {
    const std::string word = TakeConfigWord(config.rest);
    if (number >= first) {
      Collect(word, secrets);
    }
  }
}

bool IsPartOfWord(const std::string& line, std::size_t at) {
  return at < line.size() && (line[at] == '_' || (line[at] >= '0' && line[at] <= '9') ||
                              (line[at] >= 'a' && line[at] <= 'z') || (line[at] >= 'A' && line[at] <= 'Z'));
}

// Where the daemon's own words begin: behind FILE:LINE: Error:, which a community such as 162 must not make unreadable.
std::size_t BeginOfWords(const std::string& complaint) {
  const std::size_t blank = complaint.find(' ');
  for (const std::string_view kind : {": Error: ", ": Warning: "}) {
    if (blank != std::string::npos && blank >= 2 && complaint.compare(blank - 1, kind.size(), kind) == 0 &&
        complaint[blank - 2] >= '0' && complaint[blank - 2] <= '9') {
      return blank - 1 + kind.size();
    }
  }
  return 0;
}

}  // namespace

std::vector<std::string> ReadComplaints(const std::string& log) {
  std::vector<std::string> complaints;
  std::set<std::string> seen;
  std::istringstream stream(log);
  for (std::string line; std::getline(stream, line);) {
    const std::optional<std::string> complaint = ReadComplaint(line);
    if (complaint && !IsExpected(*complaint) && seen.insert(*complaint).second && complaints.size() < kMostComplaints) {
      complaints.push_back(*complaint);
    }
  }
  if (seen.size() > complaints.size()) {
    complaints.push_back("and " + std::to_string(seen.size() - complaints.size()) + " more complaints");
  }
  return complaints;
}

std::vector<std::string> ReadOtherLines(const std::string& log) {
  std::vector<std::string> lines;
  std::istringstream stream(log);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && !ReadComplaint(line)) {
      lines.push_back("snmpd: " + line);
    }
  }
  if (lines.size() > kMostOtherLines) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(kMostOtherLines));
  }
  return lines;
}

std::vector<std::string> CollectSecrets(const SnmpSettings& settings, const std::string& config) {
  std::set<std::string> secrets;
  Collect(settings.communityRead.Get(), secrets);
  Collect(settings.communityWrite.Get(), secrets);
  for (const TrapTarget& target : settings.trapTargets.Get()) {
    Collect(target.community, secrets);
  }
  std::istringstream stream(config);
  for (std::string line; std::getline(stream, line);) {
    CollectFromLine(line, secrets);
  }
  secrets.erase(std::string());
  std::vector<std::string> result(secrets.begin(), secrets.end());
  // The longest first, so that none is cut up by one that is part of it.
  std::stable_sort(result.begin(), result.end(),
                   [](const std::string& left, const std::string& right) { return left.size() > right.size(); });
  return result;
}

std::string MaskSecrets(std::string line, const std::vector<std::string>& secrets) {
  const std::size_t begin = BeginOfWords(line);
  for (const std::string& secret : secrets) {
    std::size_t at = begin;
    while ((at = line.find(secret, at)) != std::string::npos) {
      const bool isWord = (at == 0 || !IsPartOfWord(line, at - 1)) && !IsPartOfWord(line, at + secret.size());
      if (isWord) {
        line.replace(at, secret.size(), kMask);
      }
      at += isWord ? sizeof kMask - 1 : 1;
    }
  }
  return line;
}

std::string Printable(std::string text) {
  if (text.size() > kLongestLine) {
    text.resize(kLongestLine);
    text += "...";
  }
  for (char& character : text) {
    if (static_cast<unsigned char>(character) < ' ' || character == 0x7f) {
      character = '?';
    }
  }
  return text;
}

}  // namespace drivers
