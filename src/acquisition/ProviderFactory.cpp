#include "ProviderFactory.h"

#include "MqttProvider.h"
#include "ReplayProvider.h"
#include "SerialProvider.h"
#include "SimulatedProvider.h"
#include "UdpProvider.h"

namespace corvalog {

std::unique_ptr<DataProvider> createProvider(const ProviderSource &source, bool virtualTime,
    const NumberLocale &locale, const DriverSettings &settings)
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
    case ProviderSource::Kind::Serial: {
        SerialOptions options;
        options.device = source.device;
        options.baudrate = source.baudrate;
        options.settings = settings;
        options.locale = locale;
        return std::make_unique<SerialProvider>(options);
    }
    case ProviderSource::Kind::Mqtt: {
        MqttProvider::Options options;
        options.address = source.mqtt;
        options.caFile = source.mqttCaFile.empty() ? settings.mqttCaFile : source.mqttCaFile;
        options.credentialsFile = source.mqttCredentialsFile.empty() ? settings.mqttCredentialsFile
                                                                     : source.mqttCredentialsFile;
        return std::make_unique<MqttProvider>(std::move(options), locale);
    }
    case ProviderSource::Kind::Udp:
        break;
    }
    return UdpProvider::create(source.host, source.port, UdpProvider::kReceiveBufferBytes, locale);
}

} // namespace corvalog
