#ifndef TESTS_SUPPORT_XML_FAULTS_H
#define TESTS_SUPPORT_XML_FAULTS_H

#include <stdexcept>

#include "devhost/xml/XmlObserver.h"

// Runs `work` again and again, until none of its calls into the XML library fails. In run k, counted from 0, the call number
// k fails. `check(k)` follows each run. Returns the number of runs.
template <class Work, class Check>
int WithEachXmlCallFailing(Work work, Check check) {
  struct Countdown final : devhost::XmlObserver {
    void OnXmlCall(const char*, const char*) override {
      if (left-- == 0) {
        throw std::runtime_error("xml");
      }
    }
    int left = 0;
  } observer;
  int runs = 0;
  for (bool done = false; !done; ++runs) {
    observer.left = runs;
    devhost::SetXmlObserver(&observer);
    try {
      work();
      done = true;
    } catch (const std::runtime_error&) {
    }
    devhost::SetXmlObserver(nullptr);
    check(runs);
  }
  return runs;
}

#endif
