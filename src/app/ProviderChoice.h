#pragma once

#include "acquisition/DriverHost.h"

#include <functional>
#include <string>

namespace corvalog {

// The environment variable that names where the program's packets come from, over the driver
// setting: "sim", "sim:SEED", "replay:FILE", "udp:[HOST:]PORT", "serial" or
// "serial:DEVICE[:BAUD]".
inline constexpr const char *kSourceVariable = "CORVALOG_SOURCE";

// The program's driver factory. Each creation reads the driver settings of the settings file
// the function gives (read then, so a changed setting takes effect at the next activation) and
// opens `overrideText` when it is not empty, else the settings' source. Creating a driver
// raises VbError naming our provider and the source in its description, also for a text that
// names no source.
ProviderFactory providerFactoryFor(
    std::string overrideText, std::function<std::string()> settingsFile);

} // namespace corvalog
