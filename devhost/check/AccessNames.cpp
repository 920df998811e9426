#include "devhost/check/AccessNames.h"

#include <algorithm>
#include <iterator>

namespace devhost {

namespace {

using Kind = AccessLine::Kind;

template <typename Container, typename Accept>
std::vector<AccessNames::Use> Selected(const Container& items, Accept accept) {
  std::vector<AccessNames::Use> selected;
  for (const auto& item : items) {
    if (accept(item)) {
      selected.push_back({item.line, item.name});
    }
  }
  return selected;
}

}  // namespace

void AccessNames::Add(const AccessLine& access, std::size_t line) {
  if ((!access.problem.empty() && !access.isTakenAnyway) || ++m_lines > kMostLines) {
    return;
  }
  for (const std::string& view : access.views) {
    m_usedViews.push_back({line, view});
  }
  if (access.kind == Kind::View) {
    m_views.insert(access.name);
  } else if (access.kind == Kind::Name) {
    m_names.insert(access.name);
    m_definedNames.push_back({line, access.name});
  } else if (access.kind == Kind::Member) {
    m_groups.insert(access.group);
    m_members.push_back({line, access.name, access.group, access.isOfCommunities});
  } else if (access.kind == Kind::Rights) {
    m_rights.insert(access.group);
    m_usedGroups.push_back({line, access.group});
  }
}

std::vector<AccessNames::Use> AccessNames::MissingViews() const {
  return m_lines > kMostLines ? std::vector<Use>()
                              : Selected(m_usedViews, [this](const Use& use) { return m_views.count(use.name) == 0; });
}

std::vector<AccessNames::Use> AccessNames::MissingGroups() const {
  return m_lines > kMostLines ? std::vector<Use>()
                              : Selected(m_usedGroups, [this](const Use& use) { return m_groups.count(use.name) == 0; });
}

std::vector<AccessNames::Use> AccessNames::MissingNames() const {
  return m_lines > kMostLines ? std::vector<Use>() : Selected(m_members, [this](const Member& member) {
    return member.isOfCommunities && m_names.count(member.name) == 0;
  });
}

std::vector<AccessNames::Use> AccessNames::Powerless() const {
  if (m_lines > kMostLines) {
    return {};
  }
  Names powerful;
  for (const Member& member : m_members) {
    if (member.isOfCommunities && m_rights.count(member.group) != 0) {
      powerful.insert(member.name);
    }
  }
  std::vector<Use> powerless =
      Selected(m_definedNames, [&powerful](const Use& defined) { return powerful.count(defined.name) == 0; });
  const std::vector<Use> users = Selected(
      m_members, [this](const Member& member) { return !member.isOfCommunities && m_rights.count(member.group) == 0; });
  powerless.insert(powerless.end(), users.begin(), users.end());
  return powerless;
}

bool AccessNames::IsLetIn(const Member& member) const {
  return m_rights.count(member.group) != 0 && (!member.isOfCommunities || m_names.count(member.name) != 0);
}

bool AccessNames::LetSomebodyIn() const {
  return m_lines > kMostLines ||
         std::any_of(m_members.begin(), m_members.end(), [this](const Member& member) { return IsLetIn(member); });
}

}  // namespace devhost
