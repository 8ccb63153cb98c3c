#include "ProviderFactory.h"

#include "ReplayProvider.h"
#include "SimulatedProvider.h"
#include "UdpProvider.h"

namespace corvalog {

std::unique_ptr<DataProvider> createProvider(
    const ProviderSource &source, bool virtualTime, const NumberLocale &locale)
{
    switch (source.kind) {
    case ProviderSource::Kind::Simulated: {
        SimulationOptions options;
        options.seed = source.seed;
        options.realTime = !virtualTime;
        return std::make_unique<SimulatedProvider>(options);
    }
    case ProviderSource::Kind::Replay:
        return ReplayProvider::create(source.file,
            virtualTime ? ReplayProvider::Pacing::Virtual : ReplayProvider::Pacing::RealTime,
            locale);
    case ProviderSource::Kind::Udp:
        break;
    }
    return UdpProvider::create(source.host, source.port, UdpProvider::kReceiveBufferBytes, locale);
}

} // namespace corvalog
