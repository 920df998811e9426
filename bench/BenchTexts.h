#ifndef BENCH_BENCH_TEXTS_H
#define BENCH_BENCH_TEXTS_H

#include <cstddef>
#include <string>

// An snmpd.conf as a person might have written it, of at least that many bytes, without a managed section.
std::string ForeignText(std::size_t size);

// Settings of that device as the tool sends them: every setting, two trap targets.
std::string SettingsXml(unsigned long deviceId);

#endif
