#include "devhost/snmpd/NearName.h"

#include <algorithm>
#include <vector>

namespace devhost {

namespace {

constexpr char kBeyond = '\x80';
// Longer words are something else.
constexpr std::size_t kLongest = 64;

std::size_t MostSteps(std::string_view name) {
  return name.size() < 4 ? 0 : name.size() <= 5 ? 1 : 2;
}

// Without counting all of them: this decides about nearly every name for every word of a file.
bool AreMoreThan(std::size_t count, NearName::Letters letters) {
  for (; count != 0 && letters != 0; --count) {
    letters &= letters - 1;  // without the lowest
  }
  return letters != 0;
}

// Every character of such a word would stand for any letter, and every word would be like every other.
bool IsOtherScript(std::string_view word) {
  return std::all_of(word.begin(), word.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 && byte <= 0xED && byte != 0xE1 && byte != 0xE2;
  });
}

}  // namespace

NearName::NearName(std::string_view word) {
  if (IsOtherScript(word)) {
    return;
  }
  m_text.reserve(word.size());
  for (const char c : word) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      m_text += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    } else if (byte >= 0xC0) {
      m_text += kBeyond;
      ++m_beyond;
    }
  }
  m_letters = LettersOf(m_text);
}

NearName::Letters NearName::LettersOf(std::string_view name) {
  Letters letters = 0;
  for (const char c : name) {
    if (c != kBeyond) {
      letters |= Letters{1} << (static_cast<unsigned char>(c) % 32U);
    }
  }
  return letters;
}

std::size_t NearName::DistanceTo(std::string_view name, Letters letters) const {
  const std::size_t most = MostSteps(name);
  const bool isFar = m_text.size() > kLongest || m_text.size() + most < name.size() ||
                     m_text.size() - m_beyond > name.size() + most || AreMoreThan(most + m_beyond, letters & ~m_letters) ||
                     AreMoreThan(most, m_letters & ~letters);
  const std::size_t distance = isFar ? kFar : Distance(name);
  return distance <= most ? distance : kFar;
}

std::size_t NearName::Distance(std::string_view name) const {
  std::vector<std::size_t> before(name.size() + 1);
  std::vector<std::size_t> last(name.size() + 1);
  std::vector<std::size_t> row(name.size() + 1);
  for (std::size_t at = 0; at <= name.size(); ++at) {
    last[at] = at;
  }
  for (std::size_t i = 1; i <= m_text.size(); ++i) {
    const char letter = m_text[i - 1];
    const std::size_t step = letter == kBeyond ? 0 : 1;
    row[0] = last[0] + step;
    for (std::size_t j = 1; j <= name.size(); ++j) {
      row[j] = std::min({last[j] + step, row[j - 1] + 1, last[j - 1] + (letter == name[j - 1] ? 0 : step)});
      if (i > 1 && j > 1 && letter == name[j - 2] && m_text[i - 2] == name[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before.swap(last);
    last.swap(row);
  }
  return last[name.size()];
}

}  // namespace devhost
