#include "acquisition/PacketPump.h"
#include "acquisition/ReplayProvider.h"
#include "acquisition/SimulatedModules.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

using namespace corvalog;

// A recording of the simulated modules' mix, 1,600 packets a second: decimal readings, a
// counter, raw 117-byte records, weak links and the odd battery and error flag. In memory
// (/dev/shm) where there is one, so the figure is the program's, not the disk's.
class RecordingOnDisk
{
public:
    static constexpr int kPackets = 100000;

    RecordingOnDisk()
    {
        const std::filesystem::path folder = std::filesystem::is_directory("/dev/shm")
            ? std::filesystem::path("/dev/shm")
            : std::filesystem::temp_directory_path();
        m_file = (folder / ("corvalog-bench-" + std::to_string(::getpid()) + ".csv")).string();
        std::ofstream out(m_file, std::ios::binary);
        out << recordingHeader();
        const std::uint16_t tags[]
            = { simtags::LoadCell, simtags::Temperature, simtags::Counter, simtags::RawRecord,
                  simtags::WeakLink, simtags::LowBattery, simtags::Faulty, simtags::Intermittent };
        std::uint32_t noise = 12345;
        for (int i = 0; i < kPackets; ++i) {
            noise = noise * 1103515245u + 12345u;
            RecordedPacket p;
            p.timeMs = i * 0.625;
            p.packet.BaseStation = 1;
            p.packet.Datatag = tags[i % 8];
            p.packet.RSSI = static_cast<std::int16_t>(-50 - static_cast<int>(noise >> 28));
            p.packet.CV = static_cast<std::int16_t>(80 + static_cast<int>((noise >> 20) & 31));
            switch (i % 8) {
            case 2:
                p.packet.Value = std::to_string(i / 8);
                break;
            case 3:
                p.packet.Value = std::string("\x00\x01\xE2\x40", 4) + std::string(113, '\x5A');
                break;
            default:
                p.packet.Value = std::to_string(100 + static_cast<int>(noise >> 22) / 7) + "."
                    + std::to_string(noise % 1000);
            }
            p.packet.BattLow = (i % 8 == 5 && i > kPackets / 2) ? 1 : 0;
            p.packet.Error = (i % 8 == 6 && noise % 16 == 0) ? 1 : 0;
            out << recordingLine(p, NumberLocale::point());
        }
    }
    ~RecordingOnDisk() { std::filesystem::remove(m_file); }
    const std::string &file() const { return m_file; }

private:
    std::string m_file;
};

// The headless logger's loop in virtual time: step to each packet's instant, set the clock
// there, and let the provider hand the packets through the pump into the tables.
void BM_ReplayIngest(benchmark::State &state)
{
    static const RecordingOnDisk recording;
    ManualClock clock(36526.0);
    ScriptClass tables(clock);
    PacketHandler handler(tables, NumberLocale::point());
    PacketPump pump(handler);
    for (auto _ : state) {
        auto provider = ReplayProvider::create(
            recording.file(), ReplayProvider::Pacing::Virtual, NumberLocale::point());
        pump.attach(provider.get());
        provider->OpenInterface(0, 0);
        while (const std::optional<double> t = provider->nextPacketTime()) {
            clock.set(36526.0 + *t / 86400000.0);
            provider->advanceTo(*t);
        }
        pump.attach(nullptr);
    }
    benchmark::DoNotOptimize(tables.T(simtags::LoadCell));
    const auto packets = static_cast<std::uint64_t>(state.iterations()) * RecordingOnDisk::kPackets;
    state.SetItemsProcessed(static_cast<std::int64_t>(packets));
    if (handler.appliedCount() != static_cast<std::uint64_t>(packets))
        state.SkipWithError("packets were lost or dropped");
}
BENCHMARK(BM_ReplayIngest)->Unit(benchmark::kMillisecond);

} // namespace
