#include "devhost/session/Channel.h"

#include <nlohmann/json.hpp>

#include "devhost/report/JsonWriter.h"
#include "devhost/report/Reporter.h"

namespace devhost {

using nlohmann::ordered_json;

namespace {

void Cut(std::string& text) {
  if (text.size() > Channel::kLongestText) {
    text = text.substr(0, Channel::kLongestText) + " ... (" + std::to_string(text.size()) + " bytes)";
  }
}

}  // namespace

void Channel::Event(const Occurrence& occurrence) {
  Occurrence shown = Masked(occurrence, m_secrets);
  Cut(shown.text);
  for (auto& parameter : shown.parameters) {
    Cut(parameter.second);
  }
  Event(OccurrenceObject(shown));
}

void Channel::Event(const ordered_json& event) {
  Write({{"event", event}});
}

void Channel::Answer(const nlohmann::json& id, int status, const ordered_json& body) {
  Write({{"id", id}, {"status", status}, {"body", body}});
}

void Channel::Refuse(const nlohmann::json& id, int status, const std::string& code, const std::string& message) {
  Answer(id, status, {{"error", {{"code", code}, {"message", message}}}});
}

void Channel::Ready() {
  Write({{"ready", true}});
}

void Channel::Failed(const std::string& reason) {
  Write({{"failed", reason}});
}

void Channel::Write(const ordered_json& line) {
  m_output.Write(line.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

}  // namespace devhost
