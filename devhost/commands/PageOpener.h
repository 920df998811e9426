#ifndef DEVHOST_COMMANDS_PAGE_OPENER_H
#define DEVHOST_COMMANDS_PAGE_OPENER_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

#include "devhost/commands/Console.h"
#include "devhost/console/TokenFile.h"

namespace devhost {

// Opens the page of the console in the user's browser, with xdg-open. Every user of the machine can read command lines, so
// the address with its token is on none: what is opened is a file that only this user can read, and it leads to the address.
class PageOpener {
 public:
  // Complains where the page cannot be opened; the console runs nevertheless.
  PageOpener(const std::string& address, Console& console);
  // Removes the file, if it is still there. The browser stays.
  ~PageOpener();
  PageOpener(const PageOpener&) = delete;
  PageOpener& operator=(const PageOpener&) = delete;

  // To be called about once a second: removes the file after a minute.
  void Tick();

 private:
  void Remove();

  std::string m_folder;
  std::optional<TokenFile> m_file;
  pid_t m_program = -1;
  std::chrono::steady_clock::time_point m_end;
};

}  // namespace devhost

#endif
