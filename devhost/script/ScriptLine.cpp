#include "devhost/script/ScriptLine.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "devhost/script/ScriptActions.h"
#include "devhost/secrets/Fields.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

std::string ParameterTitle(const std::string& name) {
  return FindField(name) == Field::Unknown ? "a parameter" : "the parameter " + Quoted(name);
}

std::vector<std::string> ScriptLine::From(const char* name) const {
  const std::size_t first = std::min(form.Find(name), words.size());
  return {words.begin() + static_cast<std::ptrdiff_t>(first), words.end()};
}

std::int64_t ScriptLine::Number(const char* name, std::int64_t least, std::int64_t most, const char* special) const {
  const std::string& word = (*this)[name];
  std::int64_t value = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || stop != end || value < least || value > most) {
    throw std::runtime_error(std::string(name) + " is wrong; allowed: a whole number from " + std::to_string(least) +
                             " to " + std::to_string(most) + special);
  }
  return value;
}

unsigned long ScriptLine::Id(const char* name) const {
  return static_cast<unsigned long>(Number(name, 0, std::numeric_limits<std::uint32_t>::max(), ""));
}

const std::string& ScriptLine::Name() const {
  const std::string& name = (*this)["NAME"];
  if (name.empty() || name.find('=') != std::string::npos) {
    throw std::runtime_error("the " + words[0] + " has no name; allowed: " + form.Action().synopsis);
  }
  return name;
}

std::vector<ScriptParameter> ScriptLine::Parameters() const {
  std::vector<ScriptParameter> parameters;
  for (const std::string& word : From("PARAM=VALUE")) {
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) {
      const std::string name = FindField(word) == Field::Unknown ? "NAME" : word;
      throw std::runtime_error(ParameterTitle(word) + " has no value: write " + name + "=VALUE, or " + name +
                               "= for an empty one");
    }
    if (equals == 0) {
      throw std::runtime_error("a parameter has no name: write NAME=VALUE");
    }
    ScriptParameter parameter{word.substr(0, equals), word.substr(equals + 1), false};
    if (parameter.value.compare(0, 2, "@@") == 0) {
      parameter.value.erase(0, 1);
    } else if (parameter.value.compare(0, 1, "@") == 0) {
      parameter.value = PathIn(folder, parameter.value.substr(1));
      const std::string reason = WhyUnreadable(parameter.value);
      if (!reason.empty()) {
        // A value that begins with @ may have been meant. Files of XML are what scripts send.
        throw std::runtime_error(
            "cannot read " +
            (parameter.name == "xml" ? Quoted(parameter.value) : "the file of " + ParameterTitle(parameter.name)) + ": " +
            reason);
      }
      parameter.isFile = true;
    }
    parameters.push_back(std::move(parameter));
  }
  return parameters;
}

std::string ScriptLine::Path(const std::string& file, std::string (*whyNot)(const std::string& path)) const {
  std::string path = PathIn(folder, file);
  const std::string reason = whyNot(path);
  if (!reason.empty()) {
    throw std::runtime_error("cannot read " + Quoted(path) + ": " + reason);
  }
  return path;
}

}  // namespace devhost
