#include "acquisition/SimulatedProvider.h"

#include "acquisition/SimulatedModules.h"
#include "runtime/Clock.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <tuple>

namespace corvalog {
namespace {

using Sim = SimulatedProvider;

struct Timed {
    double at;
    PacketNotification p;
    bool operator==(const Timed &o) const
    {
        auto key = [](const Timed &t) {
            return std::tie(t.at, t.p.BaseStation, t.p.Datatag, t.p.Value, t.p.Status, t.p.RSSI,
                t.p.CV, t.p.BattLow, t.p.Error);
        };
        return key(*this) == key(o);
    }
};

SimulationOptions virtualTime(std::uint64_t seed = 1)
{
    SimulationOptions o;
    o.seed = seed;
    o.realTime = false;
    return o;
}

// Advances through `steps` (cycled) up to `untilMs`, collecting what packetsArrived delivers.
std::vector<Timed> run(Sim &sim, double untilMs, std::vector<double> steps = { 20 })
{
    std::vector<Timed> out;
    QObject context;
    QObject::connect(&sim, &DataProvider::packetsArrived, &context, [&](const PacketBatch &b) {
        for (std::size_t i = 0; i < b.size(); ++i)
            out.push_back({ sim.lastBatchTimes().at(i), b[i] });
    });
    std::size_t i = 0;
    for (double at = sim.now(); at < untilMs; sim.advanceTo(at))
        at = std::min(untilMs, at + steps[i++ % steps.size()]);
    return out;
}

std::vector<Timed> openAndRun(SimulationOptions options, double untilMs)
{
    Sim sim(options);
    EXPECT_EQ(sim.OpenInterface(0, 0), 0);
    return run(sim, untilMs);
}

std::size_t countIn(const std::vector<Timed> &packets, double from, double to, int tag = -1)
{
    return std::count_if(packets.begin(), packets.end(), [&](const Timed &t) {
        return t.at > from && t.at <= to && (tag < 0 || t.p.Datatag == tag);
    });
}

TEST(SimulatedProvider, SameSeedGivesTheSamePacketsWhateverTheTimerSteps)
{
    Sim a(virtualTime(7)), b(virtualTime(7)), c(virtualTime(8));
    for (Sim *s : { &a, &b, &c })
        s->OpenInterface(0, 0);
    const auto steady = run(a, 20000), jittery = run(b, 20000, { 1, 7, 333, 0.5, 999, 20 });
    ASSERT_GT(steady.size(), 1500u);
    EXPECT_TRUE(steady == jittery);
    EXPECT_FALSE(steady == run(c, 20000));
    EXPECT_TRUE(std::is_sorted(
        steady.begin(), steady.end(), [](const Timed &x, const Timed &y) { return x.at < y.at; }));
}

TEST(SimulatedProvider, EveryModuleDecodesToPlausibleReadingsInEitherLocale)
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
        PacketHandler handler(tables);
        std::map<int, int> seen;
        for (const Timed &t : openAndRun(virtualTime(), 60000)) {
            handler.DP_PacketArrived(t.p);
            const auto [lo, hi] = range.at(t.p.Datatag);
            EXPECT_TRUE(tables.T(t.p.Datatag) >= lo && tables.T(t.p.Datatag) <= hi)
                << std::hex << t.p.Datatag << " " << tables.T(t.p.Datatag);
            if (t.p.Datatag != simtags::WeakLink) {
                EXPECT_EQ(tables.TL(t.p.Datatag), 100);
            }
            ++seen[t.p.Datatag];
        }
        EXPECT_EQ(handler.droppedCount(), 0u) << handler.lastErrorDescription();
        EXPECT_EQ(seen.size(), range.size());
    }
}

TEST(SimulatedProvider, EachModuleShowsItsOwnBehaviour)
{
    ManualClock clock;
    ScriptClass tables(clock);
    PacketHandler handler(tables);
    std::map<int, std::vector<std::pair<double, PacketNotification>>> byTag;
    int lowestTL = 100, highestTL = 0, errors = 0, faulty = 0;
    for (const Timed &t : openAndRun(virtualTime(3), 120000)) {
        handler.DP_PacketArrived(t.p);
        const int tag = t.p.Datatag;
        if (tag == simtags::RawRecord) {
            ASSERT_EQ(t.p.Value.size(), 117u);
            std::uint32_t bits = 0;
            for (int i = 0; i < 4; ++i)
                bits = bits << 8 | static_cast<unsigned char>(t.p.Value[i]);
            EXPECT_EQ(tables.T(tag), static_cast<float>(static_cast<std::int32_t>(bits)));
        } else if (tag == simtags::Counter) {
            EXPECT_EQ(tables.T(tag), static_cast<float>(byTag[tag].size() + 1));
        } else if (tag == simtags::WeakLink) {
            lowestTL = std::min<int>(lowestTL, tables.TL(tag));
            highestTL = std::max<int>(highestTL, tables.TL(tag));
        } else if (tag == simtags::LowBattery && !byTag[tag].empty()) {
            EXPECT_GE(tables.TB(tag), byTag[tag].back().second.BattLow) << "battery recovered";
        } else if (tag == simtags::Faulty) {
            ++faulty;
            errors += tables.TE(tag) != 0;
        }
        byTag[tag].push_back({ t.at, t.p });
    }
    EXPECT_GE(lowestTL, 20);
    EXPECT_LE(highestTL, 70);
    EXPECT_GE(highestTL - lowestTL, 25);
    EXPECT_EQ(byTag[simtags::LowBattery].front().second.BattLow, 0);
    EXPECT_NE(tables.TB(simtags::LowBattery), 0);
    EXPECT_TRUE(errors > faulty / 100 && errors < faulty / 2) << errors << " of " << faulty;
    int longGaps = 0;
    const auto &intermittent = byTag[simtags::Intermittent];
    for (std::size_t i = 1; i < intermittent.size(); ++i)
        longGaps += intermittent[i].first - intermittent[i - 1].first > 3000;
    EXPECT_GE(longGaps, 5);
}

TEST(SimulatedProvider, RatesFollowTheScaleWithinOneToTwoHundred)
{
    const struct {
        double scale;
        double loadCell, temperature, counter; // packets/s
    } cases[] = { { 1, 50, 2, 10 }, { 1000, 200, 200, 200 }, { 0.001, 1, 1, 1 } };
    for (const auto &c : cases) {
        SimulationOptions options = virtualTime();
        options.rateScale = c.scale;
        const auto packets = openAndRun(options, 10000);
        for (const auto &[tag, rate] : { std::pair<int, double> { simtags::LoadCell, c.loadCell },
                 { simtags::Temperature, c.temperature }, { simtags::Counter, c.counter } }) {
            EXPECT_EQ(Sim(options).packetRate(tag), rate);
            EXPECT_NEAR(countIn(packets, -1, 10000, tag), rate * 10, 1) << c.scale << " " << tag;
        }
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
        Sim sim(virtualTime());
        sim.OpenInterface(0, 0);
        std::vector<Timed> packets;
        for (const auto &[at, action] : c.actions) {
            const auto more = run(sim, at);
            packets.insert(packets.end(), more.begin(), more.end());
            action(sim);
        }
        const auto rest = run(sim, 20000);
        packets.insert(packets.end(), rest.begin(), rest.end());
        for (const auto &[from, to, heard] : c.windows)
            EXPECT_EQ(countIn(packets, from, to) > 0, heard) << c.name << " " << from;
    }
}

TEST(SimulatedProvider, SendCommandAcknowledgesPausesAndResumes)
{
    Sim sim(virtualTime());
    sim.OpenInterface(0, 0);
    auto send = [&](std::uint8_t address, std::int32_t tag, std::uint8_t code) {
        std::string data = "0";
        return sim.SendCommand(address, tag, code, data);
    };
    EXPECT_EQ(send(2, simtags::Counter, Sim::kPause), Sim::kWrongBaseStation);
    EXPECT_EQ(send(1, 0x1234, Sim::kPause), Sim::kUnknownModule);
    EXPECT_EQ(send(1, simtags::Counter + 65536, Sim::kPause), Sim::kUnknownModule);
    EXPECT_EQ(send(1, simtags::Counter, 12), 0);
    const auto before = run(sim, 1000);
    EXPECT_EQ(send(1, simtags::Counter, Sim::kPause), 0);
    const auto paused = run(sim, 3000);
    EXPECT_EQ(countIn(paused, 0, 3000, simtags::Counter), 0u);
    EXPECT_GT(countIn(paused, 0, 3000, simtags::LoadCell), 0u);
    EXPECT_EQ(send(1, simtags::Counter, Sim::kResume), 0);
    const auto resumed = run(sim, 4000);
    ASSERT_EQ(countIn(before, 0, 1000, simtags::Counter), 10u);
    // The counter counts packets sent, so it carries on from where the pause stopped it.
    EXPECT_EQ(std::find_if(resumed.begin(), resumed.end(),
                  [](const Timed &t) { return t.p.Datatag == simtags::Counter; })
                  ->p.Value,
        "11");
    sim.SleepAll();
    EXPECT_EQ(send(1, simtags::Counter, Sim::kResume), Sim::kNoAcknowledgement);
}

TEST(SimulatedProvider, CommandFailuresFollowTheRateAndTheSeed)
{
    for (const double rate : { 0.0, 0.3, 1.0 }) {
        std::vector<std::int32_t> statuses[2];
        for (auto &s : statuses) {
            SimulationOptions options = virtualTime(5);
            options.commandFailureRate = rate;
            Sim sim(options);
            sim.OpenInterface(0, 0);
            bool paused = false; // only acknowledged commands count
            for (int i = 0; i < 2001; ++i) {
                std::uint8_t address = 1, code = i % 2 ? Sim::kResume : Sim::kPause;
                std::string data = "0";
                s.push_back(sim.SendCommand(address, simtags::Counter, code, data));
                paused = s.back() == 0 ? code == Sim::kPause : paused;
            }
            EXPECT_EQ(countIn(run(sim, 2000), 0, 2000, simtags::Counter) == 0, paused) << rate;
        }
        EXPECT_EQ(statuses[0], statuses[1]);
        const auto failed = std::count(statuses[0].begin(), statuses[0].end(), 1);
        EXPECT_NEAR(failed, rate * 2001, 100) << rate;
    }
}

TEST(SimulatedProvider, InterfaceOpensOnlyOnRealPortsAndAnswersOnlyAtItsAddress)
{
    const struct {
        std::int16_t port;
        std::int32_t baud;
        bool opens;
    } cases[] = { { 0, 0, true }, { 3, 115200, true }, { 0, 9600, false }, { -1, 9600, false },
        { 3, 0, false } };
    for (const auto &c : cases) {
        Sim sim(virtualTime());
        EXPECT_EQ(sim.OpenInterface(c.port, c.baud) == 0, c.opens) << c.port << " " << c.baud;
        EXPECT_EQ(sim.DetectBaseStation(1) != 0, c.opens);
        EXPECT_EQ(sim.DetectBaseStation(2), 0);
    }
}

TEST(SimulatedProvider, ClosedInterfaceSendsNothingAndRefusesCommands)
{
    Sim sim(virtualTime());
    const std::vector<std::pair<std::function<void()>, int>> operations = {
        { [&] { sim.WakeAll(1); }, Sim::kErrorNotOpen },
        { [&] { sim.SleepAll(); }, Sim::kErrorNotOpen },
        { [&] { sim.KeepAwakeAll(); }, Sim::kErrorNotOpen },
        { [&] { sim.SetRadioChannel(1, 1); }, Sim::kErrorNotOpen },
        { [&] {
             std::uint8_t address = 1, code = Sim::kPause;
             std::string data;
             sim.SendCommand(address, simtags::Counter, code, data);
         },
            Sim::kErrorNotOpen },
    };
    sim.OpenInterface(0, 0);
    EXPECT_FALSE(run(sim, 1000).empty());
    EXPECT_THROW(sim.WakeAll(2), VbError);
    EXPECT_THROW(sim.SetRadioChannel(2, 1), VbError);
    sim.CloseInterface();
    EXPECT_TRUE(run(sim, 5000).empty());
    EXPECT_EQ(sim.DetectBaseStation(1), 0);
    for (const auto &[operation, number] : operations) {
        try {
            operation();
            ADD_FAILURE() << "no error";
        } catch (const VbError &e) {
            EXPECT_EQ(e.number(), number);
            EXPECT_EQ(e.description(), "The base station is not open");
        }
    }
}

TEST(SimulatedProvider, RealTimeTimerDeliversPacketsAsTimePasses)
{
    // Other tests of this program may have left an application object behind.
    static int argc = 1;
    static char name[] = "test";
    static char *argv[] = { name, nullptr };
    std::unique_ptr<QCoreApplication> app;
    if (!QCoreApplication::instance())
        app = std::make_unique<QCoreApplication>(argc, argv);
    Sim sim;
    std::vector<double> times;
    QEventLoop loop;
    QObject::connect(&sim, &DataProvider::packetsArrived, &loop, [&](const PacketBatch &) {
        times.insert(times.end(), sim.lastBatchTimes().begin(), sim.lastBatchTimes().end());
    });
    sim.OpenInterface(0, 0);
    QTimer::singleShot(300, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_GT(times.size(), 10u);
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_LE(times.back(), sim.now());
}

} // namespace
} // namespace corvalog
