#include "drivers/hostprobe/Promise.h"

namespace drivers {
namespace {

constexpr const char* kLoad = "load the probe, with a report in its configuration";
constexpr const char* kPartner = "load the module once more before the probe, under a higher id and without a report";
constexpr const char* kVariables = "give the project a variable and a user variable";
constexpr const char* kCommand = "send the command \"HostProbe\" with its parameters";
constexpr const char* kStop = "stop the host";

}  // namespace

const std::array<PromiseText, kPromiseCount>& AllPromises() {
  static constexpr std::array<PromiseText, kPromiseCount> kAll{{
      {Promise::XmlCreate, "xml-create", "CreateXmlNode makes an element with that name and text or number", kLoad},
      {Promise::XmlCreateEmpty, "xml-create-empty", "Create makes a node without name and value and leaves the old one",
       kLoad},
      {Promise::XmlRename, "xml-rename", "SetName and SetValue replace name and text", kLoad},
      {Promise::XmlNamed, "xml-named", "setting a named value replaces the one of exactly that name, or appends it", kLoad},
      {Promise::XmlChildren, "xml-children", "AddChildString and AddChildInt append; the first child of a name is read",
       kLoad},
      {Promise::XmlChild, "xml-child", "GetChild returns the child itself, or an empty handle", kLoad},
      {Promise::XmlWalk, "xml-walk", "GetChildren, First and Next visit every child in document order", kLoad},
      {Promise::XmlAppend, "xml-append", "AppendChild moves the child to the end and leaves the handle valid", kLoad},
      {Promise::XmlFamilies, "xml-families", "named values and named children are two families", kLoad},
      {Promise::XmlParse, "xml-parse", "CreateXmlDocument parses, and returns an empty handle for what is not XML", kLoad},
      {Promise::XmlTexts, "xml-texts", "texts are read as they were set, byte for byte", kLoad},
      {Promise::OwnerTree, "owner-tree", "a node with a handle outlives its tree, document and list", kLoad},
      {Promise::OwnerReferences, "owner-references", "AddRef and Release count", kLoad},
      {Promise::OwnerTexts, "owner-texts", "a name that is passed to a node is borrowed for the call", kLoad},
      {Promise::OwnerConfig, "owner-config", "a handle on the configuration stays valid after Initialize", kLoad},
      {Promise::ReaderBool, "reader-bool", "\"true\" and \"1\" read as true, everything else as false", kLoad},
      {Promise::ReaderNumber, "reader-number", "a decimal number of at most 32 bits is read, everything else as 0", kLoad},
      {Promise::ReaderAbsent, "reader-absent", "what is absent reads as false, 0 and the empty text", kLoad},
      {Promise::ReaderToString, "reader-tostring", "h7::ToString writes what the typed readers read", kLoad},
      {Promise::ReaderConfig, "reader-config", "the driver gets its configuration as the project has it",
       "add text, number and flag to the configuration of the probe"},
      {Promise::PublishBefore, "publish-before", "Query and FindDrivers find nothing before it is published", kLoad},
      {Promise::PublishFound, "publish-found", "RegisterQuery returns true, and Query returns exactly that pointer", kLoad},
      {Promise::PublishOnce, "publish-once", "a driver publishes an identifier once; the second try returns false", kLoad},
      {Promise::PublishNull, "publish-null", "RegisterQuery refuses a null identifier and a null instance", kLoad},
      {Promise::PublishCopied, "publish-copied", "the identifier is copied and compared as a text", kLoad},
      {Promise::PublishListed, "publish-listed", "FindDrivers replaces the content with what is published", kLoad},
      {Promise::PublishWithdrawn, "publish-withdrawn", "UnregisterQuery withdraws; without a publication it does nothing",
       kLoad},
      {Promise::PublishEarliest, "publish-earliest", "Query returns the earliest of several publications", kPartner},
      {Promise::PublishById, "publish-by-id", "FindDrivers orders by driver id", kPartner},
      {Promise::PublishOwn, "publish-own", "drivers share one directory, and withdraw only what they published", kPartner},
      {Promise::VariableList, "variable-list", "ListVariables replaces the text with an element for each variable",
       kVariables},
      {Promise::VariableFound, "variable-found", "FindVariable finds what is listed, by its ids, and nothing under 0",
       kVariables},
      {Promise::VariableName, "variable-name", "a variable has a name", kVariables},
      {Promise::VariableFlag, "variable-flag", "TrapEnabled is the flag itself", kVariables},
      {Promise::VariableUser, "variable-user", "variables and user variables are listed apart", kVariables},
      {Promise::EventProjectLoaded, "event-project-loaded", "OnProjectLoaded comes with its name", "load the project"},
      {Promise::EventItemRemoved, "event-item-removed", "OnItemRemoved comes with iditem and idroom",
       "remove a device from the project"},
      {Promise::EventVariableAdded, "event-variable-added", "OnVariableAdded comes with the ids of a variable that is found",
       "add a variable to the project"},
      {Promise::EventVariableRemoved, "event-variable-removed", "OnVariableRemoved comes with iddevice and idvariable",
       "remove a variable from the project"},
      {Promise::EventUserVariableAdded, "event-user-variable-added",
       "OnUserVariableAdded comes with the ids of a variable that is found", "add a user variable to the project"},
      {Promise::ListenerId, "listener-id", "a listener gets the events of its id and no others", "load the project"},
      {Promise::ListenerEnded, "listener-ended", "a listener that is unregistered gets no events", "load the project"},
      {Promise::ListenerInside, "listener-inside",
       "a listener may unregister itself while it is called; the others get the event", "load the project twice"},
      {Promise::CommandName, "command-name", "a command reaches the handler of exactly that name", kCommand},
      {Promise::CommandParameters, "command-parameters", "GetString and Has return a command's parameters", kCommand},
      {Promise::CommandNumbers, "command-numbers", "GetULong reads decimal numbers of at most 32 bits", kCommand},
      {Promise::NotifyBorrowed, "notify-borrowed", "ConSendDataToUI borrows the node", kLoad},
      {Promise::LogReturns, "log-returns", "LogXMessage takes a format as printf does, and never throws", kLoad},
      {Promise::NestedCalls, "nested-calls", "a driver that another one calls gets every service of the host", kPartner},
      {Promise::StateLater, "state-later", "GetPersistState is called when the current call has returned", kLoad},
      {Promise::StateAsked, "state-asked", "GetPersistState is called after DmInvalidateState, before the stop", kStop},
      {Promise::StateReturned, "state-returned", "the next life gets the state that GetPersistState returned",
       "stop the host, and start it again with the state that it has kept"},
      {Promise::LifeFirst, "life-first", "Initialize is the first call", kLoad},
      {Promise::LifeInitialize, "life-initialize", "the base's Initialize returns 0, and every Initialize has one id",
       kLoad},
      {Promise::LifeCommands, "life-commands", "RegisterCommands is called once, after Initialize", kStop},
      {Promise::LifeThread, "life-thread", "all calls come on one thread", kStop},
      {Promise::LifeManagers, "life-managers", "the managers are there from the construction to the destruction", kStop},
      {Promise::LifeHandlers, "life-handlers", "the handlers of commands are dropped before the driver is destroyed", kStop},
      {Promise::LifeReverse, "life-reverse", "drivers are destroyed in the reverse order of creation", kPartner},
      {Promise::LifeDestroyed, "life-destroyed", "drivers are destroyed before their module is unloaded", kStop},
  }};
  return kAll;
}

}  // namespace drivers
