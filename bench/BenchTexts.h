#ifndef BENCH_BENCH_TEXTS_H
#define BENCH_BENCH_TEXTS_H

#include <cstddef>
#include <string>

// Returns an snmpd.conf of at least `size` bytes, as a person might have written it, without a managed section.
std::string ForeignText(std::size_t size);

// Returns settings of that device as the tool sends them: every setting and two trap targets.
std::string SettingsXml(unsigned long deviceId);

#endif
