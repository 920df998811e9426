#include "devhost/operations/Rotation.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "devhost/check/ConfigText.h"
#include "devhost/check/Includes.h"
#include "devhost/check/Rules.h"
#include "devhost/operations/History.h"
#include "devhost/operations/IncludedParts.h"
#include "devhost/operations/ProbeItems.h"
#include "devhost/operations/ReadLines.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr std::string_view kBegin = "# What follows stays valid until devhost rotate is finished";
constexpr std::string_view kEnd = "# Here ends what devhost rotate has kept";

constexpr char kOperation[] = "rotate";
constexpr char kFinish[] = " finish";
constexpr char kAbort[] = " abort";

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
  std::size_t begin = 0;        // the number of the first comment
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
  block.begin = begin;
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
  change.operation = std::string(kOperation) + step;
  return change;
}

std::string PlaceOf(const ReadLine& line) {
  return line.isIncluded ? line.place : line.place + " of the file";
}

// Stops a rotation in which another line has the community: it would decide who gets in, and stay at the end.
void RequireNowhereElse(const std::string& file, const std::string& path, const std::string& name,
                        const std::string& community) {
  const std::vector<ReadLine> lines = LinesOfCommunity(file, path, community);
  if (!lines.empty()) {
    throw RotationError(PlaceOf(lines.front()) + ", outside the section, has the " + name +
                        " community, too; remove that line first");
  }
}

// The lines that would let somebody in by the community when the rotation has ended.
std::vector<ReadLine> LinesBesideBlock(const std::string& file, const std::string& path, const std::string& community) {
  const auto block = FindBlock(file);
  std::vector<ReadLine> lines = LinesOfCommunity(file, path, community);
  lines.erase(std::remove_if(lines.begin(), lines.end(),
                             [&block](const ReadLine& line) {
                               return block && !line.isIncluded && block->lines.count(line.number) != 0;
                             }),
              lines.end());
  return lines;
}

void NamePlaces(const std::string& file, const std::string& path, const std::string& name, const std::string& community,
                std::vector<std::string>& places) {
  for (const ReadLine& line : LinesBesideBlock(file, path, community)) {
    places.push_back(PlaceOf(line) + " has the " + name + " community, too: it stays valid there");
  }
}

// Says that included files could not be searched, if there are any.
void NameUnreadIncludes(const std::string& file, const std::string& path, std::vector<std::string>& places) {
  ForEachLine(file, [&](const ConfigLine& line) {
    if (path.empty() && FindInclude(line) != nullptr) {
      places.push_back("line " + std::to_string(line.number) +
                       " of the file has the daemon read other files, which cannot be searched from here: a community of "
                       "theirs stays valid");
    }
  });
}

std::vector<std::string> PlacesIn(const Target& target, const std::string& file, const Communities& communities,
                                  const std::string& age) {
  const std::string path = PathOf(target, file);
  std::vector<std::string> places;
  NamePlaces(file, path, age + " read", communities.read, places);
  if (communities.write != communities.read) {
    NamePlaces(file, path, age + " write", communities.write, places);
  }
  NameUnreadIncludes(file, path, places);
  return places;
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

// Whether the open rotation is the one that gives the device these communities: somebody starts it once more.
bool IsOfThese(const Communities& communities, const Block& block, const std::string& file) {
  const Communities used = SectionLines(file, {"x", "x"}).communities;
  const auto isOf = [](const std::string& wanted, const std::string& now, const std::string& old) {
    return wanted.empty() ? old.empty() : wanted == now && !old.empty();
  };
  return isOf(communities.read, used.read, block.old.read) && isOf(communities.write, used.write, block.old.write);
}

// The file whose rotation ends. That is the one of the device. Where no rotation is open there, the same end may have been
// the last change, and whoever says it again wants what is left of it: then it is the file that this change has found.
std::string RequireOpen(const Target& target, const std::string& file, const std::string& end) {
  if (FindBlock(file)) {
    return file;
  }
  const SnapshotList list = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
  if (list.snapshots.empty() || FindSnapshot(list, 0).operation != std::string(kOperation) + end) {
    throw RotationError("no rotation is open; allowed: --read FILE and --write FILE start one");
  }
  return list.snapshots.back().before.file;
}

ProbeItem ItemOf(const std::string& name, bool works) {
  return {name, works ? ProbeItem::Verdict::Good : ProbeItem::Verdict::Differs, "", works ? "works" : "does not work", ""};
}

}  // namespace

Communities OldCommunities(const std::string& file) {
  const auto block = FindBlock(file);
  return block ? block->old : Communities();
}

std::optional<Finding> JudgeRotation(const Change& change, const std::string& before, const std::string& after,
                                     const std::string& name) {
  if (StartsWith(change.operation, kOperation)) {
    return std::nullopt;
  }
  std::optional<Block> block;
  try {
    block = FindBlock(before);
  } catch (const RotationError&) {
    block = Block();  // open, but nobody knows which community is the old one
  }
  if (!block) {
    return std::nullopt;
  }
  const Communities now = SectionLines(before, {"x", "x"}).communities;
  const Communities then = SectionLines(after, {"x", "x"}).communities;
  const auto isLost = [&block](const std::string& old, const std::string& used, const std::string& next) {
    const bool isRotated = !old.empty() || block->old.AreNone();
    return isRotated && !used.empty() && used != old && used != next;
  };
  const bool read = isLost(block->old.read, now.read, then.read);
  const bool write = isLost(block->old.write, now.write, then.write);
  if (!read && !write) {
    return std::nullopt;
  }
  const std::string lost = read && write ? "read and write communities" : read ? "read community" : "write community";
  return Finding{name,
                 block->begin,
                 Severity::Error,
                 kRotationOpenRule,
                 "a rotation is open: the change takes the new " + lost +
                     " out of the section, and locks out whoever uses what is new already",
                 "finish or abort the rotation first: devhost rotate --finish or --abort"};
}

std::vector<std::string> StayingPlaces(const Target& target, const Communities& communities, const std::string& age) {
  return PlacesIn(target, Look(target).file, communities, age);
}

Change StartRotation(const Target& target, const Communities& communities) {
  const DeviceCopy now = Look(target);
  if (const auto block = FindBlock(now.file)) {
    if (IsOfThese(communities, *block, now.file)) {
      return MakeChangeOf(target, WithCommunities(now.settings, communities), "");
    }
    throw RotationError("a rotation is open already; allowed: --status, --finish, --abort");
  }
  const Communities all = SectionLines(now.file, {"x", "x"}).communities;
  RequireNew("read", communities.read, all.read, all.write);
  RequireNew("write", communities.write, all.write, all.read);
  const CommunityLines kept = SectionLines(now.file, communities);
  const std::string path = PathOf(target, now.file);
  RequireNowhereElse(now.file, path, "old read", kept.communities.read);
  RequireNowhereElse(now.file, path, "old write", kept.communities.write);
  RequireNowhereElse(now.file, path, "new read", communities.read);
  RequireNowhereElse(now.file, path, "new write", communities.write);
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
  RequireOpen(target, now.file, kFinish);
  const Communities old = OldCommunities(now.file);
  const Communities used = SectionLines(now.file, old).communities;
  if ((!old.read.empty() && used.read == old.read) || (!old.write.empty() && used.write == old.write)) {
    throw RotationError("the section has the old community again, so there is nothing to finish; allowed: --abort");
  }
  Change change = MakeChangeOf(target, now.settings, kFinish);
  change.edit = RemoveBlock;
  return change;
}

Change AbortRotation(const Target& target) {
  const DeviceCopy now = Look(target);
  RequireOpen(target, now.file, kAbort);
  const auto block = FindBlock(now.file);
  // Once it is aborted, the section has the old ones, even if the device was not told of them.
  const Communities old = block ? block->old : SectionLines(now.file, {"x", "x"}).communities;
  if (old.AreNone()) {
    throw RotationError("the file has no old community to put back; allowed: --finish");
  }
  Change change = MakeChangeOf(target, WithCommunities(now.settings, old), kAbort);
  change.edit = RemoveBlock;
  return change;
}

Communities LeavingCommunities(const Target& target, RotationEnd end) {
  const bool finishes = end == RotationEnd::Finish;
  const std::string file = RequireOpen(target, Look(target).file, finishes ? kFinish : kAbort);
  const Communities old = OldCommunities(file);
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
  const std::string path = PathOf(target, file);
  const std::vector<bool> works = AskAccess(daemon->address, {{left.read, false}, {left.write, true}}, means.patience);
  const auto add = [&](const std::string& name, const std::string& community) {
    const std::vector<ReadLine> lines = LinesOfCommunity(file, path, community);
    const std::string reason = lines.empty() ? "the daemon has not read the file" : PlaceOf(lines.front()) + " lets it in";
    report.items.push_back({age + " " + name + " community", ProbeItem::Verdict::Differs, "", "still works", reason});
  };
  if (works[0]) {
    add("read", left.read);
  }
  if (works[1]) {
    add("write", left.write);
  }
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
  look.probe.messages = PlacesIn(target, now.file, old, "old");
  const Communities used = SectionLines(now.file, {"x", "x"}).communities;
  const std::vector<Access> accesses = {{used.read, false}, {used.write, true}, {old.read, false}, {old.write, true}};
  const std::vector<bool> works = AskAccess(daemon->address, accesses, means.patience);
  const char* const names[] = {"read community", "write community", "old read community", "old write community"};
  for (std::size_t at = 0; at < accesses.size(); ++at) {
    if (!accesses[at].community.empty()) {
      look.probe.items.push_back(ItemOf(names[at], works[at]));
    }
  }
  Conclude(look.probe);
  return look;
}

}  // namespace devhost
