#include "devhost/operations/Rotation.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "devhost/check/ConfigText.h"
#include "devhost/check/Rules.h"
#include "devhost/operations/History.h"
#include "devhost/operations/ProbeItems.h"
#include "devhost/operations/ReadLines.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr std::string_view kBegin = "# What follows stays valid until devhost rotate is finished";
constexpr std::string_view kEnd = "# Here ends what devhost rotate has kept";

bool IsCommunityLine(const ConfigLine& line) {
  return line.setting && !line.setting->words.empty() &&
         (line.setting->keyword == "rocommunity" || line.setting->keyword == "rwcommunity");
}

// Which of the two is meant by a line for which IsCommunityLine holds.
std::string& MemberOf(Communities& communities, const ConfigLine& line) {
  return line.setting->keyword == "rocommunity" ? communities.read : communities.write;
}

// What a rotation has put into the file. Others may have put lines of theirs between those.
struct Block {
  std::set<std::size_t> lines;  // the numbers of the two comments, of what they enclose, and of the empty line in front
  Communities old;
};

// Editors may change the white space at the end of every line, so the comments are compared without it.
std::optional<Block> FindBlock(const std::string& file) {
  Block block;
  std::size_t begin = 0;
  std::size_t end = 0;
  bool isWhole = true;
  bool isBelowEmpty = false;
  ForEachLine(file, [&](const ConfigLine& line) {
    const std::string_view text = TrimmedView(line.text);
    if (text == kBegin) {
      isWhole = isWhole && begin == 0;
      begin = line.number;
      block.lines.insert(isBelowEmpty ? begin - 1 : begin);
      block.lines.insert(begin);
    } else if (text == kEnd) {
      isWhole = isWhole && begin != 0 && end == 0;
      end = line.number;
      block.lines.insert(end);
    } else if (begin != 0 && end == 0 && !line.IsInside() && IsCommunityLine(line)) {
      std::string& community = MemberOf(block.old, line);
      isWhole = isWhole && community.empty();  // nobody knows which of two is the old one
      community = AnsweredCommunity(*line.setting);
      block.lines.insert(line.number);
    }
    isBelowEmpty = text.empty();
  });
  if (begin == 0 && end == 0) {
    return std::nullopt;
  }
  if (!isWhole || end == 0) {
    throw RotationError("somebody has changed the lines of \"devhost rotate\" in the file; correct it by hand: \"" +
                        std::string(kBegin) + "\", the old communities, \"" + std::string(kEnd) + "\"");
  }
  return block;
}

// The lines of the section about communities.
struct CommunityLines {
  Communities communities;
  std::string text;     // the lines as they stand in the file
  bool hasTwo = false;  // for the same purpose
};

// Those that allow what one of `wanted` is to allow.
CommunityLines SectionLines(const std::string& file, Communities wanted) {
  CommunityLines lines;
  ForEachLine(file, [&](const ConfigLine& line) {
    if (line.IsInside() && IsCommunityLine(line) && !MemberOf(wanted, line).empty()) {
      std::string& community = MemberOf(lines.communities, line);
      lines.hasTwo = lines.hasTwo || !community.empty();
      community = AnsweredCommunity(*line.setting);
      lines.text += std::string(line.text) + "\n";
    }
  });
  return lines;
}

std::string WithBlock(const std::string& file, const std::string& lines) {
  const std::string lineFeed = file.empty() || file.back() == '\n' ? "" : "\n";
  return file + lineFeed + "\n" + std::string(kBegin) + "\n" + lines + std::string(kEnd) + "\n";
}

// Leaves what others have put between the lines of the block.
void RemoveBlock(std::string& file) {
  const auto block = FindBlock(file);
  if (!block) {
    return;
  }
  std::string rest;
  std::size_t number = 0;
  for (std::size_t at = 0; at < file.size();) {
    const std::size_t end = std::min(file.find('\n', at), file.size() - 1) + 1;
    rest += block->lines.count(++number) != 0 ? "" : file.substr(at, end - at);
    at = end;
  }
  file = std::move(rest);
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

// Stops a rotation in which another line of the file has the community: it would decide who gets in, and stay at the end.
void RequireNowhereElse(const std::string& file, const std::string& name, const std::string& community) {
  const std::size_t line = LineOfCommunity(file, community);
  if (line != 0) {
    throw RotationError("line " + std::to_string(line) + " of the file, outside the section, has the " + name +
                        " community, too; remove that line first");
  }
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
  const auto block = FindBlock(file);
  if (!block) {
    throw RotationError("no rotation is open; allowed: --read FILE and --write FILE start one");
  }
  return block->old;
}

ProbeItem ItemOf(const std::string& name, bool works) {
  return {name, works ? ProbeItem::Verdict::Good : ProbeItem::Verdict::Differs, "", works ? "works" : "does not work", ""};
}

}  // namespace

Communities OldCommunities(const std::string& file) {
  const auto block = FindBlock(file);
  return block ? block->old : Communities();
}

Change StartRotation(const Target& target, const Communities& communities) {
  const DeviceCopy now = Look(target);
  if (FindBlock(now.file)) {
    throw RotationError("a rotation is open already; allowed: --status, --finish, --abort");
  }
  const Communities all = SectionLines(now.file, {"x", "x"}).communities;
  RequireNew("read", communities.read, all.read, all.write);
  RequireNew("write", communities.write, all.write, all.read);
  const CommunityLines kept = SectionLines(now.file, communities);
  RequireNowhereElse(now.file, "old read", kept.communities.read);
  RequireNowhereElse(now.file, "old write", kept.communities.write);
  RequireNowhereElse(now.file, "new read", communities.read);
  RequireNowhereElse(now.file, "new write", communities.write);
  if (kept.hasTwo) {
    throw RotationError("the section of the file has more than one such community; set one with \"devhost apply\"");
  }
  const Communities seen = OldCommunities(WithBlock(now.file, kept.text));
  if (seen.read != kept.communities.read || seen.write != kept.communities.write) {
    throw RotationError("the daemon would not read a line at the end of the file, which ends in a part for other programs");
  }
  Change change = MakeChangeOf(target, WithCommunities(now.settings, communities), "");
  change.edit = [lines = kept.text](std::string& file) {
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
  const Communities old = RequireOpen(now.file);
  if (old.AreNone()) {
    throw RotationError("the file has no old community to put back; allowed: --finish");
  }
  Change change = MakeChangeOf(target, WithCommunities(now.settings, old), " abort");
  change.edit = RemoveBlock;
  return change;
}

Communities LeavingCommunities(const Target& target, RotationEnd end) {
  const std::string file = Look(target).file;
  const Communities old = RequireOpen(file);
  const bool finishes = end == RotationEnd::Finish;
  Communities staying = SectionLines(file, {"x", "x"}).communities;
  const Communities leaving = finishes ? old : SectionLines(file, old).communities;
  if (!finishes) {
    staying.read = old.read.empty() ? staying.read : old.read;
    staying.write = old.write.empty() ? staying.write : old.write;
  }
  // Whoever may write may read, too.
  const bool staysRead = leaving.read == staying.read || leaving.read == staying.write;
  const bool staysWrite = leaving.write == staying.write;
  return {staysRead ? "" : leaving.read, staysWrite ? "" : leaving.write};
}

void ProbeLeft(const Target& target, const ProbeMeans& means, const Communities& left, RotationEnd end,
               ProbeReport& report) {
  const std::string file = Look(target).file;
  ProbeReport again;
  const auto daemon = Reach(target, means, file, again);
  if (!daemon) {
    report = std::move(again);
    return;
  }
  const std::string age = end == RotationEnd::Finish ? "old" : "new";
  const auto ask = [&](const std::string& name, const std::string& community, bool writes) {
    if (!community.empty() && (writes ? LetsWrite : LetsRead)(daemon->address, community, means.patience)) {
      const std::size_t line = LineOfCommunity(file, community);
      const std::string reason =
          line == 0 ? "the daemon has not read the file" : "line " + std::to_string(line) + " of the file lets it in";
      report.items.push_back({age + " " + name + " community", ProbeItem::Verdict::Differs, "", "still works", reason});
    }
  };
  ask("read", left.read, false);
  ask("write", left.write, true);
  Conclude(report);
}

RotationLook LookAtRotation(const Target& target, const ProbeMeans& means) {
  RotationLook look;
  const DeviceCopy now = Look(target);
  const auto block = FindBlock(now.file);
  const Communities old = block ? block->old : Communities();
  look.isOpen = block.has_value();
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
