#include "devhost/secrets/Masker.h"

#include "devhost/secrets/SecretPlaces.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Returns whether the parameter `name` is a community, or the value of a setting that is one.
bool IsSecret(const std::string& name, const Parameters& parameters) {
  if (name != "value") {
    return IsSecretSetting(name);
  }
  for (const auto& [other, value] : parameters) {
    if (other == "name" && IsSecretSetting(value)) {
      return true;
    }
  }
  return false;
}

}  // namespace

void Masker::Learn(const Parameters& parameters) {
  if (m_showSecrets) {
    return;
  }
  for (const auto& [name, value] : parameters) {
    if (IsSecret(name, parameters)) {
      LearnQuoted(m_known, value);
    } else {
      m_known.LearnFromXml(value);
    }
  }
}

void Masker::LearnFromXml(std::string_view xml) {
  if (!m_showSecrets) {
    m_known.LearnFromXml(xml);
  }
}

void Masker::LearnFromConfig(std::string_view text) {
  if (!m_showSecrets) {
    m_known.LearnFromConfig(text);
  }
}

void Masker::LearnFromCommandLine(const std::vector<std::string>& words) {
  for (const std::string& secret : SecretsInCommandLine(words)) {
    LearnQuoted(m_known, secret);
  }
}

std::string Masker::Text(std::string_view text) const {
  return m_showSecrets ? std::string(text) : m_known.Mask(text);
}

std::string Masker::Secret(const std::string& text) const {
  return m_showSecrets || text.empty() ? text : kMask;
}

std::string Masker::Xml(const std::string& xml) const {
  if (m_showSecrets) {
    return xml;
  }
  // The reason of a failure is a message.
  return xml.compare(0, 5, "<Fail") == 0 ? m_known.Mask(xml) : MaskXml(xml);
}

std::string Masker::ConfigText(std::string_view text) const {
  return m_showSecrets ? std::string(text) : MaskConfigText(text);
}

Parameters Masker::CommandParameters(const Parameters& parameters) const {
  Parameters shown = parameters;
  for (auto& [name, value] : shown) {
    if (!m_showSecrets) {
      value = IsSecret(name, parameters) ? Secret(value) : m_known.Mask(value);
    }
  }
  return shown;
}

std::string Masker::CommandLine(const std::vector<std::string>& words) const {
  std::string line;
  for (const std::string& word : m_showSecrets ? words : MaskCommandLine(words)) {
    line += (line.empty() ? "" : " ") + AsWord(line.empty() || m_showSecrets ? word : m_known.Mask(word));
  }
  // A secret with blanks may be spread over several words.
  return m_showSecrets ? line : m_known.MaskKnown(line);
}

void LearnQuoted(KnownSecrets& secrets, std::string_view secret) {
  secrets.Learn(secret);
  secrets.Learn(OneLine(secret));
  if (secret.size() > kMostQuoted) {
    secrets.Learn(OneLine(secret.substr(0, kMostQuoted)));
  }
}

bool IsSecretSetting(std::string_view name) {
  return name.find("ommunity") != std::string_view::npos;
}

}  // namespace devhost
