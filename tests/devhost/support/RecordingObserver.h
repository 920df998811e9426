#ifndef TESTS_DEVHOST_SUPPORT_RECORDING_OBSERVER_H
#define TESTS_DEVHOST_SUPPORT_RECORDING_OBSERVER_H

#include <functional>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"

// Keeps what happens in a host, in order.
class RecordingObserver : public devhost::HostObserver {
 public:
  void OnOccurrence(const devhost::Occurrence& occurrence) override {
    all.push_back(occurrence);
    if (then) {
      then(occurrence);
    }
  }

  // The lines of text of one kind, in order.
  std::vector<std::string> Texts(devhost::Occurrence::Kind kind) const {
    std::vector<std::string> texts;
    for (const devhost::Occurrence& occurrence : all) {
      if (occurrence.kind == kind) {
        texts.push_back(TextOf(occurrence));
      }
    }
    return texts;
  }

  std::vector<devhost::Occurrence::Kind> Kinds() const {
    std::vector<devhost::Occurrence::Kind> kinds;
    for (const devhost::Occurrence& occurrence : all) {
      kinds.push_back(occurrence.kind);
    }
    return kinds;
  }

  std::vector<devhost::Occurrence> all;
  std::function<void(const devhost::Occurrence&)> then;  // called after each was kept
};

#endif
