#ifndef DRIVERS_COMMON_CONFIG_FILE_H
#define DRIVERS_COMMON_CONFIG_FILE_H

#include <cstddef>
#include <memory>
#include <string>

#include "drivers/common/FileCalls.h"

namespace drivers {

// The snmpd.conf in a device's folder, read and replaced whole, byte for byte. Statuses are those of
// drivers/common/FileStatus.h.
//
// Nobody ever sees half a file: the new text is written to a temporary file beside it, made durable, and then takes the
// place of the old one in one step. A process that dies in between leaves the old or the new file, and at most the
// temporary one, which the next write removes, unless another user has put it there.
// A symbolic link under the file's name is refused, so that nobody can point the agent at another file; only reading
// follows it, on request. Links on the way to the folder are followed.
class ConfigFile {
 public:
  // Far more than any snmpd.conf holds, and little enough for the memory.
  static constexpr std::size_t kMaximumSize = std::size_t{256} * 1024 * 1024;

  // `folder` need not exist yet. `calls` is replaced in tests.
  explicit ConfigFile(const std::string& folder, std::shared_ptr<FileCalls> calls = std::make_shared<FileCalls>());

  const std::string& GetFolder() const { return m_folder; }
  std::string GetPath() const;

  // Replaces `text` with the content of the file and returns 0, or a status, and leaves `text` as it is. A missing file
  // reads as the empty text: the device was never configured. These fail: a missing folder, a file of more than kMaximumSize
  // bytes, and a link that leads nowhere, even where links are followed.
  int Read(std::string& text, Links links = Links::Refuse) const;

  // Installs `text` and returns 0, or a status. The new file gets mode, owner and group of the old one, or mode 0600 when
  // there is none; where they cannot be kept nothing is replaced. The same goes for a file with an access list that says
  // more than its mode: the status is that of EPERM. The new file has no list, whatever the folder gives. On failure the old
  // file is whole and no temporary file is left. Only when the last step fails, which makes the change of names durable, is
  // the new text in place already. A text of more than kMaximumSize bytes could never be read again: kTextTooLarge.
  //
  // Writers exclude each other by a lock (WriterLock.h); the second one fails at once.
  int Replace(const std::string& text) const;

  // The same, but only where the file still holds `expected` (a missing file holds the empty text) or holds `text` already;
  // else kFileWasChanged. Writers that take no lock are noticed, too: the files are exchanged, and what came out is put back
  // when it is not what was expected. While anybody has the file open for writing, the status is that of EWOULDBLOCK. What
  // can be lost all the same is in docs/device-drivers.md.
  int ReplaceExpected(const std::string& expected, const std::string& text) const;

 private:
  struct Former;

  int Install(const std::string& text, const std::string* expected) const;
  int LookAtFormer(int folder, Former& former) const;
  int RefuseAccessList(int folder) const;
  int DropAccessList(int descriptor) const;
  int FindAccessList(int descriptor, bool& isFound) const;
  int RemoveLeftover(int folder, const Former& former) const;
  int CompareFile(int folder, const std::string& expected, const std::string& wanted) const;
  int CompareDisplaced(int folder, const std::string& expected, const std::string& wanted) const;
  int CompareOpened(int descriptor, const std::string& expected, const std::string& wanted) const;
  int RenameTemporary(int folder) const;
  int CompareAndRename(int folder, const std::string& expected, const std::string& wanted) const;
  int AddTemporary(int folder, const std::string& expected, const std::string& wanted) const;
  int ExchangeTemporary(int folder, const std::string& expected, const std::string& wanted, bool& isExchanged) const;
  int DropDisplaced(int folder, const std::string& expected, const std::string& wanted) const;
  void PutBack(int folder, const std::string& wanted) const;
  int ReadDisplaced(int folder, std::string& text) const;
  int WriteTemporary(int folder, const std::string& text, const Former& former) const;
  int FillTemporary(int descriptor, const std::string& text, const Former& former) const;
  int ReadOpened(int descriptor, std::string& text) const;
  int WriteAll(int descriptor, const std::string& text) const;
  int Sync(int descriptor) const;

  std::string m_folder;
  std::shared_ptr<FileCalls> m_calls;
};

}  // namespace drivers

#endif
