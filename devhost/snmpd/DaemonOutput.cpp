#include "devhost/snmpd/DaemonOutput.h"

#include <charconv>
#include <optional>
#include <set>
#include <utility>

#include "devhost/snmpd/LineCutter.h"

namespace devhost {

namespace {

constexpr std::string_view kExpected = "The separate port argument for sinks is deprecated";

// What stands behind ": line ", into `complaint`; false when it is not "N: Error: TEXT" or "N: Warning: TEXT".
bool ReadNumberAndText(std::string_view rest, Complaint& complaint) {
  const char* const end = rest.data() + rest.size();
  const auto [stop, error] = std::from_chars(rest.data(), end, complaint.line);
  rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
  for (const std::string_view kind : {": Error: ", ": Warning: "}) {
    if (error == std::errc() && rest.substr(0, kind.size()) == kind) {
      complaint.kind = kind.substr(2, kind.size() - 4);
      complaint.text = rest.substr(kind.size());
      return true;
    }
  }
  return false;
}

std::optional<Complaint> ReadComplaint(std::string_view line) {
  constexpr std::string_view kLine = ": line ";
  Complaint complaint;
  // A file's name may hold ": line ", too.
  for (std::size_t at = line.find(kLine); at != std::string_view::npos; at = line.find(kLine, at + 1)) {
    if (ReadNumberAndText(line.substr(at + kLine.size()), complaint)) {
      complaint.file = line.substr(0, at);
      return complaint;
    }
  }
  return std::nullopt;
}

}  // namespace

DaemonOutput ReadDaemonOutput(std::string_view output) {
  DaemonOutput result;
  std::set<std::string_view> seen;  // the daemon says some things twice
  for (LineCutter lines(output); lines.Next();) {
    const std::string_view line = lines.Line();
    std::optional<Complaint> complaint = ReadComplaint(line);
    if (!complaint && !line.empty()) {
      result.otherLines.emplace_back(line);
    } else if (complaint && complaint->text != kExpected && seen.insert(line).second) {
      result.complaints.push_back(std::move(*complaint));
    }
  }
  return result;
}

}  // namespace devhost
