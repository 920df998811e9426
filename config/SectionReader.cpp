#include "config/SectionReader.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/tokenizer.hpp>
#include <cstddef>
#include <vector>

#include "config/ManagedSection.h"
#include "device/SNMPDevice.h"

namespace managed_section {
namespace {

typedef boost::char_separator<char> Separator;
typedef boost::tokenizer<Separator> Tokens;

bool Contains(const std::string& line, const char* keyword) {
  return line.find(keyword) != std::string::npos;
}

// Returns the line without the keyword. Inner spaces and quotes are kept: the device gets quotes as they stand in the file.
std::string WordValue(const std::string& line, const char* keyword) {
  std::string value;
  for (const std::string& token : Tokens(line, Separator(" ", " ", boost::keep_empty_tokens))) {
    if (token != keyword) {
      value += token;
    }
  }
  boost::algorithm::trim(value);
  return value;
}

// One text setting of the device: its keyword in the file, and the operations that read and write it.
struct WordSetting {
  const char* keyword;
  bool (SNMPDevice::*wasErased)();
  std::string (SNMPDevice::*get)();
  void (SNMPDevice::*set)(std::string);
};

const WordSetting kCommunities[] = {
    {"rocommunity", &SNMPDevice::GetWasCommunityReadSettingErased, &SNMPDevice::GetCommunityReadSetting,
     &SNMPDevice::SetCommunityReadSetting},
    {"rwcommunity", &SNMPDevice::GetWasCommunityWriteSettingErased, &SNMPDevice::GetCommunityWriteSetting,
     &SNMPDevice::SetCommunityWriteSetting},
};

const WordSetting kSystemTexts[] = {
    {"sysContact", &SNMPDevice::GetWasSysContactSettingErased, &SNMPDevice::GetSysContactSetting,
     &SNMPDevice::SetSysContactSetting},
    {"sysLocation", &SNMPDevice::GetWasSysLocationSettingErased, &SNMPDevice::GetSysLocationSetting,
     &SNMPDevice::SetSysLocationSetting},
    {"sysName", &SNMPDevice::GetWasSysNameSettingErased, &SNMPDevice::GetSysNameSetting, &SNMPDevice::SetSysNameSetting},
};

// Returns whether the line is about one of the settings, even if the setting was not filled.
template <std::size_t Count>
bool FillWord(const std::string& line, const WordSetting (&settings)[Count], SNMPDevice& device) {
  for (const WordSetting& setting : settings) {
    if (Contains(line, setting.keyword)) {
      if (!(device.*setting.wasErased)() && (device.*setting.get)().empty()) {
        (device.*setting.set)(WordValue(line, setting.keyword));
      }
      return true;
    }
  }
  return false;
}

// An empty second field counts: a keyword with blanks behind it sets the empty text.
void FillField(const std::string& line, SNMPDevice& device, void (SNMPDevice::*set)(std::string)) {
  std::vector<std::string> fields;
  boost::algorithm::split(fields, line, boost::algorithm::is_any_of(" "), boost::algorithm::token_compress_on);
  if (fields.size() >= 2) {
    (device.*set)(fields[1]);
  }
}

// Only a quoted community ends before the port. Without quotes, everything behind the target is the community, including
// blanks and port. This stays, because what devices in the field hold was read in this way.
TrapTarget ParseTrap(const std::string& line) {
  TrapTarget trap("", "", "");
  bool communityClosed = false;
  for (const std::string& token : Tokens(line, Separator(" \"", " \"", boost::keep_empty_tokens))) {
    if (token == "trap2sink") {
      continue;
    }
    if (trap.target.empty()) {
      trap.target = boost::algorithm::trim_copy(token);
    } else if (!communityClosed) {
      if (token == "\"") {
        boost::algorithm::trim(trap.community);
        communityClosed = !trap.community.empty();
      } else {
        trap.community += token;
      }
    } else if (trap.port.empty()) {
      trap.port = boost::algorithm::trim_copy(token);
    }
  }
  boost::algorithm::trim_if(trap.community, boost::algorithm::is_any_of("\""));
  return trap;
}

// The trap targets of the file, and whether the device wants them. The device is asked once, at the first line with a trap
// target, because each question copies the device's list, and a list may be long.
struct CollectedTraps {
  bool isKnown = false;
  bool isWanted = false;
  std::vector<TrapTarget> targets;
};

void CollectTrap(const std::string& line, SNMPDevice& device, CollectedTraps& traps) {
  if (!traps.isKnown) {
    traps.isWanted = !device.GetWasTrapTargetsSettingErased() && device.GetTrapTargetsSetting().empty();
    traps.isKnown = true;
  }
  if (traps.isWanted) {
    traps.targets.push_back(ParseTrap(line));
  }
}

// The first keyword in this order that the line contains decides; no other is tried after it. A keyword counts wherever it
// stands, even in comments and values. This stays, because hand-written lines in the field are read in this way.
void FillFromLine(const std::string& line, SNMPDevice& device, CollectedTraps& traps) {
  if (FillWord(line, kCommunities, device)) {
    return;
  }
  if (Contains(line, "agentXTimeout")) {
    FillField(line, device, &SNMPDevice::SetAgentXTimeout);
  } else if (Contains(line, "agentXRetries")) {
    FillField(line, device, &SNMPDevice::SetAgentXRetries);
  } else if (FillWord(line, kSystemTexts, device)) {
    return;
  } else if (Contains(line, "trap2sink")) {
    CollectTrap(line, device, traps);
  }
}

}  // namespace

std::string LinesInside(const std::string& text) {
  std::string lines;
  std::size_t position = 0;
  for (;;) {
    const std::size_t start = text.find(kStartMarker, position);
    const std::size_t startLineEnd = start == std::string::npos ? start : text.find('\n', start);
    if (startLineEnd == std::string::npos) {
      return lines;
    }
    const std::size_t first = startLineEnd + 1;
    const std::size_t end = text.find(kEndMarker, first);
    if (end == std::string::npos) {
      lines.append(text, first, std::string::npos);
      return lines;
    }
    const std::size_t endLine = text.rfind('\n', end) + 1;
    lines.append(text, first, endLine - first);
    position = text.find('\n', end);
    if (position == std::string::npos) {
      return lines;
    }
  }
}

void Fill(const std::string& text, SNMPDevice& device) {
  // A call to the device may replace the record's text, so the lines are taken out first.
  const std::string lines = LinesInside(text);
  CollectedTraps traps;
  // A search finds the line ends. A tokenizer, which looks at every character, took three quarters of the time of a reading.
  std::size_t end = 0;
  for (std::size_t start = 0; start < lines.size(); start = end + 1) {
    end = std::min(lines.find('\n', start), lines.size());
    FillFromLine(lines.substr(start, end - start), device, traps);
  }
  if (!traps.targets.empty()) {
    device.SetTrapTargetsSetting(traps.targets);
  }
}

}  // namespace managed_section
