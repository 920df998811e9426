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
//     <claim name="goes-off-line" out="SetOnline online=false" back="SetOnline online=true"/>
//     <waive check="file-round" reason="the controller drops what is not ASCII" until="2027-06-30"/>
//   </conform>
struct Profile {
  // Commands of the driver that take the device out of what a claim is about, and back: command, then NAME=VALUE. Both ""
  // for a claim without.
  struct Commands {
    std::string out;
    std::string back;
  };
  struct Waiver {
    std::string reason;
    std::string until;  // the last day, "2027-06-30"; "" for ever
  };

  // The configuration element for each device that is made. {folder} stands for an empty folder of that device's own.
  std::string config = "<config folder=\"{folder}\"/>";
  // What the contract leaves to the driver, and this one promises. It is judged then.
  std::map<std::string, Commands> claims;
  // Why a check may fail, by the check's id.
  std::map<std::string, Waiver> waivers;

  // The configuration of the device whose folder that is.
  std::string ConfigIn(const std::string& folder) const;
};

// What a profile may claim; docs/conform.md says what a driver promises with each.
const std::set<std::string>& Claims();

// Throws ProfileError for XML that is not a profile, or names a check or a claim that there is not.
Profile ReadProfile(const NamedText& file);

}  // namespace devhost

#endif
