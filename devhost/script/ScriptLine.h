#ifndef DEVHOST_SCRIPT_SCRIPT_LINE_H
#define DEVHOST_SCRIPT_SCRIPT_LINE_H

#include <cstdint>
#include <string>
#include <vector>

#include "devhost/project/DriverNames.h"
#include "devhost/script/Script.h"
#include "devhost/script/ScriptForm.h"

namespace devhost {

// The words of a line by the names that its form gives them, and what they mean. A word that means nothing is refused with
// std::runtime_error, which says what is allowed.
struct ScriptLine {
  const std::vector<std::string>& words;
  const ScriptForm& form;
  const std::string& folder;  // what paths are relative to
  const DriverNames& names;

  // Whether the line has a word of that name.
  bool Has(const char* name) const { return form.Find(name) < words.size(); }
  // A word that it has.
  const std::string& operator[](const char* name) const { return words[form.Find(name)]; }
  // The words from that one on; none when it has none.
  std::vector<std::string> From(const char* name) const;
  // The id of the driver that the word DRIVER stands for.
  unsigned long Driver() const { return names.Find((*this)["DRIVER"]); }
  // A word as a number; `special` says what some number means.
  std::int64_t Number(const char* name, std::int64_t least, std::int64_t most, const char* special) const;
  // A word as the id of a device, variable, item or room.
  unsigned long Id(const char* name) const;
  // The word NAME as the name of a command or event; a parameter may not stand in its place.
  const std::string& Name() const;
  // The words from PARAM=VALUE on. The files that they name can be read.
  std::vector<ScriptParameter> Parameters() const;
  // A file as seen from the folder; `whyNot` gives the reason why it cannot be read, or "". Refused with its name.
  std::string Path(const std::string& file, std::string (*whyNot)(const std::string& path)) const;
};

// How a message names a parameter: one whose name is not known may be part of a secret.
std::string ParameterTitle(const std::string& name);

}  // namespace devhost

#endif
