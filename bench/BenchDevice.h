#ifndef BENCH_BENCH_DEVICE_H
#define BENCH_BENCH_DEVICE_H

#include <string>

#include "drivers/common/SettingsHolder.h"

// An SNMP-capable device whose snmpd.conf is a text in memory. It costs next to nothing compared with the agent.
class BenchDevice final : public drivers::SettingsHolder {
 public:
  explicit BenchDevice(std::string text) : file(std::move(text)) {}

  std::string file;
  unsigned long filesRead = 0;
  unsigned long filesWritten = 0;

  void AgentAvailable() override {}
  int CopyFrom(const std::string&, std::string& config) override {
    ++filesRead;
    config = file;
    return 0;
  }
  int CopyTo(const std::string&, const std::string& config) override {
    ++filesWritten;
    file = config;
    return 0;
  }
  int RebootController() override { return 0; }
  int StopMasterAgent() override { return 0; }
  int StartMasterAgent() override { return 0; }
  std::string GetSNMPVersion() override { return "1.0.0"; }
  bool IsSNMPVersionValid(const std::string&) override { return true; }
};

#endif
