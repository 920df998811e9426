#include "devhost/console/HostLink.h"

#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "devhost/console/BoundedJson.h"

namespace devhost {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kBlock = std::size_t{64} * 1024;
constexpr std::size_t kComplaint = 4096;

std::int64_t MillisecondsSince1970() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// The last line in which this program complains. What drivers or their programs write there is not shown: nobody has masked
// it.
std::string LastComplaint(const std::string& errors) {
  constexpr std::string_view kOwn = "devhost: ";
  const std::size_t start = errors.rfind(kOwn);
  if (start == std::string::npos || (start != 0 && errors[start - 1] != '\n')) {
    return "";
  }
  return errors.substr(start + kOwn.size(), errors.find('\n', start) - start - kOwn.size());
}

// How a line ends in which the process that watches the host process says which call is under way.
constexpr std::string_view kHasNotReturned = " has not returned\n";

// A descriptor that is readable when the process has ended, as far as the system has it.
int OpenProcess([[maybe_unused]] pid_t pid) {
#ifdef SYS_pidfd_open
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
  return -1;
#endif
}

}  // namespace

HostLink::HostLink(std::string program, std::vector<std::string> words, Observer& observer)
    : m_program(std::move(program)),
      m_words(std::move(words)),
      m_observer(observer),
      m_poll(::epoll_create1(EPOLL_CLOEXEC)) {
  if (!m_poll.IsOpen()) {
    throw std::system_error(errno, std::generic_category(), "no descriptor to wait with");
  }
}

HostLink::~HostLink() = default;

void HostLink::Watch(int descriptor, std::uint32_t events, int operation) const {
  struct epoll_event event = {};
  event.events = events;
  event.data.fd = descriptor;
  ::epoll_ctl(m_poll.Get(), operation, descriptor, &event);
}

void HostLink::Start() {
  if (m_process) {
    return;
  }
  m_isUp = m_isOver = m_startsAgain = m_hasFailed = false;
  m_deadline.reset();
  m_reason.clear();
  m_received.clear();
  m_seen = 0;
  m_unsent.clear();
  m_complaint.clear();
  EndWork();
  m_askForCall = Clock::now() + kLong;
  try {
    m_process = std::make_unique<HostProcess>(m_program, m_words);
  } catch (const std::system_error& error) {
    m_reason = error.what();
    m_exitStatus = 1;
    FailAll();
    m_observer.OnState();
    return;
  }
  Watch(m_process->Input(), 0, EPOLL_CTL_ADD);
  Watch(m_process->Output(), EPOLLIN, EPOLL_CTL_ADD);
  Watch(m_process->Errors(), EPOLLIN, EPOLL_CTL_ADD);
  m_end = FileDescriptor(OpenProcess(m_process->Pid()));
  if (m_end.IsOpen()) {
    Watch(m_end.Get(), EPOLLIN, EPOLL_CTL_ADD);
  }
  m_observer.OnState();
}

void HostLink::Restart(Clock::time_point now) {
  if (!m_process) {
    Start();
    return;
  }
  BeginEnd(now, "it is being started again");
  m_startsAgain = true;
}

void HostLink::Stop(Clock::time_point now) {
  BeginEnd(now, "the console is being ended");
}

void HostLink::BeginEnd(Clock::time_point now, const char* reason) {
  m_startsAgain = false;
  if (!m_process) {
    return;
  }
  m_reason = m_reason.empty() || m_deadline ? reason : m_reason;
  if (!m_deadline) {
    m_deadline = now + kGrace;
    m_process->CloseInput();
  }
  FailAll();
}

// Whoever waits for a restart, or for the end, has no use for the advice.
HttpAnswer HostLink::EndedAnswer(unsigned status) const {
  const std::string message = m_process && m_deadline
                                  ? "the host process does not answer any more: " + m_reason
                                  : "the host process has ended" + (m_reason.empty() ? "" : ": " + m_reason) +
                                        "; POST /host/restart starts it again";
  return ErrorAnswer(status, "host-ended", message);
}

void HostLink::Kill() {
  if (m_process) {
    m_process->Kill();
  }
}

std::uint64_t HostLink::Ask(Question question, Reply reply) {
  if ((!m_process || m_isOver || m_deadline) && !m_startsAgain) {
    reply(EndedAnswer(409));
    return 0;
  }
  m_waiting.push_back({++m_lastNumber, std::move(question), std::move(reply)});
  const std::uint64_t number = m_lastNumber;
  SendNext();
  return number;
}

void HostLink::Drop(std::uint64_t number) {
  if (m_current && m_current->number == number) {
    m_current->reply = nullptr;
    return;
  }
  const auto found = std::find_if(m_waiting.begin(), m_waiting.end(),
                                  [number](const Waiting& waiting) { return waiting.number == number; });
  if (found != m_waiting.end()) {
    m_waiting.erase(found);
  }
}

void HostLink::SendNext() {
  if (!m_isUp || m_isOver || m_deadline || m_current || m_waiting.empty()) {
    return;
  }
  m_current = std::move(m_waiting.front());
  m_waiting.pop_front();
  m_current->since = MillisecondsSince1970();
  m_askForCall = Clock::now() + kLong;
  const Question& question = m_current->question;
  m_unsent = "{\"id\":" + std::to_string(m_current->number) + ",\"method\":" + Json(question.method).dump() +
             ",\"path\":" + Json(question.path).dump() + "," + question.rest + "}\n";
  Write();
}

void HostLink::Write() {
  while (!m_unsent.empty() && m_process->Input() >= 0) {
    const ssize_t count = ::write(m_process->Input(), m_unsent.data(), m_unsent.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      break;  // the pipe is full, or its reader has gone, which shows elsewhere
    }
    m_unsent.erase(0, static_cast<std::size_t>(count));
  }
  if (m_process->Input() >= 0) {
    const std::uint32_t wanted = EPOLLOUT;
    Watch(m_process->Input(), m_unsent.empty() || m_isOver ? 0 : wanted, EPOLL_CTL_MOD);
  }
}

void HostLink::Work() {
  std::array<struct epoll_event, 4> events{};
  const int count = ::epoll_wait(m_poll.Get(), events.data(), static_cast<int>(events.size()), 0);
  bool mayHaveEnded = false;
  for (int i = 0; i < count && m_process; ++i) {
    const struct epoll_event& event = events[static_cast<std::size_t>(i)];
    if (event.data.fd == m_process->Errors()) {
      ReadErrors();
    } else if (event.data.fd == m_process->Output()) {
      ReadLines();
    } else if (event.data.fd == m_process->Input() && (event.events & EPOLLERR) != 0) {
      // Its reader has gone. Nothing more can be asked, and its end is seen by the others.
      Watch(m_process->Input(), 0, EPOLL_CTL_DEL);
    } else if (event.data.fd == m_process->Input()) {
      Write();
    } else {
      mayHaveEnded = true;
    }
  }
  // What it has written last is read first.
  if (mayHaveEnded && m_process && count == 1) {
    SeeEnd();
  }
}

void HostLink::Tick(Clock::time_point now) {
  if (m_process && m_deadline && now >= *m_deadline) {
    m_reason = "it did not stop and was killed" + (m_longCall.empty() ? "" : "; " + m_longCall + " had not returned");
    m_process->Kill();
  }
  if (m_process && m_askForCall && now >= *m_askForCall) {
    m_askForCall.reset();
    m_process->AskForCall();
  }
  if (m_process && (m_isOver || !m_end.IsOpen())) {
    SeeEnd();
  }
}

void HostLink::ReadErrors() {
  std::array<char, kComplaint> block{};
  const ssize_t count = ::read(m_process->Errors(), block.data(), block.size());
  if (count > 0) {
    const std::string_view text(block.data(), static_cast<std::size_t>(count));
    m_complaint.append(text);
    m_complaint.erase(0, m_complaint.size() - std::min(m_complaint.size(), kComplaint));
    m_observer.OnErrors(text);
    FindLongCall();
  } else if (count == 0) {
    Watch(m_process->Errors(), 0, EPOLL_CTL_DEL);
  }
}

// A line that says which call is under way. It is not how the process has ended.
void HostLink::FindLongCall() {
  const std::size_t end = m_complaint.rfind(kHasNotReturned);
  const std::string call = end == std::string::npos ? "" : LastComplaint(m_complaint.substr(0, end));
  if (call.empty()) {
    return;
  }
  m_complaint.erase(0, end + kHasNotReturned.size());
  // A driver may write such lines, too, as often as it likes.
  if (m_longCall.empty() && (m_current || !m_isUp)) {
    m_longCall = call;
    m_observer.OnState();
  }
}

// What was under way is over, and it did not hang.
void HostLink::EndWork() {
  m_askForCall.reset();
  m_longCall.clear();
}

void HostLink::ReadLines() {
  std::array<char, kBlock> block{};
  const ssize_t count = ::read(m_process->Output(), block.data(), block.size());
  if (count < 0) {
    return;
  }
  if (count == 0) {
    Watch(m_process->Output(), 0, EPOLL_CTL_DEL);
    if (!m_isOver && !m_deadline) {
      // It may be about to end by itself; a process without an output is of no use.
      m_isOver = true;
      m_process->CloseInput();
      m_deadline = Clock::now() + kGrace;
    }
    return;
  }
  m_received.append(block.data(), m_isOver ? 0 : static_cast<std::size_t>(count));
  std::size_t start = 0;
  std::size_t end = m_received.find('\n', m_seen);
  while (end != std::string::npos && !m_isOver) {
    TakeLine(std::string_view(m_received).substr(start, end - start));
    start = end + 1;
    end = m_received.find('\n', start);
  }
  m_received.erase(0, m_isOver ? m_received.size() : start);
  m_seen = m_received.size();
  if (m_seen > kLongestLine) {
    Break("it wrote a line of more than 16 MiB");
  }
}

void HostLink::TakeLine(std::string_view line) {
  Json json = ParseBounded(line, kLineLevels);
  if (!json.is_object()) {
    Break("it wrote a line that is not a JSON object, or nests too deep");
  } else if (json.size() == 1 && json.contains("event") && json["event"].is_object() && json["event"].contains("kind") &&
             json["event"]["kind"].is_string()) {
    m_observer.OnEvent(json["event"]);
  } else if (json.size() == 1 && json.contains("ready")) {
    m_isUp = true;
    EndWork();
    m_observer.OnState();
    SendNext();
  } else if (json.size() == 1 && json.contains("failed") && json["failed"].is_string()) {
    m_hasFailed = true;
    m_reason = json["failed"].get<std::string>();
  } else {
    TakeAnswer(json);
  }
}

void HostLink::TakeAnswer(const Json& line) {
  const bool isWhole = line.size() == 3 && line.contains("id") && line["id"].is_number_unsigned() &&
                       line.contains("status") && line["status"].is_number_unsigned() && line.contains("body");
  const std::uint64_t status = isWhole ? line["status"].get<std::uint64_t>() : 0;
  if (!isWhole || status < 200 || status > 599) {
    Break("it wrote a line that is neither an answer nor an event");
    return;
  }
  // What was under way when it was asked to stop was answered for it.
  if (m_deadline) {
    return;
  }
  if (!m_current || line["id"].get<std::uint64_t>() != m_current->number || !m_unsent.empty()) {
    Break("it answered what nobody had asked");
    return;
  }
  EndWork();
  const Waiting done = std::move(*m_current);
  m_current.reset();
  if (done.reply) {
    done.reply({static_cast<unsigned>(status), line["body"].dump(-1, ' ', false, Json::error_handler_t::replace)});
  }
  SendNext();
}

void HostLink::Break(const std::string& why) {
  m_reason = why + ", and was killed";
  m_isOver = true;
  m_received.clear();
  m_seen = 0;
  m_process->Kill();
}

void HostLink::SeeEnd() {
  if (!m_process->HasEnded()) {
    return;
  }
  const std::string complaint = LastComplaint(m_complaint);
  const bool wasAsked = m_deadline && !m_isOver;
  if (!wasAsked && m_reason.empty() && !m_hasFailed) {
    m_reason = complaint.empty() ? m_process->HowItEnded() : complaint;
  } else if (wasAsked && m_process->ExitStatus() != 0 && !complaint.empty()) {
    m_reason = complaint;  // a state was not kept, for example
  }
  m_exitStatus = m_process->ExitStatus();
  EndWork();
  m_end.Close();
  m_process.reset();
  m_isUp = false;
  if (m_startsAgain) {
    Start();
    return;
  }
  FailAll();
  m_observer.OnState();
}

void HostLink::FailAll() {
  std::deque<Waiting> waiting = std::exchange(m_waiting, {});
  if (m_current) {
    waiting.push_front(std::move(*m_current));
    m_current.reset();
  }
  for (const Waiting& one : waiting) {
    if (one.reply) {
      one.reply(EndedAnswer(503));
    }
  }
}

HostLink::State HostLink::GetState() const {
  if (!m_process) {
    return m_startsAgain ? State::Starting : State::Ended;
  }
  if (!m_isUp || m_startsAgain) {
    return State::Starting;
  }
  return m_current ? State::Busy : State::Up;
}

std::optional<HostLink::Job> HostLink::CurrentJob() const {
  if (!m_current) {
    return std::nullopt;
  }
  return Job{m_current->question.method, m_current->question.path, m_current->since};
}

}  // namespace devhost
