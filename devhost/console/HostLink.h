#ifndef DEVHOST_CONSOLE_HOST_LINK_H
#define DEVHOST_CONSOLE_HOST_LINK_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devhost/console/HostProcess.h"
#include "devhost/console/HttpRequest.h"
#include "devhost/system/FileDescriptor.h"

namespace devhost {

// The conversation with the host process: one JSON object a line, one request at a time. It does not trust the host process,
// in which code of drivers runs: what is too long, not JSON or not an answer to what was asked ends that process. It never
// waits; whoever owns it calls Work and Tick.
class HostLink {
 public:
  using Clock = std::chrono::steady_clock;

  enum class State { Starting, Up, Busy, Ended };

  // A request for the host process.
  struct Question {
    std::string method;
    std::string path;  // without kApiPrefix
    std::string rest;  // the other members of the line, from the first name to the last value: "query":{},...
  };
  // The question that the host process works on.
  struct Job {
    std::string method;
    std::string path;
    std::int64_t since;  // milliseconds since 1970
  };
  using Reply = std::function<void(HttpAnswer)>;

  // Hears what comes from the host process. Must not destroy the link, and not throw.
  class Observer {
   public:
    virtual ~Observer() = default;
    // An event, an object with the text "kind".
    virtual void OnEvent(nlohmann::ordered_json& event) = 0;
    // The process is starting, up or has ended, or hangs in a call; not for each job.
    virtual void OnState() = 0;
    // What it has written to standard error.
    virtual void OnErrors(std::string_view text) = 0;
  };

  static constexpr std::size_t kLongestLine = std::size_t{16} * 1024 * 1024;
  static constexpr std::chrono::seconds kGrace{30};  // from the end of its input until the process is killed
  static constexpr std::chrono::seconds kLong{10};   // a job or a start that takes longer may hang

  // `program` and `words` as for HostProcess. Nothing is started yet.
  HostLink(std::string program, std::vector<std::string> words, Observer& observer);
  ~HostLink();
  HostLink(const HostLink&) = delete;
  HostLink& operator=(const HostLink&) = delete;

  // Starts the process, unless it runs. Where the system does not start it, the state is Ended with the reason.
  void Start();
  // Asks the process to stop, and starts it again then; one that has ended is started at once.
  void Restart(Clock::time_point now);
  // Asks the process to stop. It keeps its states; it is killed when that takes longer than kGrace.
  void Stop(Clock::time_point now);
  // Kills it at once.
  void Kill();

  // Puts a question behind those that wait, and returns its number. The reply comes once, later: with 503 when the process
  // ends before it has answered. When the process has ended already, 409, at once, and the number is 0.
  std::uint64_t Ask(Question question, Reply reply);
  // Nobody waits for the reply any more: the question is not sent, if it was not, and the reply is not called.
  void Drop(std::uint64_t number);

  // Readable when there is something to do for Work. Borrowed.
  int Descriptor() const { return m_poll.Get(); }
  // Reads and writes what can be without waiting, but not more than a block: others want to be served as well.
  void Work();
  // To be called about once a second.
  void Tick(Clock::time_point now);

  State GetState() const;
  // Why the process has ended, or is being stopped; "" while all is well.
  const std::string& Reason() const { return m_reason; }
  // Whether the process has said itself that the project could not be started, and with which exit status it ended then.
  bool HasFailed() const { return m_hasFailed; }
  int ExitStatus() const { return m_exitStatus; }
  // The call into a driver that a job or start of more than kLong is in, as CopyFrom of driver 12 "kitchen"; "" for none.
  const std::string& LongCall() const { return m_longCall; }
  // What it works on, if it does.
  std::optional<Job> CurrentJob() const;

 private:
  struct Waiting {
    std::uint64_t number;
    Question question;
    Reply reply;
    std::int64_t since = 0;
  };

  void Watch(int descriptor, std::uint32_t events, int operation) const;
  void ReadErrors();
  void FindLongCall();
  void EndWork();
  void BeginEnd(Clock::time_point now, const char* reason);
  HttpAnswer EndedAnswer(unsigned status) const;
  void ReadLines();
  void TakeLine(std::string_view line);
  void TakeAnswer(const nlohmann::ordered_json& line);
  void SendNext();
  void Write();
  void Break(const std::string& why);
  void SeeEnd();
  void FailAll();

  const std::string m_program;
  const std::vector<std::string> m_words;
  Observer& m_observer;
  FileDescriptor m_poll;
  FileDescriptor m_end;  // readable when the process has ended; closed on a system that has no such thing
  std::unique_ptr<HostProcess> m_process;
  bool m_isUp = false;
  bool m_isOver = false;  // nothing that comes counts any more
  bool m_startsAgain = false;
  bool m_hasFailed = false;
  int m_exitStatus = 0;
  std::optional<Clock::time_point> m_deadline;
  std::string m_reason;
  std::string m_received;
  std::size_t m_seen = 0;  // so much of it holds no line feed
  std::string m_unsent;
  std::string m_complaint;                        // the end of what came on standard error
  std::optional<Clock::time_point> m_askForCall;  // when the job or the start has taken long
  std::string m_longCall;
  std::uint64_t m_lastNumber = 0;
  std::deque<Waiting> m_waiting;
  std::optional<Waiting> m_current;
};

}  // namespace devhost

#endif
