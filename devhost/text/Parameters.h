#ifndef DEVHOST_TEXT_PARAMETERS_H
#define DEVHOST_TEXT_PARAMETERS_H

#include <string>
#include <utility>
#include <vector>

namespace devhost {

// A parameter of a command or event: name and value.
using Parameters = std::vector<std::pair<std::string, std::string>>;
// A command or event with its parameters, as a script would write it.
std::string TextOf(const std::string& name, const Parameters& parameters);

}  // namespace devhost

#endif
