#include "drivers/localsnmpd/DaemonLog.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>

#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/snmpd/Directive.h"
#include "devhost/snmpd/LineCutter.h"
#include "drivers/localsnmpd/DaemonFolder.h"

namespace drivers {

namespace {

const char kMask[] = "*****";
const std::size_t kMostOtherLines = 5;
const std::size_t kMostComplaints = 50;
const std::size_t kLongestLine = 400;
const std::string_view kBlanksOfNoTarget = "    ";

// The place that the owner knows for the one that the daemon names. The daemon reads its own files only.
std::string OwnersPlace(const devhost::Complaint& complaint, const std::vector<ServedConfig::Place>& places) {
  if (complaint.file == DaemonFolder::kServedName && complaint.line - 1 < places.size()) {
    const ServedConfig::Place& place = places[complaint.line - 1];
    return place.file + ":" + std::to_string(place.line);
  }
  return complaint.file + ":" + std::to_string(complaint.line);
}

void Collect(const std::string& community, std::set<std::string>& secrets) {
  std::istringstream words(community);
  for (std::string word; words >> word;) {
    secrets.insert(word);
  }
  secrets.insert(community);
}

// How many words of a line stand in front of those that may be a community; nothing for a line that holds none.
std::optional<std::size_t> WordsBeforeSecret(const std::string& keyword) {
  static const std::set<std::string> kNone = {"rocommunity", "rwcommunity", "rocommunity6", "rwcommunity6", "trapcommunity"};
  static const std::set<std::string> kOne = {"trapsink", "trap2sink", "informsink"};
  static const std::set<std::string> kTwo = {"com2sec", "com2sec6", "com2secunix"};
  return kNone.count(keyword) != 0  ? std::optional<std::size_t>(0)
         : kOne.count(keyword) != 0 ? std::optional<std::size_t>(1)
         : kTwo.count(keyword) != 0 ? std::optional<std::size_t>(2)
                                    : std::nullopt;
}

void CollectFromLine(std::string_view line, std::set<std::string>& secrets) {
  const std::optional<devhost::Directive> directive = devhost::ReadDirective(line);
  const std::optional<std::size_t> before = directive ? WordsBeforeSecret(directive->keyword) : std::nullopt;
  if (!before) {
    return;
  }
  // A sink without a target is written with twice as many blanks; the daemon takes its community for the target.
  const std::string_view front = line.substr(0, directive->restBegin);
  const bool noTarget =
      front.size() >= kBlanksOfNoTarget.size() && front.substr(front.size() - kBlanksOfNoTarget.size()) == kBlanksOfNoTarget;
  for (std::size_t number = *before == 1 && noTarget ? 0 : *before; number < directive->words.size(); ++number) {
    Collect(directive->words[number].text, secrets);
  }
}

bool IsPartOfWord(const std::string& line, std::size_t at) {
  return at < line.size() && (line[at] == '_' || (line[at] >= '0' && line[at] <= '9') ||
                              (line[at] >= 'a' && line[at] <= 'z') || (line[at] >= 'A' && line[at] <= 'Z'));
}

// The text with ***** for each secret that it contains as a word.
std::string Masked(std::string text, const std::vector<std::string>& secrets) {
  for (const std::string& secret : secrets) {
    std::size_t at = 0;
    while ((at = text.find(secret, at)) != std::string::npos) {
      const bool isWord = (at == 0 || !IsPartOfWord(text, at - 1)) && !IsPartOfWord(text, at + secret.size());
      if (isWord) {
        text.replace(at, secret.size(), kMask);
      }
      at += isWord ? sizeof kMask - 1 : 1;
    }
  }
  return text;
}

// Secrets have to be masked before: a piece of one would not be found.
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

}  // namespace

std::vector<std::string> CollectSecrets(const SnmpSettings& settings, const std::string& config) {
  std::set<std::string> secrets;
  Collect(settings.communityRead.Get(), secrets);
  Collect(settings.communityWrite.Get(), secrets);
  for (const TrapTarget& target : settings.trapTargets.Get()) {
    Collect(target.community, secrets);
  }
  for (devhost::LineCutter lines(config); lines.Next();) {
    CollectFromLine(lines.Line(), secrets);
  }
  secrets.erase(std::string());
  std::vector<std::string> result(secrets.begin(), secrets.end());
  // The longest first, so that none is cut up by one that is part of it.
  std::stable_sort(result.begin(), result.end(),
                   [](const std::string& left, const std::string& right) { return left.size() > right.size(); });
  return result;
}

std::vector<std::string> LinesForLog(const std::string& output, const std::vector<ServedConfig::Place>& places,
                                     bool hasFailed, const std::vector<std::string>& secrets) {
  const devhost::DaemonOutput read = devhost::ReadDaemonOutput(output);
  std::vector<std::string> lines;
  for (const devhost::Complaint& complaint : read.complaints) {
    if (lines.size() == kMostComplaints) {
      lines.push_back("and " + std::to_string(read.complaints.size() - kMostComplaints) + " more complaints");
      break;
    }
    lines.push_back(
        Printable(OwnersPlace(complaint, places) + ": " + complaint.kind + ": " + Masked(complaint.text, secrets)));
  }
  const std::size_t others = hasFailed ? read.otherLines.size() : 0;
  for (std::size_t number = others - std::min(others, kMostOtherLines); number != others; ++number) {
    lines.push_back(Printable("snmpd: " + Masked(read.otherLines[number], secrets)));
  }
  return lines;
}

}  // namespace drivers
