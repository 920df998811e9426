#ifndef DEVHOST_REPLAY_CONVERSATION_H
#define DEVHOST_REPLAY_CONVERSATION_H

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/project/DriverNames.h"
#include "devhost/script/Script.h"

namespace devhost {

// A conversation that cannot be replayed, in one line: "FILE:LINE: what is wrong; what is allowed".
class ConversationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One line of a conversation: something that the world outside did, or that came of it.
struct ConversationLine {
  std::size_t number = 0;        // in its file, counted from 1
  std::string json;              // the line as it is compared
  std::optional<Action> action;  // what has to be played for it; nothing where it has to come by itself
};

// A recorded conversation: what `devhost run --json --show-secrets` has printed, one object a line.
struct Conversation {
  std::string file;  // for messages
  std::vector<ConversationLine> lines;
};

// Reads a conversation; lines that are not compared are left out. `folder` is an absolute path, which reads as {project}.
// Throws ConversationError, also for what a replay does not play: a program, or a change of the project's variables.
Conversation ReadConversation(const std::string& file, const std::string& text, const DriverNames& names,
                              const std::string& folder);

// A line of JsonWriter as it is compared, or "" when it is not: without what differs from run to run, and with {project} for
// that folder and {time} for the time of a managed section.
std::string ComparedLine(const std::string& json, const std::string& folder);

}  // namespace devhost

#endif
