#pragma once

#include "CliArgs.h"
#include "acquisition/DataProvider.h"
#include "acquisition/ProviderSource.h"
#include "acquisition/SourceLosses.h"

#include <QCoreApplication>
#include <memory>
#include <optional>
#include <ostream>

namespace corvalog::cli {

// --source SRC: sim[:SEED], replay:FILE or udp:[HOST:]PORT; `fallback` when not given, else
// a usage error.
ProviderSource sourceOption(CliArgs &args, const char *fallback);

// --duration S in whole seconds (1 s to 31 days), in milliseconds.
std::optional<double> durationOption(CliArgs &args);

// The Qt application object the tool's event loops need.
std::unique_ptr<QCoreApplication> makeCoreApplication();

// Makes Ctrl+C and SIGTERM ask for a clean stop instead of killing the tool.
void catchStopSignals();
bool stopSignalled();

// Warnings about what the source could not deliver: malformed lines, and the losses.
void reportSourceWarnings(
    const DataProvider &driver, const SourceLosses &losses, std::ostream &err);

} // namespace corvalog::cli
