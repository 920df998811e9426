#include <unistd.h>

#include "devhost/check/Advice.h"
#include "devhost/commands/CheckCommand.h"
#include "devhost/commands/PrintFindings.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

int RunAdvise(const AdviseOptions& options, Output& out, Output& errors) {
  const bool isInput = options.settings == "-";
  const std::string name = isInput ? "standard input" : options.settings;
  try {
    const std::string settings = isInput ? ReadDescriptorText(STDIN_FILENO, name) : ReadFileText(name);
    return PrintFindings(Advise(settings, name, options.showSecrets), name, options.json, out) ? 1 : 0;
  } catch (const FileError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
  } catch (const XmlError& error) {
    errors.Write("devhost: " + OneLine(name) + ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column()) +
                 ": the settings are no well-formed XML: " + OneLine(error.what()) + "\n");
  }
  return 2;
}

}  // namespace devhost
