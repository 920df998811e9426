#include "devhost/console/Token.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace devhost {

Token::Token() {
  std::array<unsigned char, 32> bytes{};
  // A read of at most 256 bytes is never cut short.
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw std::system_error(errno, std::generic_category(), "no random numbers for the token");
  }
  constexpr char kDigits[] = "0123456789abcdef";
  for (const unsigned char byte : bytes) {
    m_text.push_back(kDigits[byte >> 4U]);
    m_text.push_back(kDigits[byte & 15U]);
  }
}

bool Token::Is(std::string_view text) const {
  if (text.size() != m_text.size()) {
    return false;
  }
  // Volatile keeps the compiler from leaving the loop at the first difference.
  volatile unsigned char difference = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    difference = static_cast<unsigned char>(difference | (text[i] ^ m_text[i]));
  }
  return difference == 0;
}

std::chrono::milliseconds TokenPause::OnWrong(Clock::time_point now) {
  while (!m_wrong.empty() && now - m_wrong.front() >= kMemory) {
    m_wrong.pop_front();
  }
  if (m_wrong.size() < kFree) {
    m_wrong.push_back(now);
    return std::chrono::milliseconds::zero();
  }
  m_wrong.pop_front();
  m_wrong.push_back(now);
  return kPause;
}

}  // namespace devhost
