#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

h7::auto_com<H7XML::INode> StateMemory::Load(unsigned long driverId) {
  const auto found = m_states.find(driverId);
  return found == m_states.end() ? h7::auto_com<H7XML::INode>() : ReadXmlNode(found->second);
}

void StateMemory::Save(unsigned long driverId, const std::string& xml) {
  if (xml.empty()) {
    m_states.erase(driverId);
  } else {
    m_states[driverId] = xml;
  }
}

}  // namespace devhost
