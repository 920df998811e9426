#ifndef DEVHOST_FLEET_WAVES_H
#define DEVHOST_FLEET_WAVES_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace devhost {

// Waves that cannot be: what is wrong and what is allowed, in one line.
class WaveError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// How many devices of `count` have had their turn after each wave. `text` says so, as numbers or shares of all, which are
// rounded up: "1,10%,100%" of 20 devices is 1, 2 and 20. "" is one wave of all. Waves in which nothing would be left to do
// are left out. Throws WaveError for what is not such a list, does not rise, or does not end with all devices.
std::vector<std::size_t> WaveEnds(const std::string& text, std::size_t count);

}  // namespace devhost

#endif
