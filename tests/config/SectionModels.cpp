#include "tests/config/SectionModels.h"

#include <boost/algorithm/string.hpp>
#include <boost/tokenizer.hpp>
#include <cstddef>

namespace section_models {
namespace {

using Separator = boost::char_separator<char>;

std::vector<std::string> Tokens(const std::string& text, const Separator& separator) {
  const boost::tokenizer<Separator> tokens(text, separator);
  return std::vector<std::string>(tokens.begin(), tokens.end());
}

bool Has(const std::string& text, const char* part) {
  return !boost::algorithm::find_first(text, part).empty();
}

void FillWord(const std::string& line, const char* keyword, Word& word) {
  if (word.erased || !word.value.empty()) {
    return;
  }
  std::string value;
  for (const std::string& token : Tokens(line, Separator(" ", " ", boost::keep_empty_tokens))) {
    value += token == keyword ? "" : token;
  }
  word.value = boost::algorithm::trim_copy(value);
}

void FillTimeout(const std::string& line, std::string& timeout) {
  std::vector<std::string> fields;
  boost::algorithm::split(fields, line, boost::algorithm::is_any_of(" "), boost::algorithm::token_compress_on);
  if (fields.size() > 1) {
    timeout = fields[1];
  }
}

TrapTarget Trap(const std::string& line) {
  TrapTarget trap("", "", "");
  bool closed = false;
  for (const std::string& token : Tokens(line, Separator(" \"", " \"", boost::keep_empty_tokens))) {
    if (token == "trap2sink") {
      continue;
    }
    if (trap.target.empty()) {
      trap.target = boost::algorithm::trim_copy(token);
    } else if (!closed && token == "\"") {
      boost::algorithm::trim(trap.community);
      closed = !trap.community.empty();
    } else if (!closed) {
      trap.community += token;
    } else if (trap.port.empty()) {
      trap.port = boost::algorithm::trim_copy(token);
    }
  }
  boost::algorithm::trim_if(trap.community, boost::algorithm::is_any_of("\""));
  return trap;
}

}  // namespace

std::string Merge(const std::string& section, const std::string& oldText) {
  if (!Has(oldText, "Halvoren Section Start") || !Has(oldText, "Halvoren Section End")) {
    return section + "\n" + oldText;
  }
  const std::vector<std::string> tokens = Tokens(oldText, Separator("\n", "\n", boost::keep_empty_tokens));
  std::size_t next = 0;
  while (!Has(tokens[next], "Halvoren Section End")) {
    ++next;
  }
  ++next;
  while (next < tokens.size() && (tokens[next].compare(0, 1, "#") == 0 || tokens[next] == "\n")) {
    ++next;
  }
  ++next;
  std::string merged = section;
  for (; next < tokens.size(); ++next) {
    merged += tokens[next];
  }
  return merged;
}

std::vector<std::string> LinesInside(const std::string& text) {
  std::vector<std::string> lines;
  bool inside = false;
  for (const std::string& line : Tokens(text, Separator("\n"))) {
    if (!inside) {
      inside = Has(line, "Halvoren Section Start");
    } else if (Has(line, "Halvoren Section End")) {
      inside = false;
    } else {
      lines.push_back(line);
    }
  }
  return lines;
}

void Fill(const std::string& text, Device& device) {
  std::vector<TrapTarget> traps;
  for (const std::string& line : LinesInside(text)) {
    if (Has(line, "rocommunity")) {
      FillWord(line, "rocommunity", device.communityRead);
    } else if (Has(line, "rwcommunity")) {
      FillWord(line, "rwcommunity", device.communityWrite);
    } else if (Has(line, "agentXTimeout")) {
      FillTimeout(line, device.agentXTimeout);
    } else if (Has(line, "agentXRetries")) {
      // The line is recognised but has no effect.
    } else if (Has(line, "sysContact")) {
      FillWord(line, "sysContact", device.sysContact);
    } else if (Has(line, "sysLocation")) {
      FillWord(line, "sysLocation", device.sysLocation);
    } else if (Has(line, "sysName")) {
      FillWord(line, "sysName", device.sysName);
    } else if (Has(line, "trap2sink") && !device.trapsErased && device.traps.empty()) {
      traps.push_back(Trap(line));
    }
  }
  if (!traps.empty()) {
    device.traps = traps;
  }
}

}  // namespace section_models
