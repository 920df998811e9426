#ifndef CONFIG_MANAGED_SECTION_H
#define CONFIG_MANAGED_SECTION_H

#include <string>

// The managed section of a device's snmpd.conf: the block that the agent owns. docs/managed-section.md describes it.
namespace managed_section {

// The lines that contain these texts open and close the section.
extern const char kStartMarker[];
extern const char kEndMarker[];

// The path that is passed to every device together with the text of its file.
extern const std::string kWorkingPath;

// The section's fixed blocks of comment, in the order in which they are written.
struct Texts {
  std::string header;
  std::string accessControl;
  std::string agentMode;
  std::string hostMonitoring;
  std::string systemInformation;
  std::string trapDestinations;
  std::string trailer;
};

Texts FixedTexts();

}  // namespace managed_section

#endif
