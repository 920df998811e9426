// Takes any XML as the state that the host kept, applies it to the variables of a project, and writes the state again.
#include "devhost/xml/XmlReader.h"
#include "fuzz/agent/Twins.h"
#include "fuzz/support/Input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using fuzz::Operation;
  const std::string state = fuzz::Input(data, size).Rest();
  try {
    devhost::ReadXmlNode(state);
  } catch (const devhost::XmlError&) {
    return 0;
  }

  fuzz::Twins twins;
  twins.Start(state);
  Operation operation;
  operation.kind = Operation::Kind::AddVariable;
  for (const unsigned long id : {0UL, 1UL, 2UL, 4294967295UL}) {
    operation.id = id;
    operation.secondId = 1;
    operation.text = "lamp" + std::to_string(id);
    twins.Play(operation);
  }
  operation.kind = Operation::Kind::SetList;
  operation.text = R"(<v><v deviceid="0" variableid="1"/><v deviceid="1" variableid="1"/><v deviceid="2" variableid="1"/>)"
                   R"(<v deviceid="4294967295" variableid="1"/></v>)";
  twins.Play(operation);
  operation.kind = Operation::Kind::Event;
  operation.number = 5;
  operation.text = R"(<e name="OnProjectLoaded"/>)";
  twins.Play(operation);
  operation.kind = Operation::Kind::Restart;
  twins.Play(operation);
  return 0;
}
