#pragma once

#include "acquisition/DriverHost.h"

#include <string>

namespace corvalog {

// The environment variable that names where the program's packets come from: "sim" (the
// default), "sim:SEED", "replay:FILE" or "udp:[HOST:]PORT".
inline constexpr const char *kSourceVariable = "CORVALOG_SOURCE";

// The driver factory for a source text. Creating a driver raises VbError naming our provider
// and the source in its description, also for a text that names no source.
ProviderFactory providerFactoryFor(const std::string &sourceText);

} // namespace corvalog
