#include "devhost/commands/RotateOptions.h"

#include <stdexcept>
#include <string>

#include "devhost/system/FileText.h"

namespace devhost {

namespace {

constexpr char kStandardInput[] = "-";
// A device file may have no end, and no community is as long.
constexpr std::size_t kLongestText = std::size_t{64} * 1024;

// The community that a text holds, with or without a line feed.
std::string CommunityIn(std::string text, const CommandOption& option) {
  if (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  if (text.empty() || text.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) {
    throw std::runtime_error(std::string(option.name) + ": the file does not hold one line with a community");
  }
  return text;
}

std::string ReadCommunity(const Arguments& arguments, const CommandOption& option) {
  return arguments.Has(option) ? CommunityIn(ReadNamedText(arguments.Text(option), kLongestText).text, option) : "";
}

}  // namespace

void RequireStep(const Arguments& arguments) {
  for (const CommandOption* const step : {&kRead, &kWrite, &kStatus, &kFinish, &kAbort}) {
    if (arguments.Has(*step)) {
      return;
    }
  }
  throw std::runtime_error("nothing to do; allowed: --read FILE, --write FILE, --status, --finish, --abort");
}

Communities ReadCommunities(const Arguments& arguments) {
  if (arguments.Text(kRead) != kStandardInput || arguments.Text(kWrite) != kStandardInput) {
    return {ReadCommunity(arguments, kRead), ReadCommunity(arguments, kWrite)};
  }
  const std::string text = ReadNamedText(kStandardInput, kLongestText).text;
  const std::size_t second = text.find('\n') + 1;  // 0 for one line
  return {CommunityIn(text.substr(0, second == 0 ? text.size() : second), kRead),
          CommunityIn(second == 0 ? "" : text.substr(second), kWrite)};
}

}  // namespace devhost
