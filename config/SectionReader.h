#ifndef CONFIG_SECTION_READER_H
#define CONFIG_SECTION_READER_H

#include <string>

class SNMPDevice;

namespace managed_section {

// Returns the lines inside all managed sections of `text`, in order, each with its line feed, which the last one may lack.
// The lines with the markers are not among them. A section that is not closed extends to the end of the text.
std::string LinesInside(const std::string& text);

// Fills settings that `device` does not hold yet from the managed sections of `text`, an snmpd.conf.
//
// A setting is filled only while the device's value is empty and its was-erased flag is false. The AgentX values are always
// taken from the file. A keyword counts anywhere in a line, even in a comment. Nothing is ever cleared, and nothing is
// reported. `text` may be the record's own, because it is no longer used when the first call reaches the device.
void Fill(const std::string& text, SNMPDevice& device);

}  // namespace managed_section

#endif
