#pragma once

#include "CliArgs.h"
#include "acquisition/DataProvider.h"
#include "acquisition/DriverSettings.h"
#include "acquisition/ProviderSource.h"
#include "acquisition/SourceLosses.h"
#include "runtime/UserPrompts.h"

#include <QCoreApplication>
#include <memory>
#include <optional>
#include <ostream>

namespace corvalog::cli {

// --source SRC: sim[:SEED], replay:FILE, udp:[HOST:]PORT, serial[:DEVICE[:BAUD]] or
// mqtt://HOST[:PORT]/PREFIX (with --ca-file and --credentials); `fallback` when not given,
// else a usage error.
ProviderSource sourceOption(CliArgs &args, const char *fallback);

// --ca-file FILE and --credentials FILE of a broker, each left as it was when not given.
void brokerOptions(CliArgs &args, std::string &caFile, std::string &credentialsFile);

// --duration S in whole seconds (1 s to 31 days), in milliseconds.
std::optional<double> durationOption(CliArgs &args);

// The Qt application object the tool's event loops need.
std::unique_ptr<QCoreApplication> makeCoreApplication();

// Makes Ctrl+C and SIGTERM ask for a clean stop instead of killing the tool.
void catchStopSignals();
bool stopSignalled();

// The driver settings of the program's settings file (the devices of USB and the COM ports),
// so `serial` opens what the program would.
DriverSettings driverSettings(UserPrompts &prompts);

// A driver's notice about its line, on standard error as "Warning: ..." or "Note: ...".
void printNotice(const std::string &text, bool problem);

// Warnings about what the source could not deliver: malformed lines, and the losses.
void reportSourceWarnings(
    const DataProvider &driver, const SourceLosses &losses, std::ostream &err);

} // namespace corvalog::cli
