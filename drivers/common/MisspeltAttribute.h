#ifndef DRIVERS_COMMON_MISSPELT_ATTRIBUTE_H
#define DRIVERS_COMMON_MISSPELT_ATTRIBUTE_H

#include <string>
#include <vector>

#include "host/INode.h"

namespace drivers {

// An attribute that a driver reads.
struct KnownAttribute {
  std::string name;
  std::vector<std::string> mistaken = {};  // what people write for it
};

// An attribute that `config` has and that is likely meant to be one of `known`, in words with the right name; or nothing.
//
// A node gives the value of an attribute by its name and no list of its attributes, so nobody can find every unknown one.
// Found are names that differ in the case of letters, in hyphens and underscores, in one letter that is missing, doubled or
// swapped with its neighbour, and those in `mistaken`.
std::string FindMisspelt(const H7XML::INode& config, const std::vector<KnownAttribute>& known);

}  // namespace drivers

#endif
