// The least that a change of a file on controllers over SSH can cost: for each of them one process, one connection, one
// command that reads the file and one that replaces it.
//
//   ssh_floor KEY KNOWN_HOSTS USER WORD HOST:PORT:FILE...
//
// Puts "sysContact WORD" in the place of the file's last line. Without a WORD, the files are only read.
#include <libssh/libssh.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

[[noreturn]] void Fail(const std::string& what, ssh_session session) {
  std::fprintf(stderr, "%s: %s\n", what.c_str(), ::ssh_get_error(session));
  std::exit(1);
}

std::string Run(ssh_session session, const std::string& command, const std::string& input) {
  const ssh_channel channel = ::ssh_channel_new(session);
  if (channel == nullptr || ::ssh_channel_open_session(channel) != SSH_OK ||
      ::ssh_channel_request_exec(channel, command.c_str()) != SSH_OK) {
    Fail(command, session);
  }
  if (!input.empty()) {
    ::ssh_channel_write(channel, input.data(), static_cast<std::uint32_t>(input.size()));
  }
  ::ssh_channel_send_eof(channel);
  std::string output;
  char part[32768];
  for (int count = 0; (count = ::ssh_channel_read(channel, part, sizeof part, 0)) > 0;) {
    output.append(part, static_cast<std::size_t>(count));
  }
  if (::ssh_channel_get_exit_status(channel) != 0) {
    Fail(command, session);
  }
  ::ssh_channel_free(channel);
  return output;
}

void Serve(char** arguments, const std::string& target) {
  const std::size_t first = target.find(':');
  const std::size_t second = target.find(':', first + 1);
  const std::string host = target.substr(0, first);
  const std::string port = target.substr(first + 1, second - first - 1);
  const std::string file = target.substr(second + 1);
  const std::string word = arguments[4];
  const ssh_session session = ::ssh_new();
  const int yes = 1;
  const int no = 0;
  ::ssh_options_set(session, SSH_OPTIONS_PROCESS_CONFIG, &no);
  ::ssh_options_set(session, SSH_OPTIONS_HOST, host.c_str());
  ::ssh_options_set(session, SSH_OPTIONS_PORT_STR, port.c_str());
  ::ssh_options_set(session, SSH_OPTIONS_KNOWNHOSTS, arguments[2]);
  ::ssh_options_set(session, SSH_OPTIONS_USER, arguments[3]);
  ::ssh_options_set(session, SSH_OPTIONS_NODELAY, &yes);
  if (::ssh_connect(session) != SSH_OK || ::ssh_session_is_known_server(session) != SSH_KNOWN_HOSTS_OK) {
    Fail(target, session);
  }
  ssh_key key = nullptr;
  if (::ssh_pki_import_privkey_file(arguments[1], nullptr, nullptr, nullptr, &key) != SSH_OK ||
      ::ssh_userauth_publickey(session, nullptr, key) != SSH_AUTH_SUCCESS) {
    Fail(target, session);
  }
  std::string text = Run(session, "cat '" + file + "'", "");
  if (!word.empty()) {
    const std::size_t last = text.empty() ? 0 : text.rfind('\n', text.size() - 2) + 1;
    text.replace(last, std::string::npos, "sysContact " + word + "\n");
    Run(session, "cat >'" + file + ".new' && sync '" + file + ".new' && mv -f '" + file + ".new' '" + file + "'", text);
  }
  ::ssh_disconnect(session);
  ::ssh_key_free(key);
  ::ssh_free(session);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 6) {
    std::fputs("usage: ssh_floor KEY KNOWN_HOSTS USER WORD HOST:PORT:FILE...\n", stderr);
    return 2;
  }
  std::vector<pid_t> children;
  for (int i = 5; i < count; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      Serve(arguments, arguments[i]);
      std::exit(0);
    }
    children.push_back(child);
  }
  int failed = 0;
  for (const pid_t child : children) {
    int status = 0;
    failed += ::waitpid(child, &status, 0) == child && status == 0 ? 0 : 1;
  }
  return failed == 0 ? 0 : 1;
}
