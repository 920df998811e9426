#include "devhost/console/Routes.h"

#include <algorithm>
#include <cstddef>

namespace devhost {

namespace {

constexpr std::size_t kLongestNumber = 10;

// Takes the part in front of the next slash off the path.
std::string_view NextSegment(std::string_view& path) {
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string_view segment = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return segment;
}

bool IsNumber(std::string_view segment) {
  return !segment.empty() && segment.size() <= kLongestNumber &&
         segment.find_first_not_of("0123456789") == std::string_view::npos;
}

bool Matches(std::string_view pattern, std::string_view path, std::vector<std::string>& numbers) {
  if (std::count(pattern.begin(), pattern.end(), '/') != std::count(path.begin(), path.end(), '/')) {
    return false;
  }
  numbers.clear();
  while (!pattern.empty()) {
    const std::string_view wanted = NextSegment(pattern);
    const std::string_view segment = NextSegment(path);
    if (!wanted.empty() && wanted.front() == '{') {
      if (!IsNumber(segment)) {
        return false;
      }
      numbers.emplace_back(segment);
    } else if (segment != wanted) {
      return false;
    }
  }
  return path.empty();
}

}  // namespace

const std::vector<Route>& Routes() {
  using A = Access;
  using By = Answerer;
  static const std::vector<Route> routes = {
      {"GET", "/session", A::Read, By::Front, "what this console is, and how its host process is"},
      {"POST", "/host/restart", A::Try, By::Front, "stop the host process and start it again"},
      {"GET", "/events", A::Read, By::Front, "everything that happens, as it happens"},
      {"GET", "/activity", A::Read, By::Front, "the last hour of each device, minute by minute"},
      {"GET", "/devices", A::Read, By::Host, "the devices of the project"},
      {"GET", "/devices/{id}", A::Read, By::Host, "one device and its settings"},
      {"POST", "/devices/{id}/advise", A::Try, By::Host, "what would surprise the owner of these settings"},
      {"POST", "/devices/{id}/preview", A::Try, By::Host, "what these settings would change"},
      {"PUT", "/devices/{id}/settings", A::Change, By::Host, "give these settings to the device"},
      {"PUT", "/devices/{id}/managed", A::Change, By::Host, "manage the device"},
      {"DELETE", "/devices/{id}/managed", A::Change, By::Host, "give the device up"},
      {"POST", "/devices/{id}/actions", A::Change, By::Host, "reboot the controller, stop or start its agent"},
      {"GET", "/devices/{id}/file", A::Read, By::Host, "the device's snmpd.conf"},
      {"GET", "/devices/{id}/findings", A::Read, By::Host, "what in that file will surprise its owner"},
      {"GET", "/devices/{id}/effective", A::Read, By::Host, "what the daemon serves beside what is configured"},
      {"POST", "/devices/{id}/test-trap", A::Change, By::Host, "send a test notification to each trap target"},
      {"GET", "/devices/{id}/drift", A::Read, By::Host, "whether the file still says what the settings say"},
      {"GET", "/devices/{id}/history", A::Read, By::Host, "the snapshots of the device"},
      {"GET", "/devices/{id}/history/{number}", A::Read, By::Host, "one snapshot beside another state"},
      {"POST", "/devices/{id}/undo", A::Change, By::Host, "put a snapshot back"},
      {"POST", "/devices/{id}/undo/preview", A::Try, By::Host, "what putting a snapshot back would change"},
      {"GET", "/variables", A::Read, By::Host, "the variables with their trap-enabled flags"},
      {"PUT", "/variables/{device}/{variable}", A::Change, By::Host, "set the trap-enabled flag of a variable"},
      {"GET", "/commands", A::Read, By::Host, "the commands of the drivers, and the names of events"},
      {"POST", "/command", A::Change, By::Host, "send a command to a driver, exactly"},
      {"POST", "/event", A::Change, By::Host, "send a system event"},
  };
  return routes;
}

RouteMatch FindRoute(std::string_view method, std::string_view path) {
  RouteMatch match;
  for (const Route& route : Routes()) {
    std::vector<std::string> numbers;
    if (!Matches(route.path, path, numbers)) {
      continue;
    }
    if (route.method == method) {
      match.route = &route;
      match.numbers = std::move(numbers);
    }
    match.allowed.append(match.allowed.empty() ? "" : ", ").append(route.method);
  }
  return match;
}

}  // namespace devhost
