#include "devhost/operations/Rotation.h"

#include <optional>
#include <string_view>
#include <utility>

#include "devhost/check/ConfigText.h"
#include "devhost/check/Rules.h"
#include "devhost/operations/History.h"
#include "devhost/operations/ProbeItems.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr std::string_view kBegin = "# What follows stays valid until devhost rotate is finished";
constexpr std::string_view kEnd = "# Here ends what devhost rotate has kept";

// Where the old communities stand: [begin, end) with the comments around them and the empty line in front.
struct Block {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The place of that whole line at or behind `from`; npos when there is none.
std::size_t FindLine(const std::string& text, std::string_view line, std::size_t from) {
  for (std::size_t at = text.find(line, from); at != std::string::npos; at = text.find(line, at + 1)) {
    const std::size_t end = at + line.size();
    if ((at == 0 || text[at - 1] == '\n') && (end == text.size() || text[end] == '\n')) {
      return at;
    }
  }
  return std::string::npos;
}

std::optional<Block> FindBlock(const std::string& file) {
  const std::size_t begin = FindLine(file, kBegin, 0);
  const std::size_t end = FindLine(file, kEnd, begin == std::string::npos ? 0 : begin);
  if (begin == std::string::npos && end == std::string::npos) {
    return std::nullopt;
  }
  if (begin == std::string::npos || end == std::string::npos || FindLine(file, kBegin, begin + 1) != std::string::npos) {
    throw RotationError("somebody has changed the lines of \"devhost rotate\" in the file; correct it by hand: \"" +
                        std::string(kBegin) + "\", the old communities, \"" + std::string(kEnd) + "\"");
  }
  const bool hasEmptyLine = begin >= 2 && file.compare(begin - 2, 2, "\n\n") == 0;
  const std::size_t after = end + kEnd.size();
  return Block{begin - (hasEmptyLine ? 1 : 0), after == file.size() ? after : after + 1};
}

// The lines of the file about a community that `isWanted` wants, by what they allow.
struct CommunityLines {
  Communities communities;
  std::string text;  // the lines as they stand in the file
};

template <class IsWanted>
CommunityLines LinesOf(const std::string& file, IsWanted isWanted) {
  CommunityLines lines;
  ForEachLine(file, [&](const ConfigLine& line) {
    const bool reads = line.setting && line.setting->keyword == "rocommunity";
    const bool writes = line.setting && line.setting->keyword == "rwcommunity";
    if ((reads || writes) && isWanted(line) && !line.setting->words.empty()) {
      (reads ? lines.communities.read : lines.communities.write) = AnsweredCommunity(*line.setting);
      lines.text += std::string(line.text) + "\n";
    }
  });
  return lines;
}

CommunityLines SectionLines(const std::string& file, const Communities& wanted) {
  return LinesOf(file, [&wanted](const ConfigLine& line) {
    return line.IsInside() && !(line.setting->keyword == "rocommunity" ? wanted.read : wanted.write).empty();
  });
}

std::string WithBlock(const std::string& file, const std::string& lines) {
  const std::string lineFeed = file.empty() || file.back() == '\n' ? "" : "\n";
  return file + lineFeed + "\n" + std::string(kBegin) + "\n" + lines + std::string(kEnd) + "\n";
}

void RemoveBlock(std::string& file) {
  if (const auto block = FindBlock(file)) {
    file.erase(block->begin, block->end - block->begin);
  }
}

// The device as it is now. Throws RotationError when it does not answer.
DeviceCopy Look(const Target& target) {
  DeviceLook look = LookAtDevice(target);
  if (!look.problem.empty()) {
    throw RotationError(look.problem);
  }
  return std::move(look.now);
}

std::string WithCommunities(const std::string& settings, const Communities& communities) {
  XmlElement root = ReadXml(settings);
  for (XmlElement& setting : root.children) {
    const std::string& wanted = setting.name == "snmpCommunityReadSetting"    ? communities.read
                                : setting.name == "snmpCommunityWriteSetting" ? communities.write
                                                                              : setting.text;
    setting.text = wanted.empty() ? setting.text : wanted;
  }
  return XmlText(root, XmlStyle::Indented) + "\n";
}

Change MakeChangeOf(const Target& target, const std::string& settings, const std::string& step) {
  Change change;
  change.target = target;
  change.settings = {"settings of " + target.chosen.device.name, settings};
  change.operation = "rotate" + step;
  return change;
}

// Stops a rotation that nobody could tell from no rotation.
void RequireNew(const std::string& name, const std::string& wanted, const std::string& old, const std::string& other) {
  if (!wanted.empty() && old.empty()) {
    throw RotationError("the section of the file has no " + name +
                        " community that could stay valid; set one with \"devhost apply\"");
  }
  if (!wanted.empty() && (wanted == old || wanted == other)) {
    throw RotationError("the new " + name + " community is in use already; choose another one");
  }
}

Communities RequireOpen(const std::string& file) {
  Communities old = OldCommunities(file);
  if (old.AreNone()) {
    throw RotationError("no rotation is open; allowed: --read FILE and --write FILE start one");
  }
  return old;
}

ProbeItem ItemOf(const std::string& name, bool works) {
  return {name, works ? ProbeItem::Verdict::Good : ProbeItem::Verdict::Differs, "", works ? "works" : "does not work", ""};
}

}  // namespace

Communities OldCommunities(const std::string& file) {
  const auto block = FindBlock(file);
  if (!block) {
    return {};
  }
  return LinesOf(file.substr(block->begin, block->end - block->begin), [](const ConfigLine&) { return true; }).communities;
}

Change StartRotation(const Target& target, const Communities& communities) {
  const DeviceCopy now = Look(target);
  if (FindBlock(now.file)) {
    throw RotationError("a rotation is open already; allowed: --status, --finish, --abort");
  }
  const Communities all = SectionLines(now.file, {"x", "x"}).communities;
  RequireNew("read", communities.read, all.read, all.write);
  RequireNew("write", communities.write, all.write, all.read);
  const std::string lines = SectionLines(now.file, communities).text;
  const std::string seen = LinesOf(WithBlock(now.file, lines), [](const ConfigLine& line) { return !line.IsInside(); }).text;
  if (seen.size() < lines.size() || seen.compare(seen.size() - lines.size(), lines.size(), lines) != 0) {
    throw RotationError("the daemon would not read a line at the end of the file, which ends in a part for other programs");
  }
  Change change = MakeChangeOf(target, WithCommunities(now.settings, communities), "");
  change.edit = [lines](std::string& file) {
    if (!FindBlock(file)) {
      file = WithBlock(file, lines);
    }
  };
  return change;
}

Change FinishRotation(const Target& target) {
  const DeviceCopy now = Look(target);
  const Communities old = RequireOpen(now.file);
  const Communities used = SectionLines(now.file, old).communities;
  if ((!old.read.empty() && used.read == old.read) || (!old.write.empty() && used.write == old.write)) {
    throw RotationError("the section has the old community again, so there is nothing to finish; allowed: --abort");
  }
  Change change = MakeChangeOf(target, now.settings, " finish");
  change.edit = RemoveBlock;
  return change;
}

Change AbortRotation(const Target& target) {
  const DeviceCopy now = Look(target);
  Change change = MakeChangeOf(target, WithCommunities(now.settings, RequireOpen(now.file)), " abort");
  change.edit = RemoveBlock;
  return change;
}

RotationLook LookAtRotation(const Target& target, const ProbeMeans& means) {
  RotationLook look;
  const DeviceCopy now = Look(target);
  const Communities old = OldCommunities(now.file);
  look.isOpen = !old.AreNone();
  const auto daemon = Reach(target, means, now.file, look.probe);
  if (!daemon) {
    return look;
  }
  const Communities used = SectionLines(now.file, {"x", "x"}).communities;
  const auto ask = [&](const char* name, const std::string& community, bool writes) {
    if (!community.empty()) {
      const bool works = (writes ? LetsWrite : LetsRead)(daemon->address, community, means.patience);
      look.probe.items.push_back(ItemOf(name, works));
    }
  };
  ask("read community", used.read, false);
  ask("write community", used.write, true);
  ask("old read community", old.read, false);
  ask("old write community", old.write, true);
  Conclude(look.probe);
  return look;
}

}  // namespace devhost
