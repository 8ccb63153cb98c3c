#include "acquisition/SimulatedProvider.h"

#include "GuiThread.h"
#include "acquisition/PacketHandler.h"
#include "acquisition/RecordingFormat.h"
#include "acquisition/SimulatedModules.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <tuple>

namespace corvalog {
namespace {

using namespace std::chrono_literals;
using Sim = SimulatedProvider;

SimulationOptions virtualTime(std::uint64_t seed = 1)
{
    SimulationOptions o;
    o.seed = seed;
    o.realTime = false;
    return o;
}

// An open simulator in virtual time and the packets it delivered, each with its instant.
struct Simulation {
    explicit Simulation(SimulationOptions options = virtualTime())
        : sim(options)
    {
        QObject::connect(&sim, &DataProvider::packetsArrived, &sim, [this](const PacketBatch &b) {
            for (std::size_t i = 0; i < b.size(); ++i)
                packets.push_back({ sim.lastBatchTimes().at(i), b[i] });
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

    std::int32_t send(std::uint8_t address, std::int32_t tag, std::uint8_t code)
    {
        std::string data = "0";
        return sim.SendCommand(address, tag, code, data);
    }

    Sim sim;
    std::vector<RecordedPacket> packets;
};

// "number description" of the error the call raises, or "none".
std::string raised(const std::function<void()> &call)
{
    try {
        call();
    } catch (const VbError &e) {
        return std::to_string(e.number()) + " " + e.description();
    }
    return "none";
}

// Same packets at the same instants (the recording line holds every field).
bool same(const std::vector<RecordedPacket> &a, const std::vector<RecordedPacket> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](const RecordedPacket &x, const RecordedPacket &y) {
            return x.timeMs == y.timeMs && recordingLine(x) == recordingLine(y);
        });
}

TEST(SimulatedProvider, SameSeedGivesTheSamePacketsWhateverTheTimerSteps)
{
    Simulation a(virtualTime(7)), b(virtualTime(7)), c(virtualTime(8));
    a.to(20000);
    b.to(20000, { 1, 7, 333, 0.5, 999, 20 });
    c.to(20000);
    ASSERT_GT(a.packets.size(), 1500u);
    EXPECT_TRUE(same(a.packets, b.packets));
    EXPECT_FALSE(same(a.packets, c.packets));
    EXPECT_TRUE(std::is_sorted(a.packets.begin(), a.packets.end(),
        [](const RecordedPacket &x, const RecordedPacket &y) { return x.timeMs < y.timeMs; }));
}

TEST(SimulatedProvider, EachModuleShowsItsOwnBehaviourInEitherLocale)
{
    const std::map<int, std::pair<float, float>> range = {
        { simtags::LoadCell, { 11.5f, 13.5f } },
        { simtags::Temperature, { 10, 34 } },
        { simtags::Counter, { 1, 1e6f } },
        { simtags::RawRecord, { -16777215, 16777215 } },
        { simtags::WeakLink, { 990, 1040 } },
        { simtags::LowBattery, { 2.3f, 3.1f } },
        { simtags::Faulty, { 60, 140 } },
        { simtags::Intermittent, { 4, 11 } },
    };
    for (const NumberLocale &locale : { NumberLocale::point(), NumberLocale::comma() }) {
        ScopedNumberLocale scope(locale);
        ManualClock clock;
        ScriptClass tables(clock);
        PacketHandler handler(tables, locale);
        std::map<int, std::vector<RecordedPacket>> byTag;
        int lowestTL = 100, highestTL = 0, errors = 0;
        Simulation run(virtualTime(3));
        for (const RecordedPacket &t : run.to(120000).packets) {
            const PacketNotification &p = t.packet;
            handler.DP_PacketArrived(p);
            const int tag = p.Datatag;
            const auto [lo, hi] = range.at(tag);
            EXPECT_TRUE(tables.T(tag) >= lo && tables.T(tag) <= hi) << tag << " " << tables.T(tag);
            EXPECT_TRUE(tag == simtags::WeakLink || tables.TL(tag) == 100) << tag;
            if (tag == simtags::RawRecord) {
                ASSERT_EQ(p.Value.size(), 117u);
                std::uint32_t bits = 0;
                for (int i = 0; i < 4; ++i)
                    bits = bits << 8 | static_cast<unsigned char>(p.Value[i]);
                EXPECT_EQ(tables.T(tag), static_cast<float>(static_cast<std::int32_t>(bits)));
            } else if (tag == simtags::Counter) {
                EXPECT_EQ(tables.T(tag), static_cast<float>(byTag[tag].size() + 1));
            } else if (tag == simtags::WeakLink) {
                lowestTL = std::min<int>(lowestTL, tables.TL(tag));
                highestTL = std::max<int>(highestTL, tables.TL(tag));
            } else if (tag == simtags::LowBattery && !byTag[tag].empty()) {
                EXPECT_GE(p.BattLow, byTag[tag].back().packet.BattLow) << "battery recovered";
            }
            errors += tag == simtags::Faulty && tables.TE(tag) != 0;
            byTag[tag].push_back(t);
        }
        EXPECT_EQ(handler.droppedCount(), 0u) << handler.lastErrorDescription();
        EXPECT_EQ(byTag.size(), range.size());
        EXPECT_TRUE(lowestTL >= 20 && highestTL <= 70 && highestTL - lowestTL >= 25);
        EXPECT_EQ(byTag[simtags::LowBattery].front().packet.BattLow, 0);
        EXPECT_NE(tables.TB(simtags::LowBattery), 0);
        const int faulty = static_cast<int>(byTag[simtags::Faulty].size());
        EXPECT_TRUE(errors > faulty / 100 && errors < faulty / 2) << errors << " of " << faulty;
        int longGaps = 0;
        const auto &intermittent = byTag[simtags::Intermittent];
        for (std::size_t i = 1; i < intermittent.size(); ++i)
            longGaps += intermittent[i].timeMs - intermittent[i - 1].timeMs > 3000;
        EXPECT_GE(longGaps, 5);
    }
}

// Actions at instants, then windows (from, to] that must hold packets or none.
TEST(SimulatedProvider, SleepWakeKeepAwakeAndChannelDecideWhoIsHeard)
{
    using Action = std::function<void(Sim &)>;
    const Action sleep = [](Sim &s) { s.SleepAll(); }, wake = [](Sim &s) { s.WakeAll(1); },
                 keep = [](Sim &s) { s.KeepAwakeAll(); },
                 away = [](Sim &s) { s.SetRadioChannel(1, 2); },
                 back = [](Sim &s) { s.SetRadioChannel(1, 1); };
    const struct {
        const char *name;
        std::vector<std::pair<double, Action>> actions;
        std::vector<std::tuple<double, double, bool>> windows;
    } cases[] = {
        { "sleep silences", { { 1000, sleep } }, { { 0, 1000, true }, { 1000, 20000, false } } },
        { "wake restores", { { 1000, sleep }, { 3000, wake } },
            { { 1000, 3000, false }, { 3000, 5000, true } } },
        { "kept awake through a sleep", { { 1000, keep }, { 2000, sleep } },
            { { 2000, 11000, true }, { 11000, 20000, false } } },
        { "keep-awake rouses sleepers", { { 1000, sleep }, { 3000, keep } },
            { { 1000, 3000, false }, { 12500, 13000, true }, { 13000, 20000, false } } },
        { "other channel", { { 1000, away }, { 3000, back } },
            { { 1000, 3000, false }, { 3000, 5000, true } } },
    };
    for (const auto &c : cases) {
        Simulation run;
        for (const auto &[at, action] : c.actions)
            action(run.to(at).sim);
        run.to(20000);
        for (const auto &[from, to, heard] : c.windows)
            EXPECT_EQ(run.count(from, to) > 0, heard) << c.name << " " << from;
    }
}

TEST(SimulatedProvider, SendCommandAcknowledgesPausesAndResumes)
{
    Simulation run;
    EXPECT_EQ(run.send(2, simtags::Counter, Sim::kPause), Sim::kWrongBaseStation);
    EXPECT_EQ(run.send(1, 0x1234, Sim::kPause), Sim::kUnknownModule);
    EXPECT_EQ(run.send(1, simtags::Counter + 65536, Sim::kPause), Sim::kUnknownModule);
    EXPECT_EQ(run.send(1, simtags::Counter, 12), 0);
    ASSERT_EQ(run.to(1000).count(0, 1000, simtags::Counter), 10u);
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kPause), 0);
    EXPECT_EQ(run.to(3000).count(1000, 3000, simtags::Counter), 0u);
    EXPECT_GT(run.count(1000, 3000, simtags::LoadCell), 0u);
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kResume), 0);
    run.to(4000);
    // The counter counts packets sent, so it carries on from where the pause stopped it.
    EXPECT_EQ(std::find_if(run.packets.begin(), run.packets.end(),
                  [](const RecordedPacket &t) {
                      return t.timeMs > 3000 && t.packet.Datatag == simtags::Counter;
                  })
                  ->packet.Value,
        "11");
    run.sim.SleepAll();
    EXPECT_EQ(run.send(1, simtags::Counter, Sim::kResume), Sim::kNoAcknowledgement);
}

TEST(SimulatedProvider, CommandFailuresFollowTheRateAndTheSeed)
{
    for (const double rate : { 0.0, 0.3, 1.0 }) {
        std::vector<std::int32_t> statuses[2];
        for (auto &s : statuses) {
            SimulationOptions options = virtualTime(5);
            options.commandFailureRate = rate;
            Simulation run(options);
            bool paused = false; // only acknowledged commands count
            for (int i = 0; i < 2001; ++i) {
                const std::uint8_t code = i % 2 ? Sim::kResume : Sim::kPause;
                s.push_back(run.send(1, simtags::Counter, code));
                paused = s.back() == 0 ? code == Sim::kPause : paused;
            }
            EXPECT_EQ(run.to(2000).count(0, 2000, simtags::Counter) == 0, paused) << rate;
        }
        EXPECT_EQ(statuses[0], statuses[1]);
        const auto failed = std::count(statuses[0].begin(), statuses[0].end(), 1);
        EXPECT_NEAR(failed, rate * 2001, 100) << rate;
    }
}

// Only an open interface sends and answers, and only at its own address.
TEST(SimulatedProvider, InterfaceOpensOnlyOnRealPortsAndAnswersOnlyWhileOpenAtItsAddress)
{
    const std::string notOpen
        = std::to_string(Sim::kErrorNotOpen) + " The base station is not open";
    const struct {
        std::int16_t port;
        std::int32_t baud;
        bool closed, open;
    } cases[] = { { 0, 0, false, true }, { 3, 115200, false, true }, { 0, 0, true, false },
        { 0, 9600, false, false }, { -1, 9600, false, false }, { 3, 0, false, false } };
    for (const auto &c : cases) {
        Sim sim(virtualTime());
        EXPECT_EQ(sim.OpenInterface(c.port, c.baud) == 0, c.open || c.closed)
            << c.port << " " << c.baud;
        if (c.closed)
            sim.CloseInterface();
        sim.advanceTo(5000);
        EXPECT_EQ(sim.lastBatchTimes().empty(), !c.open) << c.port << " " << c.baud;
        EXPECT_EQ(sim.DetectBaseStation(1) != 0, c.open);
        EXPECT_EQ(sim.DetectBaseStation(2), 0);
        EXPECT_EQ(raised([&] { sim.WakeAll(2); }),
            c.open
                ? std::to_string(Sim::kErrorNoBaseStation) + " No base station answers at address 2"
                : notOpen);
        std::uint8_t address = 1, pause = Sim::kPause;
        std::string data;
        EXPECT_EQ(raised([&] { sim.SendCommand(address, simtags::Counter, pause, data); }),
            c.open ? "none" : notOpen);
    }
}

TEST(SimulatedProvider, RealTimeTimerDeliversPacketsAsTimePasses)
{
    GuiThread gui;
    Sim sim;
    std::size_t delivered = 0;
    QObject::connect(&sim, &DataProvider::packetsArrived, &sim,
        [&](const PacketBatch &b) { delivered += b.size(); });
    sim.OpenInterface(0, 0);
    EXPECT_TRUE(gui.runUntil([&] { return delivered > 10; }, 2s));
}

} // namespace
} // namespace corvalog
