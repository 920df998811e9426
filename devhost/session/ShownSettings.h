#ifndef DEVHOST_SESSION_SHOWN_SETTINGS_H
#define DEVHOST_SESSION_SHOWN_SETTINGS_H

#include <nlohmann/json_fwd.hpp>

#include "devhost/preview/DeviceAnswers.h"
#include "devhost/secrets/Masker.h"

namespace devhost {

// The settings of a device as the page gets them; their secrets are learnt first. A community says only whether it is set.
// Any other text that cannot be shown, because it is or may be a secret, has the member `hidden` and no value: an edit keeps
// it without having seen it.
nlohmann::ordered_json ShownSettings(const DeviceAnswers& answers, Masker& secrets);

// The settings that an edit asks for: those of `now`, with what the edit has in their place. What is secret in the edit is
// learnt before anything else is said about it. Throws RequestError for an edit that is not whole, or that keeps what there
// is not.
DeviceAnswers MergeEdit(const nlohmann::json& edit, const DeviceAnswers& now, Masker& secrets);

}  // namespace devhost

#endif
