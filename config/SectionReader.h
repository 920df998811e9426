#ifndef CONFIG_SECTION_READER_H
#define CONFIG_SECTION_READER_H

#include <string>

class SNMPDevice;

namespace managed_section {

// The lines inside all managed sections of `text`, in order, each with its line feed (the last one perhaps without). The
// lines that hold the markers are not among them. A section that is not closed runs to the end of the text.
std::string LinesInside(const std::string& text);

// Fills settings that `device` does not hold yet from the managed sections of `text`, an snmpd.conf.
//
// A setting is filled only while the device's value is empty and its was-erased flag is false. The AgentX values are taken
// from the file always. Keywords are looked for anywhere in a line, in comments too. Nothing is ever cleared and nothing
// reported. `text` is not used any more once the first call reaches the device, so it may be the record's own.
void Fill(const std::string& text, SNMPDevice& device);

}  // namespace managed_section

#endif
