#include "ProviderChoice.h"

#include "acquisition/DriverSettings.h"
#include "acquisition/ProviderFactory.h"
#include "runtime/VbError.h"

namespace corvalog {

namespace {

std::string providerName(const ProviderSource &source)
{
    switch (source.kind) {
    case ProviderSource::Kind::Simulated:
        return "Corvalog simulated base station";
    case ProviderSource::Kind::Replay:
        return "Corvalog recording replay";
    case ProviderSource::Kind::Serial:
        return "Corvalog serial base station";
    case ProviderSource::Kind::Mqtt:
        return "Corvalog broker source";
    case ProviderSource::Kind::Udp:
        break;
    }
    return "Corvalog UDP receiver";
}

} // namespace

ProviderFactory providerFactoryFor(
    std::string overrideText, std::function<std::string()> settingsFile)
{
    return [overrideText = std::move(overrideText),
               settingsFile = std::move(settingsFile)]() -> std::unique_ptr<DataProvider> {
        const DriverSettings settings = readDriverSettings(settingsFile());
        const std::string sourceText = overrideText.empty() ? settings.source : overrideText;
        std::string error;
        const std::optional<ProviderSource> source = ProviderSource::parse(sourceText, &error);
        if (!source)
            throw VbError(vberr::InvalidProcedureCall, "Corvalog data provider: " + error);
        try {
            return createProvider(*source, false, numberLocale(), settings);
        } catch (const VbError &e) {
            throw VbError(
                e.number(), providerName(*source) + " (" + sourceText + "): " + e.description());
        }
    };
}

} // namespace corvalog
