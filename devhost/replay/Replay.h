#ifndef DEVHOST_REPLAY_REPLAY_H
#define DEVHOST_REPLAY_REPLAY_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/replay/LineDifference.h"

namespace devhost {

// The files of a recorded conversation, in one folder.
inline constexpr char kConversationFile[] = "conversation.ndjson";
inline constexpr char kConversationProject[] = "project.xml";

struct ReplayResult {
  std::size_t lines = 0;      // that came as expected, up to the first difference
  std::size_t line = 0;       // of the file, where the first difference is
  LineDifference difference;  // its `what` is "" when there is none
};

// The conversations that a path names: a file, the file of a folder, or those of the folders in it, in alphabetical order.
// Throws FileError when there is none.
std::vector<std::string> FindConversations(const std::string& path);

// Plays the side of the tool, and of the people at the devices, of a recorded conversation to the drivers of the project
// beside it, and compares what comes of it up to the first difference. Works on a copy of the folder, which is removed.
// `secrets` decides what the result shows, and learns. Throws ConversationError, ProjectError, FileError and HostError for
// what cannot be played, and std::system_error when there is no place for the copy.
ReplayResult Replay(const std::string& file, const std::string& moduleFolder, Masker& secrets);

}  // namespace devhost

#endif
