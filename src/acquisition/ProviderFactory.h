#pragma once

#include "DataProvider.h"
#include "DriverSettings.h"
#include "ProviderSource.h"
#include "runtime/NumberLocale.h"

#include <memory>

namespace corvalog {

// Creates the provider a source names: the simulated base station, a replay (in real time, or
// in virtual time driven by its caller), a UDP listener or a serial base station (its devices
// from `settings`), handing on value texts in the locale's form. Raises VbError with the number
// and description of what failed (a missing recording, a port in use), as creating the driver
// does.
std::unique_ptr<DataProvider> createProvider(const ProviderSource &source, bool virtualTime,
    const NumberLocale &locale, const DriverSettings &settings);

} // namespace corvalog
