#include "tests/e2e/SnmpClient.h"

#include <ostream>
#include <sstream>
#include <stdexcept>

#include "devhost/system/RunProgram.h"

namespace e2e {
namespace {

// Time-outs in seconds. A long one costs nothing when an answer comes.
constexpr char kPatient[] = "10";
constexpr char kImpatient[] = "0.2";

// Returns the bytes of a text such as "41 64 61 ", which may have several lines.
std::string FromHex(const std::string& text) {
  std::istringstream digits(text);
  std::string bytes;
  unsigned int byte = 0;
  while (digits >> std::hex >> byte) {
    bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

std::string Trimmed(const std::string& text) {
  const std::size_t end = text.find_last_not_of(" \n");
  return end == std::string::npos ? std::string() : text.substr(0, end + 1);
}

// Reads the text behind " = ": "Hex-STRING: 41 42", "INTEGER: 5", "\"\"", "No Such Object available on this agent at this
// OID".
Answer ReadValue(const std::string& text) {
  if (text.rfind("No Such ", 0) == 0) {
    return {"", text.rfind("No Such Object", 0) == 0 ? "noSuchObject" : "noSuchInstance"};
  }
  if (Trimmed(text) == "\"\"") {
    return {};
  }
  const std::size_t colon = text.find(": ");
  if (colon == std::string::npos) {
    throw std::runtime_error("a value of an unknown type: " + text);
  }
  const std::string value = text.substr(colon + 2);
  return {text.compare(0, colon, "Hex-STRING") == 0 ? FromHex(value) : Trimmed(value), ""};
}

// The line of an object begins with its identifier. A long value continues in the next lines.
std::map<std::string, Answer> ReadObjects(const std::string& output) {
  std::map<std::string, std::string> texts;
  std::istringstream lines(output);
  std::string line;
  std::string* last = nullptr;
  while (std::getline(lines, line)) {
    const std::size_t equals = line.find(" = ");
    if (line.rfind(".1.", 0) == 0 && equals != std::string::npos) {
      last = &(texts[line.substr(0, equals)] = line.substr(equals + 3));
    } else if (last != nullptr) {
      *last += "\n" + line;
    }
  }
  std::map<std::string, Answer> objects;
  for (const auto& [object, text] : texts) {
    objects.emplace(object, ReadValue(text));
  }
  return objects;
}

Answer ReadAnswer(const std::string& object, const std::string& output) {
  const std::string reason = "Reason: ";
  const std::size_t at = output.find(reason);
  if (at != std::string::npos) {
    const std::size_t begin = at + reason.size();
    return {"", output.substr(begin, output.find_first_of(" (\n", begin) - begin)};
  }
  if (output.rfind("Timeout: No Response", 0) == 0) {
    return {"", "timeout"};
  }
  const std::map<std::string, Answer> objects = ReadObjects(output);
  const auto found = objects.find(object);
  if (found == objects.end()) {
    throw std::runtime_error("no answer for " + object + " in: " + output);
  }
  return found->second;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
  return stream << "value \"" << answer.value << "\" error \"" << answer.error << "\"";
}

Answer SnmpClient::Get(const std::string& object) const {
  return ReadAnswer(object, Run("snmpget", kPatient, {object}));
}

Answer SnmpClient::GetNothing(const std::string& object) const {
  return ReadAnswer(object, Run("snmpget", kImpatient, {object}));
}

Answer SnmpClient::Set(const std::string& object, const std::string& type, const std::string& value) const {
  return ReadAnswer(object, Run("snmpset", kPatient, {object, type, value}));
}

std::map<std::string, std::string> SnmpClient::Walk(const std::string& object) const {
  std::map<std::string, std::string> values;
  for (const auto& [name, answer] : ReadObjects(Run("snmpwalk", kPatient, {object}))) {
    values.emplace(name, answer.value);
  }
  return values;
}

std::string SnmpClient::Run(const std::string& program, const std::string& patience,
                            const std::vector<std::string>& words) const {
  devhost::ProgramRun run;
  run.words = {devhost::FindProgram(program)};
  if (run.words[0].empty()) {
    throw std::runtime_error(program + " is missing: install the package snmp");
  }
  // Names are numeric, without MIB files. Strings are always hexadecimal, so that no byte is lost.
  for (const std::string& word : {std::string("-v2c"), std::string("-c"), m_community, std::string("-t"), patience,
                                  std::string("-r"), std::string("0"), std::string("-m"), std::string(), std::string("-M"),
                                  std::string(), std::string("-OnxUe"), m_address}) {
    run.words.push_back(word);
  }
  run.words.insert(run.words.end(), words.begin(), words.end());
  return devhost::RunProgram(run).output;
}

}  // namespace e2e
