#ifndef DEVHOST_CONSOLE_TOKEN_H
#define DEVHOST_CONSOLE_TOKEN_H

#include <chrono>
#include <deque>
#include <string>
#include <string_view>

namespace devhost {

// The word that whoever uses the console has to know: 32 bytes from the system's source of random numbers, in hexadecimal.
class Token {
 public:
  // Throws std::system_error when the system has no random numbers.
  Token();

  const std::string& Text() const { return m_text; }
  // Whether `text` is the token. It takes as long for every text of the right length, however much of it is right.
  bool Is(std::string_view text) const;

 private:
  std::string m_text;
};

// Slows down whoever tries tokens. The right token is never kept waiting: otherwise a stranger could lock its owner out.
class TokenPause {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::size_t kFree = 10;  // wrong tokens in kMemory that are answered at once
  static constexpr std::chrono::seconds kMemory{60};
  static constexpr std::chrono::milliseconds kPause{1000};

  // Notes a wrong token. Returns how long its answer has to wait.
  std::chrono::milliseconds OnWrong(Clock::time_point now);

 private:
  std::deque<Clock::time_point> m_wrong;  // the last ones, at most kFree
};

}  // namespace devhost

#endif
