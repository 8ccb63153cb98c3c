#include "ProviderChoice.h"

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
    case ProviderSource::Kind::Udp:
        break;
    }
    return "Corvalog UDP receiver";
}

} // namespace

ProviderFactory providerFactoryFor(const std::string &sourceText)
{
    std::string error;
    const std::optional<ProviderSource> source = ProviderSource::parse(sourceText, &error);
    if (!source) {
        const std::string description = "Corvalog data provider: " + error;
        return [description]() -> std::unique_ptr<DataProvider> {
            throw VbError(vberr::InvalidProcedureCall, description);
        };
    }
    return [source = *source, sourceText]() -> std::unique_ptr<DataProvider> {
        try {
            return createProvider(source, false, numberLocale());
        } catch (const VbError &e) {
            throw VbError(
                e.number(), providerName(source) + " (" + sourceText + "): " + e.description());
        }
    };
}

} // namespace corvalog
