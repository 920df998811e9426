#include "devhost/operations/IncludedParts.h"

#include <cstddef>
#include <vector>

#include "devhost/check/CheckFile.h"
#include "devhost/check/Includes.h"
#include "devhost/system/FileText.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

std::string PathOf(const Target& target, const std::string& file) {
  const XmlElement config = ReadXml(target.chosen.device.configXml);
  const std::string* const folder = config.FindAttribute("folder");
  // What the driver could not read may be a pipe, for which nobody should wait.
  if (folder == nullptr || file.empty()) {
    return "";
  }
  const std::string path = PathIn(*folder, "snmpd.conf");
  try {
    return ReadFileText(path) == file ? path : "";
  } catch (const FileError&) {
    return "";
  }
}

std::string UnreadParts(const std::string& file, const std::string& path) {
  CheckMeans means;
  means.circumstances.path = path;
  const std::vector<Finding> findings = path.empty() ? std::vector<Finding>() : CheckText(file, path, means).findings;
  for (const Finding& finding : findings) {
    if (finding.rule == "include-not-read") {
      return finding.file + ":" + std::to_string(finding.line) + ": " + finding.reason + ": what is in there is not judged";
    }
  }
  std::size_t first = 0;
  ForEachLine(
      file, [&first](const ConfigLine& line) { first = first == 0 && FindInclude(line) != nullptr ? line.number : first; });
  return first == 0 || !path.empty()
             ? ""
             : "line " + std::to_string(first) +
                   " of the file has the daemon read other files, which cannot be read from here: what is in there is not "
                   "judged";
}

}  // namespace devhost
