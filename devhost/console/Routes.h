#ifndef DEVHOST_CONSOLE_ROUTES_H
#define DEVHOST_CONSOLE_ROUTES_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// Stands in front of the path of every route on the network; nobody else repeats it.
inline constexpr std::string_view kApiPrefix = "/api/v1";

// What a request does to the devices and the project. Where the console is read-only, it refuses Change.
enum class Access { Read, Try, Change };  // Try has a body, and changes nothing of them

// Who answers: the front, also while the host process starts or has ended, or the host process.
enum class Answerer { Front, Host };

// One request that the console understands.
struct Route {
  std::string_view method;
  std::string_view path;  // without kApiPrefix; a segment in braces stands for a number of one to ten digits
  Access access;
  Answerer by;
  std::string_view meaning;  // one line, for docs/console-api.md
};

// All of them, and there are no others: whatever answers a request finds it here.
const std::vector<Route>& Routes();

// A request that was looked up in the table.
struct RouteMatch {
  const Route* route = nullptr;      // null when the method or the path is unknown
  std::vector<std::string> numbers;  // what stood for the segments in braces, in order
  std::string allowed;               // the methods of the path, as the header Allow has them; "" for an unknown path
};

// Looks a request up. `path` is without kApiPrefix and without a query.
RouteMatch FindRoute(std::string_view method, std::string_view path);

}  // namespace devhost

#endif
