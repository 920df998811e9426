#include "drivers/sshsnmpd/RemoteScripts.h"

#include <cerrno>
#include <system_error>

#include "drivers/common/FileStatus.h"
#include "drivers/sshsnmpd/SshStatus.h"

namespace drivers {

namespace {

// Exit statuses of the programs, for what they find out themselves.
const int kExitLink = 41;
const int kExitNotRegular = 42;
const int kExitChanged = 43;
const int kExitTooLarge = 44;
const int kExitNoFolder = 45;
const int kExitDenied = 46;
const int kExitIncomplete = 47;
const int kExitOwner = 48;

// Reading through a link is harmless, and a link that leads nowhere is not a missing file.
const char kRead[] = R"sh(LC_ALL=C
export LC_ALL
file=$1
folder=${file%/*}/
[ -d "$folder" ] || exit 45
[ -x "$folder" ] || exit 46
if [ ! -e "$file" ]; then
  [ -h "$file" ] && exit 41
  echo "$3"
  exit 0
fi
[ -f "$file" ] || exit 42
[ -r "$file" ] || exit 46
[ "$(($(wc -c <"$file")))" -le "$2" ] || exit 44
echo "$3"
exec cat "$file"
)sh";

// A file with an access list has a "+" behind its mode. A folder's list for new files sets the umask aside, so it is looked
// for before a secret is written. When the line breaks, standard input ends early and the sizes do not match. Names of
// temporary files hold a token, so a program that hangs behind a dead line and goes on later finds its files gone, not those
// of another one.
const char kReplace[] = R"sh(LC_ALL=C
export LC_ALL
umask 077
set -C
file=$1 new_size=$3 expected_size=$4
folder=${file%/*}/
stem=$folder.${file##*/}.new.
both=$stem$2.in
new=$stem$2.out
[ -d "$folder" ] || exit 45
[ -x "$folder" ] || exit 46
for old in "$stem"*; do
  [ -f "$old" ] && rm -f "$old"
done
trap "rm -f \"\$both\" \"\$new\"" EXIT
trap "exit 47" HUP INT PIPE TERM
true >"$both" || exit 1
case $(ls -lnd "$both") in ??????????+*) exit 48 ;; esac
cat >>"$both" || exit 1
[ "$(($(wc -c <"$both")))" -eq "$((new_size + expected_size))" ] || exit 47
set -f
expected() {
  tail -c "+$((new_size + 1))" "$both"
}
digits=
add_digit() {
  digit=0
  case $1 in r*) digit=4 ;; esac
  case $1 in ?w*) digit=$((digit + 2)) ;; esac
  case $1 in ??x*) digit=$((digit + 1)) ;; esac
  digits=$digits$digit
}
flush() {
  sync "$1" 2>/dev/null || sync
}
[ -h "$file" ] && exit 41
if [ ! -e "$file" ]; then
  [ "$expected_size" -eq 0 ] || exit 43
  head -c "$new_size" "$both" >"$new" || exit 1
  flush "$new" || exit 1
  ln "$new" "$file" || { [ -e "$file" ] && exit 43; exit 1; }
  flush "$folder"
  exit 0
fi
[ -f "$file" ] || exit 42
[ -r "$file" ] || exit 46
head -c "$new_size" "$both" >"$new" || exit 1
cmp -s "$new" "$file" && exit 0
set -- $(ls -lnd "$file")
case $1 in *+) exit 48 ;; esac
mode=${1%[.@]} owner=$3:$4
set -- $(ls -lnd "$new")
[ "$3:$4" = "$owner" ] || chown "$owner" "$new" 2>/dev/null || exit 48
bits=${mode#?}
add_digit "$bits"
add_digit "${bits#???}"
add_digit "${bits#??????}"
chmod "$digits" "$new" || exit 48
set -- $(ls -lnd "$new")
[ "${1%[.@]} $3:$4" = "$mode $owner" ] || exit 48
flush "$new" || exit 1
[ -h "$file" ] && exit 41
expected | cmp -s - "$file" || exit 43
mv -f "$new" "$file" || exit 1
flush "$folder"
exit 0
)sh";

// A shell's word that stands for `word`.
std::string Quote(const std::string& word) {
  std::string quoted = "'";
  for (const char character : word) {
    quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return quoted + "'";
}

std::vector<std::string> Program(const char* script, std::vector<std::string> arguments) {
  // The word after the script is the name by which the shell calls itself in messages.
  std::vector<std::string> words = {"sh", "-c", script, "sh"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return words;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The status of the system's error that a program has complained about.
int StatusOfComplaint(std::string complaint) {
  while (!complaint.empty() && complaint.back() == '\n') {
    complaint.pop_back();
  }
  for (const int error : {ENOSPC, EROFS, EACCES, EPERM, EDQUOT, EIO, ENOENT, EFBIG, ENOTDIR}) {
    if (EndsWith(complaint, std::generic_category().message(error))) {
      return FileStatusOfErrno(error);
    }
  }
  return kControllerUnfit;
}

}  // namespace

std::string QuoteWords(const std::vector<std::string>& words) {
  std::string command;
  for (const std::string& word : words) {
    command += (command.empty() ? "" : " ") + Quote(word);
  }
  return command;
}

std::vector<std::string> ReadProgram(const std::string& path, std::size_t most, const std::string& token) {
  return Program(kRead, {path, std::to_string(most), token});
}

std::vector<std::string> ReplaceProgram(const std::string& path, const std::string& token, std::size_t newSize,
                                        std::size_t expectedSize) {
  return Program(kReplace, {path, token, std::to_string(newSize), std::to_string(expectedSize)});
}

int StatusOfProgram(const SshResult& result) {
  switch (result.exitStatus) {
    case 0:
      return 0;
    case kExitLink:
      return kFileIsSymbolicLink;
    case kExitNotRegular:
      return kFileIsNotRegular;
    case kExitChanged:
      return kFileWasChanged;
    case kExitTooLarge:
      return FileStatusOfErrno(EFBIG);
    case kExitNoFolder:
      return FileStatusOfErrno(ENOENT);
    case kExitDenied:
      return FileStatusOfErrno(EACCES);
    case kExitIncomplete:
      return FileStatusOfErrno(EIO);
    case kExitOwner:
      return FileStatusOfErrno(EPERM);
    default:
      return StatusOfComplaint(result.errors);
  }
}

}  // namespace drivers
