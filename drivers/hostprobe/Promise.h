#ifndef DRIVERS_HOSTPROBE_PROMISE_H
#define DRIVERS_HOSTPROBE_PROMISE_H

#include <array>
#include <cstddef>

namespace drivers {

// What the headers in host/ promise to a driver, one line of the report each, in the order of the report.
enum class Promise : std::size_t {
  XmlCreate,
  XmlCreateEmpty,
  XmlRename,
  XmlNamed,
  XmlChildren,
  XmlChild,
  XmlWalk,
  XmlAppend,
  XmlFamilies,
  XmlParse,
  XmlTexts,
  OwnerTree,
  OwnerReferences,
  OwnerTexts,
  OwnerConfig,
  ReaderBool,
  ReaderNumber,
  ReaderAbsent,
  ReaderToString,
  ReaderConfig,
  PublishBefore,
  PublishFound,
  PublishOnce,
  PublishNull,
  PublishCopied,
  PublishListed,
  PublishWithdrawn,
  PublishEarliest,
  PublishById,
  PublishOwn,
  VariableList,
  VariableFound,
  VariableName,
  VariableFlag,
  VariableUser,
  EventProjectLoaded,
  EventItemRemoved,
  EventVariableAdded,
  EventVariableRemoved,
  EventUserVariableAdded,
  ListenerId,
  ListenerEnded,
  ListenerInside,
  CommandName,
  CommandParameters,
  CommandNumbers,
  NotifyBorrowed,
  LogReturns,
  NestedCalls,
  StateLater,
  StateAsked,
  StateReturned,
  LifeFirst,
  LifeInitialize,
  LifeCommands,
  LifeThread,
  LifeManagers,
  LifeHandlers,
  LifeReverse,
  LifeDestroyed,
  Count
};

constexpr std::size_t kPromiseCount = static_cast<std::size_t>(Promise::Count);

struct PromiseText {
  Promise promise;
  const char* id;     // one word, stable
  const char* words;  // what is promised, with the operations concerned
  const char* needs;  // what the person with the host has to do, so that it is checked
};

// All promises, in the order of their numbers.
const std::array<PromiseText, kPromiseCount>& AllPromises();

}  // namespace drivers

#endif
