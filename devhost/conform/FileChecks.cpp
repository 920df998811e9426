// Group "file": CopyFrom and CopyTo.
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr int kLater = -9;
constexpr char kGoesOffLine[] = "goes-off-line";

std::string RandomBytes(Trial& trial, std::size_t size) {
  std::string bytes;
  bytes.reserve(size);
  while (bytes.size() != size) {
    bytes += static_cast<char>(trial.random() & 0xFFU);
  }
  return bytes;
}

std::string CopyOut(Device& device) {
  std::string text = "nothing was copied out";
  const int status = device.CopyFrom(text);
  Expect(status == 0, "CopyFrom returned " + std::to_string(status) + " for a text that CopyTo has installed", "CopyFrom");
  return text;
}

// As the agent: it copies the file out before it copies one in.
int Install(Device& device, const std::string& text) {
  std::string old;
  device.CopyFrom(old);
  return device.CopyTo(text);
}

// Throws Blocked unless an ordinary text can be installed and read back: file-round is about that.
void NeedsAFile(Device& device) {
  const std::string problem = GiveAFile(device);
  if (!problem.empty()) {
    throw Blocked(problem + ": see file-round");
  }
}

void GivesBackTheSameBytes(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    const int status = Install(device, kOrdinaryText);
    if (status == kLater) {
      throw Blocked("CopyTo returned -9 for an ordinary text: see file-later");
    }
    Expect(status == 0, "CopyTo returned " + std::to_string(status) + " for an ordinary text", "CopyTo");
    const std::vector<std::string> texts = {"",
                                            "no last line feed",
                                            "\n",
                                            "two\r\nlines\r\n",
                                            " \t blanks \n",
                                            std::string("a\0b\n", 4),
                                            RandomBytes(trial, 1U << 20U)};
    std::string expected = kOrdinaryText;
    for (const std::string& text : texts) {
      // What a device cannot hold it refuses, and keeps what it had.
      expected = Install(device, text) == 0 ? text : expected;
      Expect(CopyOut(device) == expected,
             "CopyTo returned 0 for " + Quoted(text.substr(0, 40)) + ", and CopyFrom gave other bytes", "CopyTo");
    }
  });
}

void BorrowsTheText(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    NeedsAFile(device);
    const std::string text = "sysName " + trial.RandomText(64) + "\n";
    std::string lent = text;
    std::string old;
    device.CopyFrom(old);
    const int status = device.CopyTo(lent);
    lent.assign(lent.size(), '?');
    Expect(status != 0 || CopyOut(device) == text, "the text of CopyTo was used after the call had returned", "CopyTo");
  });
}

void KeepsItForLater(Bench& bench, Device& device, const Profile::Commands& commands, const std::string& text) {
  bench.SendCommand(commands.out);
  const int status = Install(device, text);
  bench.SendCommand(commands.back);
  std::string found;
  Expect(device.CopyFrom(found) != kLater, "CopyFrom returned -9 when the device was back on line", "CopyFrom");
  Expect(status != kLater || found == text,
         "CopyTo returned -9, and the text was not there when the device was back on line", "CopyTo");
}

void KeepsForLaterOnlyWhatItClaims(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    std::string text;
    const bool mayBeLater = trial.profile.claims.count(kGoesOffLine) != 0;
    Expect(device.CopyFrom(text) != kLater || mayBeLater, "CopyFrom returned -9", "CopyFrom");
    Expect(device.CopyTo(kOrdinaryText) != kLater || mayBeLater, "CopyTo returned -9", "CopyTo");
    if (mayBeLater && !trial.profile.claims.at(kGoesOffLine).out.empty()) {
      KeepsItForLater(bench, device, trial.profile.claims.at(kGoesOffLine), "sysName " + trial.RandomText() + "\n");
    }
  });
}

using Files = std::map<std::string, std::string>;

// The regular files of a folder, by name.
Files FilesIn(const std::string& folder) {
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      std::ifstream file(entry.path(), std::ios::binary);
      files[entry.path().filename().string()] =
          std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
  }
  return files;
}

// While one of these lives, CopyTo cannot work.
class NoFolder {
 public:
  explicit NoFolder(const std::string& folder) : m_folder(folder) { std::filesystem::rename(m_folder, m_folder + ".away"); }
  ~NoFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
    std::filesystem::rename(m_folder + ".away", m_folder, ignored);
  }
  NoFolder(const NoFolder&) = delete;
  NoFolder& operator=(const NoFolder&) = delete;

 private:
  const std::string m_folder;
};

// A process that may write no large file stands in for a disk that is full.
class NoSpace {
 public:
  static constexpr rlim_t kSpace = 4096;

  NoSpace() : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_limit);
    const rlimit little = {kSpace, m_limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &little);
  }
  ~NoSpace() {
    ::setrlimit(RLIMIT_FSIZE, &m_limit);
    std::signal(SIGXFSZ, m_handler);
  }
  NoSpace(const NoSpace&) = delete;
  NoSpace& operator=(const NoSpace&) = delete;

 private:
  rlimit m_limit = {};
  void (*const m_handler)(int);
};

void ExpectFailure(int status, const std::string& folder, const Files& before, const std::string& when) {
  Expect(status != 0, "CopyTo returned 0 " + when, "CopyTo");
  Expect(FilesIn(folder) == before, "CopyTo failed " + when + ", and the folder is not as it was", "CopyTo");
}

void LeavesTheOldFileWhenItFails(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    NeedsAFile(device);
    const std::string folder = bench.FolderOf(Bench::kDevice);
    const Files before = FilesIn(folder);
    int status = 0;
    {
      const NoFolder noFolder(folder);
      status = device.TryCopyTo("# a new text\n");
    }
    ExpectFailure(status, folder, before, "without its folder");
    {
      const NoSpace noSpace;
      status = device.TryCopyTo(std::string(4 * NoSpace::kSpace, '#'));
    }
    ExpectFailure(status, folder, before, "on a full disk");
  });
}

// The file of the device, which holds an ordinary text. Throws Blocked where there is none in the folder.
std::string FindOrdinaryFile(const std::string& folder) {
  for (const auto& [name, text] : FilesIn(folder)) {
    if (text == kOrdinaryText) {
      return folder + "/" + name;
    }
  }
  throw Blocked("no file in the folder of the device holds what CopyTo has installed, and the profile claims local-file");
}

void KeepsTheModeOfItsFile(Trial& trial) {
  using std::filesystem::perms;
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    NeedsAFile(device);
    const std::string folder = bench.FolderOf(Bench::kDevice);
    const std::filesystem::path file = FindOrdinaryFile(folder);
    const auto mode = [&file] { return std::filesystem::status(file).permissions() & perms::mask; };
    Expect((mode() & ~perms(0640)) == perms::none, "the file is open to everybody", "CopyTo");
    for (const perms old : {perms(0600), perms(0640)}) {
      std::filesystem::permissions(file, old);
      Install(device, kOrdinaryText);
      Expect(mode() == old, "CopyTo has changed the mode of the file", "CopyTo");
    }
  });
}

void LeavesTheFileToOthers(Trial& trial) {
  const std::string text = "# by hand\nsysName " + trial.RandomText(64) + "\n";
  std::string file;
  const auto holdsText = [&] {
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()) == text;
  };
  {
    Bench bench(trial);
    bench.ActOnDevice([&](Device& device) {
      NeedsAFile(device);
      file = FindOrdinaryFile(bench.FolderOf(Bench::kDevice));
      std::ofstream(file, std::ios::binary) << text;
      Expect(CopyOut(device) == text, "CopyFrom does not give what somebody else has written into the file", "CopyFrom");
    });
  }
  Expect(holdsText(), "the file has changed when the driver was destroyed", "destructor");
  Bench bench(trial);
  bench.Load();
  Expect(holdsText(), "the file has changed when the next driver was initialised", "Initialize");
}

}  // namespace

std::vector<Check> FileChecks() {
  return {
      {"file-later", Severity::Contract, Level::Basic, "",
       "A status is -9 only when the profile claims goes-off-line, and the text is there later.",
       "-9 says that the device cannot be reached now and keeps the text for later. The agent then reports success. A "
       "device\n"
       "that has no later uses another number. With commands in the claim, the device is taken off line, gets a text, and "
       "is\n"
       "brought back.",
       &KeepsForLaterOnlyWhatItClaims},
      {"file-round", Severity::Contract, Level::Basic, "", "CopyFrom gives the bytes that CopyTo has installed.",
       "The agent keeps the text around its section byte for byte. A device that cannot hold a text returns a status other\n"
       "than 0 and keeps the old one. Tried with an empty text, no last line feed, CR LF, NUL, and 1 MiB of random bytes.",
       &GivesBackTheSameBytes},
      {"file-text-borrowed", Severity::Contract, Level::Basic, "",
       "The text that CopyTo gets is used only until it returns.",
       "It is the agent's own text, which changes with the next call. Copy it.", &BorrowsTheText},
      {"file-failure", Severity::Contract, Level::Full, "local-file",
       "A CopyTo that fails returns a status other than 0 and leaves the folder as it was.",
       "Tried without the folder, and on a full disk. Write a new file beside the old one, and rename it when it is whole.",
       &LeavesTheOldFileWhenItFails},
      {"file-mode", Severity::Practice, Level::Full, "local-file",
       "The file is not open to everybody, and keeps the mode that somebody has given it.",
       "It holds communities. 0600 and 0640 are good modes for a new one.", &KeepsTheModeOfItsFile},
      {"file-kept", Severity::Contract, Level::Full, "local-file",
       "CopyFrom reads the file as it is, and only CopyTo changes it.",
       "People edit it, too, and the agent keeps what they wrote. Keep no copy of it, and leave it alone when the driver\n"
       "starts and ends.",
       &LeavesTheFileToOthers},
  };
}

}  // namespace devhost
