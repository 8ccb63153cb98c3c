#include "acquisition/SimulatedProvider.h"

#include "acquisition/PacketHandler.h"
#include "acquisition/RecordingFormat.h"
#include "acquisition/SimulatedModules.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace corvalog {
namespace {

using Sim = SimulatedProvider;

// An open simulator in virtual time and the packets it delivered, each with its instant.
struct Simulation {
    explicit Simulation(std::uint64_t seed = 1)
        : sim({ seed, 1, 1, 0.0, 1.0, false })
    {
        QObject::connect(&sim, &DataProvider::packetsArrived, &sim, [this](const PacketBatch &b) {
            for (std::size_t i = 0; i < b.size(); ++i) {
                packets.push_back({ sim.lastBatchTimes().at(i), b[i] });
                text += recordingLine(packets.back(), NumberLocale::point());
            }
        });
        EXPECT_EQ(sim.OpenInterface(0, 0), 0);
    }

    // Advances through `steps` (cycled) up to `untilMs`.
    Simulation &to(double untilMs, std::vector<double> steps = { 20 })
    {
        std::size_t i = 0;
        for (double at = sim.now(); at < untilMs; sim.advanceTo(at))
            at = std::min(untilMs, at + steps[i++ % steps.size()]);
        return *this;
    }

    // Packets in (from, to], of one tag or of all.
    std::size_t count(double from, double to, int tag = -1) const
    {
        return std::count_if(packets.begin(), packets.end(), [&](const RecordedPacket &t) {
            return t.timeMs > from && t.timeMs <= to && (tag < 0 || t.packet.Datatag == tag);
        });
    }

    int send(std::uint8_t to, int tag, std::uint8_t c) { return sim.SendCommand(to, tag, c, data); }

    Sim sim;
    std::vector<RecordedPacket> packets;
    std::string text; // the packets with their instants, as a recording holds them
    std::string data = "0";
};

TEST(SimulatedProvider, SameSeedGivesTheSamePacketsWhateverTheTimerSteps)
{
    Simulation a(7), b(7), c(8);
    a.to(20000);
    b.to(20000, { 1, 7, 333, 0.5, 999, 20 });
    c.to(20000);
    ASSERT_GT(a.packets.size(), 1500u);
    EXPECT_EQ(a.text, b.text);
    EXPECT_NE(a.text, c.text);
}

// The value texts follow the locale, so each locale's handler must read them in range. The
// raw record is binary, the weak link the only poor one, and the intermittent module's
// silences outlast a timeout.
TEST(SimulatedProvider, EachModuleShowsItsOwnBehaviourInEitherLocale)
{
    const std::map<int, std::pair<float, float>> range
        = { { simtags::LoadCell, { 11.5f, 13.5f } }, { simtags::Temperature, { 10, 34 } },
              { simtags::Counter, { 1, 1e6f } }, { simtags::RawRecord, { -16777215, 16777215 } },
              { simtags::WeakLink, { 990, 1040 } }, { simtags::LowBattery, { 2.3f, 3.1f } },
              { simtags::Faulty, { 60, 140 } }, { simtags::Intermittent, { 4, 11 } } };
    for (const NumberLocale &locale : { NumberLocale::point(), NumberLocale::comma() }) {
        ScopedNumberLocale scope(locale);
        ManualClock clock;
        ScriptClass tables(clock);
        PacketHandler handler(tables, locale);
        std::map<int, double> last; // each module's last packet
        int longGaps = 0;
        Simulation run(3);
        for (const RecordedPacket &t : run.to(120000).packets) {
            const int tag = t.packet.Datatag;
            handler.DP_PacketArrived(t.packet);
            const float value = tables.T(tag);
            EXPECT_TRUE(value >= range.at(tag).first && value <= range.at(tag).second)
                << tag << " " << value;
            EXPECT_EQ(tag == simtags::WeakLink, tables.TL(tag) < 70) << tag;
            EXPECT_EQ(tag == simtags::RawRecord, t.packet.Value.size() == 117) << tag;
            longGaps
                += tag == simtags::Intermittent && last.count(tag) && t.timeMs - last[tag] > 3000;
            last[tag] = t.timeMs;
        }
        EXPECT_EQ(handler.droppedCount(), 0u) << handler.lastErrorDescription();
        EXPECT_EQ(last.size(), range.size());
        EXPECT_GE(longGaps, 5);
    }
}

// Only an open base station answers, and only at its own address; a pause holds one module.
TEST(SimulatedProvider, CommandsAnswerOnlyWhileOpenAndAtTheirAddress)
{
    Simulation run;
    Sim &sim = run.sim;
    EXPECT_EQ(run.send(2, simtags::Counter, Sim::kPause), Sim::kWrongBaseStation);
    EXPECT_EQ(run.send(1, simtags::Counter + 65536, Sim::kPause), Sim::kUnknownModule);
    ASSERT_EQ(run.to(1000).count(0, 1000, simtags::Counter), 10u);
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kPause), 0);
    EXPECT_EQ(run.to(3000).count(1000, 3000, simtags::Counter), 0u);
    EXPECT_GT(run.count(1000, 3000, simtags::LoadCell), 0u);
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kResume), 0);
    // The counter counts packets sent, so it carries on from where the pause stopped it.
    EXPECT_NE(run.to(3100).text.find(",0C01,11,"), std::string::npos);
    // Modules hear the base station on their own channel, awake or kept awake.
    sim.SetRadioChannel(1, 2);
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kResume), Sim::kNoAcknowledgement);
    sim.SetRadioChannel(1, 1);
    sim.SleepAll();
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kResume), Sim::kNoAcknowledgement);
    sim.KeepAwakeAll();
    EXPECT_EQ(run.to(3100 + Sim::kKeepAwakeMs - 1).send(1, simtags::Counter, Sim::kResume), 0);
    EXPECT_EQ(run.to(3100 + Sim::kKeepAwakeMs).send(1, simtags::Counter, Sim::kResume),
        Sim::kNoAcknowledgement);

    EXPECT_EQ(sim.DetectBaseStation(2), 0);
    EXPECT_THROW(sim.WakeAll(2), VbError);
    sim.WakeAll(1);
    sim.CloseInterface();
    EXPECT_EQ(sim.OpenInterface(0, 9600), Sim::kNoSuchPort);
    EXPECT_EQ(sim.OpenInterface(3, 0), Sim::kNoSuchPort);
    const std::size_t sent = run.packets.size();
    EXPECT_EQ(run.to(20000).packets.size(), sent) << "sent while closed";
    EXPECT_EQ(sim.DetectBaseStation(1), 0);
    EXPECT_THROW(sim.KeepAwakeAll(), VbError);
    EXPECT_EQ(sim.OpenInterface(3, 115200), 0);
    EXPECT_NE(sim.DetectBaseStation(1), 0);
}

} // namespace
} // namespace corvalog
