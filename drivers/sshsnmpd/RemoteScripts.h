#ifndef DRIVERS_SSHSNMPD_REMOTE_SCRIPTS_H
#define DRIVERS_SSHSNMPD_REMOTE_SCRIPTS_H

#include <cstddef>
#include <string>
#include <vector>

#include "drivers/sshsnmpd/SshConnection.h"

// What runs on the controller: small programs for a POSIX shell, of a busybox, too. All that comes from outside is an
// argument or standard input, and no secret is an argument.
namespace drivers {

// `words` as a command for a shell, which takes each word as it is.
std::string QuoteWords(const std::vector<std::string>& words);

// The words that run the program which prints the file at `path`: first a line that holds `token`, since start files of a
// shell may print something before it, then the file. A missing file is empty.
std::vector<std::string> ReadProgram(const std::string& path, std::size_t most, const std::string& token);

// The words that run the program which replaces the file at `path`. It reads the new text and then the expected one,
// together `newSize` and `expectedSize` bytes, from its standard input. The new text is complete, has the old one's mode and
// owner (0600 where there is no file) and is on the disk before it takes the old one's place in one step, and only where the
// file holds the expected text, or holds the new one already. No temporary file is left, and those of writers that were
// killed are removed. `token` makes the names of the temporary files unique.
std::vector<std::string> ReplaceProgram(const std::string& path, const std::string& token, std::size_t newSize,
                                        std::size_t expectedSize);

// The status for the result of either program: 0, one of drivers/common/FileStatus.h, or kControllerUnfit.
int StatusOfProgram(const SshResult& result);

}  // namespace drivers

#endif
