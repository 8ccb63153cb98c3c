#include "Broker.h"
#include "GuiThread.h"
#include "acquisition/MqttPayload.h"
#include "acquisition/MqttProvider.h"
#include "relay/MqttRelay.h"

#include <QTemporaryDir>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <thread>

namespace {

using namespace corvalog;
using namespace std::chrono_literals;

PacketBatch packets(std::size_t count, std::uint64_t &next)
{
    PacketBatch batch(count);
    for (PacketNotification &p : batch) {
        p.BaseStation = 1;
        p.Datatag = static_cast<std::int32_t>(next % 4096);
        p.Value = std::to_string(next++) + ".5";
        p.RSSI = -60;
        p.CV = 100;
    }
    return batch;
}

MqttRelay::Options relayOptions(const Broker &broker, const QTemporaryDir &dir)
{
    MqttRelay::Options o;
    o.address = *MqttAddress::parse(broker.url("bench/station1"), true);
    o.spoolFolder = dir.filePath("spool").toStdString();
    return o;
}

// 200,000 packets relayed as fast as they come, in messages of 1,000 (50 ms at 20,000 a
// second), through a real broker to a source, timed until the source's GUI thread has every
// one: at 20,000 packets a second this takes 10 s.
void BM_RelayEndToEnd(benchmark::State &state)
{
    constexpr std::size_t kPackets = 200000;
    constexpr std::size_t kPerMessage = 1000;
    QTemporaryDir dir;
    Broker broker(dir.path().toStdString());
    if (!broker.start()) {
        state.SkipWithError("no broker");
        return;
    }
    GuiThread gui;
    for (auto _ : state) {
        MqttProvider::Options source;
        source.address = *MqttAddress::parse(broker.url("bench?client=bench-source"), false);
        MqttProvider provider(source, NumberLocale::point());
        std::size_t received = 0;
        QObject::connect(&provider, &DataProvider::packetsArrived,
            [&](const PacketBatch &batch) { received += batch.size(); });
        provider.OpenInterface(0, 0);
        gui.runUntil([&] { return provider.connected(); }, 5000ms);
        gui.runUntil([] { return false; }, 200ms); // subscribed
        MqttRelay relay(relayOptions(broker, dir));
        relay.start();
        std::uint64_t next = 0;
        const auto start = std::chrono::steady_clock::now();
        while (next < kPackets) {
            relay.add(packets(kPerMessage, next));
            relay.flush();
            QCoreApplication::processEvents();
        }
        if (!gui.runUntil([&] { return received >= kPackets; }, 60000ms))
            state.SkipWithError("packets were lost");
        const double seconds
            = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        state.counters["packets_per_s"] = static_cast<double>(received) / seconds;
        relay.finish(1000ms);
        provider.CloseInterface();
    }
}
BENCHMARK(BM_RelayEndToEnd)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// Latency from the relay taking a packet in to a subscriber reading it, at a base station's busy
// rate (2,000 packets a second, in messages every 50 ms): median and 99th percentile.
void BM_RelayLatency(benchmark::State &state)
{
    QTemporaryDir dir;
    Broker broker(dir.path().toStdString());
    if (!broker.start()) {
        state.SkipWithError("no broker");
        return;
    }
    for (auto _ : state) {
        std::mutex mutex;
        std::vector<double> latencies;
        MqttClient::Options subscriber;
        subscriber.host = "127.0.0.1";
        subscriber.port = broker.port();
        MqttClient::Events events;
        MqttClient *reader = nullptr;
        events.connected = [&](bool) { reader->subscribe("bench/+/packets"); };
        events.message = [&](const std::string &, std::string_view payload) {
            using namespace std::chrono;
            const auto now
                = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
            RelayMessage m;
            std::string error;
            std::vector<std::string> bad;
            if (!decodeRelayMessage(payload, m, error, bad, NumberLocale::point()))
                return;
            const std::lock_guard<std::mutex> lock(mutex);
            for (const std::int64_t t : m.times)
                latencies.push_back(static_cast<double>(now - t * 1000) / 1000.0);
        };
        MqttClient client(subscriber, events);
        reader = &client;
        client.start();
        std::this_thread::sleep_for(500ms);
        MqttRelay relay(relayOptions(broker, dir));
        relay.start();
        std::this_thread::sleep_for(300ms);
        std::uint64_t next = 0;
        // Packets come one millisecond apart in twos; a message goes every 50 ms.
        for (int ms = 1; ms <= 5000; ++ms) {
            relay.add(packets(2, next));
            if (ms % 50 == 0)
                relay.flush();
            std::this_thread::sleep_for(1ms);
        }
        relay.finish(2000ms);
        std::this_thread::sleep_for(200ms);
        client.stop();
        std::sort(latencies.begin(), latencies.end());
        if (latencies.size() < next) {
            state.SkipWithError("packets were lost");
            return;
        }
        state.counters["median_ms"] = latencies[latencies.size() / 2];
        state.counters["p99_ms"] = latencies[latencies.size() * 99 / 100];
        state.SetIterationTime(latencies[latencies.size() * 99 / 100] / 1000.0);
    }
}
BENCHMARK(BM_RelayLatency)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
