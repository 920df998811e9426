#include "devhost/engine/DriverCode.h"

#include <cstddef>

namespace devhost {
namespace {

// Of the process, because what is called at its end takes no argument.
std::atomic<DriverCode*> s_first{nullptr};

}  // namespace

DriverCode::DriverCode(const DriverModule& module, const std::string& title)
    : m_range(module.Range()), m_title(title), m_shared("one of the drivers of module \"" + module.Path() + "\"") {
  if (!m_range.IsEmpty()) {
    m_next = s_first.load();
    s_first = this;
  }
}

DriverCode::~DriverCode() {
  for (std::atomic<DriverCode*>* link = &s_first; *link != nullptr; link = &link->load()->m_next) {
    if (*link == this) {
      *link = m_next.load();
      return;
    }
  }
}

void DriverCode::Name(const void* code, char* name, std::size_t size) noexcept {
  const std::string* found = nullptr;
  for (const DriverCode* each = s_first; each != nullptr; each = each->m_next) {
    if (each->m_range.Holds(code)) {
      found = found == nullptr ? &each->m_title : &each->m_shared;
    }
  }
  std::size_t length = 0;
  while (found != nullptr && length + 1 < size && length < found->size()) {
    name[length] = (*found)[length];
    ++length;
  }
  name[length] = '\0';
}

bool DriverCode::IsLoaded() noexcept {
  return s_first != nullptr;
}

}  // namespace devhost
