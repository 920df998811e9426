#include "devhost/session/ShownSettings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "devhost/session/Request.h"
#include "devhost/session/RequestError.h"
#include "devhost/xml/XmlCharacters.h"

namespace devhost {

using nlohmann::json;
using nlohmann::ordered_json;

namespace {

constexpr char kPlace[] = "settings.";

ordered_json ShownSecret(const std::string& value, Masker& secrets) {
  secrets.Secret(value);
  ordered_json shown = {{"set", !value.empty()}};
  if (secrets.ShowsSecrets()) {
    shown["value"] = value;
  }
  return shown;
}

ordered_json ShownSecret(const ErasableSetting<std::string>& setting, Masker& secrets) {
  ordered_json shown = ShownSecret(setting.value, secrets);
  shown["erased"] = setting.wasErased;
  return shown;
}

// Nobody could edit a text with a part of it hidden: it is shown as it is, or not at all.
ordered_json ShownText(const std::string& value, const std::string& masked) {
  return masked == value ? ordered_json{{"value", value}} : ordered_json{{"value", ""}, {"hidden", true}};
}

ordered_json ShownText(const ErasableSetting<std::string>& setting, const Masker& secrets) {
  ordered_json shown = ShownText(setting.value, secrets.Text(setting.value));
  shown["erased"] = setting.wasErased;
  return shown;
}

// Letters, digits, and the signs of names and addresses, among which a dot or a colon: whoever has typed the community in
// the place of the target has hardly typed that.
bool IsHostName(const std::string& text) {
  return text.size() <= 253 && text.find_first_of(".:") != std::string::npos &&
         text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-:[]%_") ==
             std::string::npos;
}

// In other output, a name may be a secret as any text that is not a number. Here it is what somebody edits, and it is shown
// unless it has a community of the device in it.
bool IsShownTarget(const std::string& text, const DeviceAnswers& answers) {
  const auto has = [&text](const std::string& community) {
    return !community.empty() && text.find(community) != std::string::npos;
  };
  const std::vector<TrapTarget>& targets = answers.trapTargets.value;
  return text.empty() || text == "localhost" ||
         (IsHostName(text) && !has(answers.communityRead.value) && !has(answers.communityWrite.value) &&
          std::none_of(targets.begin(), targets.end(), [&has](const TrapTarget& each) { return has(each.community); }));
}

ordered_json ShownTarget(const TrapTarget& target, const DeviceAnswers& answers, Masker& secrets) {
  const bool isPort = target.port.size() <= 5 && target.port.find_first_not_of("0123456789") == std::string::npos;
  const ordered_json name =
      ShownText(target.target, IsShownTarget(target.target, answers) ? target.target : secrets.Secret(target.target));
  const ordered_json port = ShownText(target.port, isPort ? target.port : secrets.Secret(target.port));
  const auto flat = [](const ordered_json& text) { return text.contains("hidden") ? text : text["value"]; };
  return {{"target", flat(name)}, {"community", ShownSecret(target.community, secrets)}, {"port", flat(port)}};
}

// An edit of one device, member by member.
class Edit {
 public:
  // Learns the texts that stand where a secret may be, whatever is wrong with the edit. The other ones are harmless by their
  // names.
  static void Learn(const json& value, Masker& secrets) {
    if (!value.is_structured()) {
      return;
    }
    for (const auto& member : value.items()) {
      if (member.value().is_structured()) {
        Learn(member.value(), secrets);
      } else if (member.value().is_string() && (member.key() == "value" || IsCommunity(member.key()))) {
        secrets.Secret(member.value().get_ref<const std::string&>());
      }
    }
  }

  // A text that the agent gets as it is: XML would carry another character in the place of one that it cannot.
  static std::string Carried(const json& object, const char* name, const std::string& place) {
    std::string text = TextMember(object, name, place);
    for (std::size_t at = 0; at != text.size();) {
      const std::size_t length = XmlCharacterLength(std::string_view(text).substr(at));
      if (length == 0) {
        throw WrongBody(place + name + " has a character that XML cannot carry");
      }
      at += length;
    }
    return text;
  }

  // Returns what `keep` of the member at `place` keeps. Throws RequestError for what keeps nothing: it must not pass for a
  // wish to keep what is there.
  using Kept = std::function<std::string(const json& keep, const std::string& place)>;

  // The one text that is there. It outlives the result.
  static Kept All(const std::string& value) {
    return [&value](const json& keep, const std::string& place) {
      if (!keep.is_boolean() || !keep.get<bool>()) {
        throw WrongBody(place + ".keep is not true; allowed: true, or a value in its place");
      }
      return value;
    };
  }

  // What a target keeps, by the number of the target in the list as it was. The list outlives the result.
  static Kept Of(const std::vector<TrapTarget>& before, std::string TrapTarget::*part) {
    return [&before, part](const json& keep, const std::string& place) {
      if (!keep.is_number_unsigned() || keep.get<std::uint64_t>() >= before.size()) {
        throw WrongBody(place + " keeps that of a target that there is not; allowed: {\"keep\": NUMBER}, from 0 to " +
                        std::to_string(before.empty() ? 0 : before.size() - 1));
      }
      return before[keep.get<std::size_t>()].*part;
    };
  }

  // A text, or an object that keeps what is there.
  static std::string Text(const json& object, const char* name, const std::string& place, const Kept& kept) {
    const json& member = Member(object, name, place);
    if (!member.is_object()) {
      return Carried(object, name, place);
    }
    AllowMembers(member, {"keep"}, place + name + ".");
    return kept(Member(member, "keep", place + name + "."), place + name);
  }

  static std::string Secret(const json& object, const char* name, const std::string& place, const Kept& kept) {
    const json& member = Member(object, name, place);
    if (!member.is_object()) {
      throw WrongBody(place + name + " is not an object; allowed: {\"keep\": true} or {\"value\": TEXT}");
    }
    const bool keeps = member.contains("keep");
    AllowMembers(member, {keeps ? "keep" : "value"}, place + name + ".");
    if (!keeps) {
      return Carried(member, "value", place + name + ".");
    }
    return kept(member["keep"], place + name);
  }

 private:
  // A community that should be an object, and may be a text.
  static bool IsCommunity(const std::string& name) {
    return name == "community" || name == "readCommunity" || name == "writeCommunity";
  }
};

std::vector<TrapTarget> MergeTargets(const json& given, const std::vector<TrapTarget>& before) {
  if (!given.is_array()) {
    throw WrongBody("settings.trapTargets is not a list");
  }
  std::vector<TrapTarget> targets;
  for (const json& target : given) {
    const std::string place = "settings.trapTargets[" + std::to_string(targets.size()) + "].";
    AllowMembers(target, {"target", "community", "port"}, place);
    targets.emplace_back(Edit::Text(target, "target", place, Edit::Of(before, &TrapTarget::target)),
                         Edit::Secret(target, "community", place, Edit::Of(before, &TrapTarget::community)),
                         Edit::Text(target, "port", place, Edit::Of(before, &TrapTarget::port)));
  }
  return targets;
}

}  // namespace

ordered_json ShownSettings(const DeviceAnswers& answers, Masker& secrets) {
  // All secrets are learnt before a text is shown that may have one of them.
  ordered_json readCommunity = ShownSecret(answers.communityRead, secrets);
  ordered_json writeCommunity = ShownSecret(answers.communityWrite, secrets);
  ordered_json targets = ordered_json::array();
  for (const TrapTarget& target : answers.trapTargets.value) {
    secrets.Secret(target.community);
  }
  for (const TrapTarget& target : answers.trapTargets.value) {
    targets.push_back(ShownTarget(target, answers, secrets));
  }
  return {{"enabled", answers.isEnabled},
          {"readCommunity", std::move(readCommunity)},
          {"writeCommunity", std::move(writeCommunity)},
          {"contact", ShownText(answers.sysContact, secrets)},
          {"usePrimaryContact", answers.usesPrimaryContact},
          {"location", ShownText(answers.sysLocation, secrets)},
          {"useOwnerAddress", answers.usesProjectOwnerAddress},
          {"name", ShownText(answers.sysName, secrets)},
          {"useRoomDevice", answers.usesRoomDevice},
          {"trapTargets", std::move(targets)},
          {"trapTargetsErased", answers.trapTargets.wasErased}};
}

DeviceAnswers MergeEdit(const json& given, const DeviceAnswers& now, Masker& secrets) {
  Edit::Learn(given, secrets);
  AllowMembers(given,
               {"enabled", "readCommunity", "writeCommunity", "contact", "usePrimaryContact", "location", "useOwnerAddress",
                "name", "useRoomDevice", "trapTargets"},
               kPlace);
  DeviceAnswers merged = now;
  merged.isEnabled = SwitchMember(given, "enabled", kPlace);
  merged.communityRead.Set(Edit::Secret(given, "readCommunity", kPlace, Edit::All(now.communityRead.value)));
  merged.communityWrite.Set(Edit::Secret(given, "writeCommunity", kPlace, Edit::All(now.communityWrite.value)));
  merged.sysContact.Set(Edit::Text(given, "contact", kPlace, Edit::All(now.sysContact.value)));
  merged.usesPrimaryContact = SwitchMember(given, "usePrimaryContact", kPlace);
  merged.sysLocation.Set(Edit::Text(given, "location", kPlace, Edit::All(now.sysLocation.value)));
  merged.usesProjectOwnerAddress = SwitchMember(given, "useOwnerAddress", kPlace);
  merged.sysName.Set(Edit::Text(given, "name", kPlace, Edit::All(now.sysName.value)));
  merged.usesRoomDevice = SwitchMember(given, "useRoomDevice", kPlace);
  merged.trapTargets.Set(MergeTargets(Member(given, "trapTargets", kPlace), now.trapTargets.value));
  return merged;
}

}  // namespace devhost
