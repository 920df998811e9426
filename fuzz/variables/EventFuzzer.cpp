// Sends any XML as a system event, twice, in a project with two variables.
#include "devhost/xml/XmlReader.h"
#include "fuzz/agent/Twins.h"
#include "fuzz/support/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using fuzz::Operation;
  Operation operation;
  operation.text = fuzz::Input(data, size).Rest();
  try {
    devhost::ReadXmlNode(operation.text);
  } catch (const devhost::XmlError&) {
    return 0;
  }
  const std::string event = operation.text;

  fuzz::Twins twins;
  twins.Start(
      R"(<SNMPState><variables><variable deviceid="3" variableid="5" snmpTrapEnabled="true"/></variables></SNMPState>)");
  operation.kind = Operation::Kind::AddVariable;
  for (const unsigned long id : {3UL, 4UL}) {
    operation.id = id;
    operation.secondId = 5;
    operation.text = "lamp" + std::to_string(id);
    twins.Play(operation);
  }
  operation.kind = Operation::Kind::SetList;
  operation.text =
      R"(<v><v deviceid="3" variableid="5"/><v deviceid="4" variableid="5"/><v deviceid="9" variableid="9"/></v>)";
  twins.Play(operation);
  operation.flag = true;
  operation.text = R"(<v><v deviceid="4" variableid="5"/></v>)";
  twins.Play(operation);

  operation.kind = Operation::Kind::Event;
  operation.number = 5;
  for (const std::string& text : {event, std::string(R"(<e name="OnProjectLoaded"/>)"), event, event}) {
    operation.text = text;
    twins.Play(operation);
  }
  operation.kind = Operation::Kind::Persist;
  twins.Play(operation);
  return 0;
}
