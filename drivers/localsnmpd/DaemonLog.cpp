#include "drivers/localsnmpd/DaemonLog.h"

#include <algorithm>
#include <cstddef>

#include "devhost/snmpd/DaemonOutput.h"
#include "devhost/snmpd/OwnWords.h"
#include "drivers/localsnmpd/DaemonFolder.h"

namespace drivers {

namespace {

const std::size_t kMostOtherLines = 5;
const std::size_t kMostComplaints = 50;

// The place that the owner knows for the one that the daemon names. The daemon reads its own files only: any other name
// comes from a text that it quotes.
std::string OwnersPlace(const devhost::Complaint& complaint, const std::vector<ServedConfig::Place>& places) {
  if (complaint.file == DaemonFolder::kServedName && complaint.line - 1 < places.size()) {
    const ServedConfig::Place& place = places[complaint.line - 1];
    return place.file + ":" + std::to_string(place.line);
  }
  return (complaint.file == "driver.conf" ? complaint.file : "another file") + ":" + std::to_string(complaint.line);
}

}  // namespace

std::vector<std::string> LinesForLog(const std::string& output, const std::vector<ServedConfig::Place>& places,
                                     bool hasFailed) {
  const devhost::DaemonOutput read = devhost::ReadDaemonOutput(output);
  std::vector<std::string> lines;
  for (const devhost::Complaint& complaint : read.complaints) {
    if (lines.size() == kMostComplaints) {
      lines.push_back("and " + std::to_string(read.complaints.size() - kMostComplaints) + " more complaints");
      break;
    }
    lines.push_back(OwnersPlace(complaint, places) + ": " + complaint.kind + ": " + devhost::OwnWords(complaint.text));
  }
  std::vector<std::string> others;
  for (const std::string& line : read.otherLines) {
    const std::string words = devhost::OwnWords(line);
    if (hasFailed && words != devhost::kNoOwnWords) {
      others.push_back("snmpd: " + words);
    }
  }
  lines.insert(lines.end(), others.end() - static_cast<std::ptrdiff_t>(std::min(others.size(), kMostOtherLines)),
               others.end());
  return lines;
}

}  // namespace drivers
