#ifndef DEVHOST_CONFORM_PROFILE_H
#define DEVHOST_CONFORM_PROFILE_H

#include <map>
#include <set>
#include <stdexcept>
#include <string>

#include "devhost/system/FileText.h"

namespace devhost {

// A profile that cannot be used: what is wrong and what is allowed, in one line.
class ProfileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What the author of a driver says about it:
//
//   <conform>
//     <config folder="{folder}" port="auto"/>
//     <claim name="keeps-state"/>
//     <waive check="file-round" reason="the controller drops what is not ASCII"/>
//   </conform>
struct Profile {
  // The configuration element for each device that is made. {folder} stands for an empty folder of that device's own.
  std::string config = "<config folder=\"{folder}\"/>";
  // What the contract leaves to the driver, and this one promises. It is judged then.
  std::set<std::string> claims;
  // The reason for which a check may fail, by the check's id.
  std::map<std::string, std::string> waivers;

  // The configuration of the device whose folder that is.
  std::string ConfigIn(const std::string& folder) const;
};

// What a profile may claim; docs/conform.md says what a driver promises with each.
const std::set<std::string>& Claims();

// Throws ProfileError for XML that is not a profile, or names a check or a claim that there is not.
Profile ReadProfile(const NamedText& file);

}  // namespace devhost

#endif
