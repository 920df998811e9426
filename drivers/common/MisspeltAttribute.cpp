#include "drivers/common/MisspeltAttribute.h"

#include <cctype>
#include <cstddef>
#include <set>
#include <utility>

namespace drivers {

namespace {

char Lower(char letter) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
}

char Upper(char letter) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
}

bool IsUpper(char letter) {
  return std::isupper(static_cast<unsigned char>(letter)) != 0;
}

// "knownHosts" with `between` in front of each capital: "known-hosts".
std::string InWords(const std::string& name, const std::string& between) {
  std::string words;
  for (const char letter : name) {
    words += (IsUpper(letter) ? between : "") + std::string(1, Lower(letter));
  }
  return words;
}

std::set<std::string> OtherCases(const std::string& name) {
  std::set<std::string> others = {InWords(name, ""), InWords(name, "-"), InWords(name, "_")};
  std::string capitals;
  for (const char letter : name) {
    capitals += Upper(letter);
  }
  others.insert(capitals);
  std::string first = name;
  first[0] = Upper(first[0]);
  others.insert(first);
  return others;
}

// As a typing hand makes them.
std::set<std::string> Slips(const std::string& name) {
  std::set<std::string> slips;
  for (std::size_t at = 0; at < name.size(); ++at) {
    slips.insert(std::string(name).erase(at, 1));
    slips.insert(std::string(name).insert(at, 1, name[at]));
    std::string swapped = name;
    if (at > 0) {
      std::swap(swapped[at - 1], swapped[at]);
    }
    slips.insert(swapped);
    std::string other = name;
    other[at] = IsUpper(other[at]) ? Lower(other[at]) : Upper(other[at]);
    slips.insert(other);
  }
  slips.insert(name + "s");
  slips.erase("");
  return slips;
}

std::set<std::string> Variants(const KnownAttribute& attribute) {
  std::set<std::string> variants = Slips(attribute.name);
  variants.merge(OtherCases(attribute.name));
  for (const std::string& mistaken : attribute.mistaken) {
    variants.insert(mistaken);
    variants.merge(OtherCases(mistaken));
  }
  return variants;
}

}  // namespace

std::string FindMisspelt(const H7XML::INode& config, const std::vector<KnownAttribute>& known) {
  std::set<std::string> names;
  for (const KnownAttribute& attribute : known) {
    names.insert(attribute.name);
  }
  for (const KnownAttribute& attribute : known) {
    for (const std::string& variant : Variants(attribute)) {
      if (names.count(variant) == 0 && !config.GetNamedString(variant.c_str()).empty()) {
        return "the attribute " + variant + " is unknown; " + attribute.name + " is likely meant";
      }
    }
  }
  return std::string();
}

}  // namespace drivers
