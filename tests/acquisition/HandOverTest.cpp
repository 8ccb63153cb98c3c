#include "FakeProvider.h"
#include "GuiThread.h"
#include "PacketSequence.h"
#include "acquisition/DataProvider.h"
#include "acquisition/PacketPump.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <QTimer>
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace corvalog {
namespace {

using namespace std::chrono_literals;

// The GUI side as the program has it (pump, handler and tables) with an order check, fed by a
// thread that hands numbered packets over as a blocking provider does.
class HandOver : public ::testing::Test
{
protected:
    void SetUp() override
    {
        pump.attach(&provider);
        QObject::connect(&provider, &DataProvider::packetsArrived, &provider,
            [this](const PacketBatch &batch) { sequence.check(batch); });
    }

    // `batches` of `perBatch` packets, one batch per `interval` (0: as fast as it can).
    std::thread burst(
        std::uint64_t batches, std::uint64_t perBatch, std::chrono::microseconds interval)
    {
        return std::thread([this, batches, perBatch, interval] {
            const auto start = std::chrono::steady_clock::now();
            for (std::uint64_t b = 0, next = 0; b < batches; ++b) {
                std::this_thread::sleep_until(start + b * interval);
                PacketBatch batch;
                for (std::uint64_t i = 0; i < perBatch; ++i)
                    batch.push_back(PacketSequence::packet(next++));
                provider.send(std::move(batch));
            }
        });
    }

    // All `total` packets arrived in order, and the tables hold the newest of each tag.
    void expectWholeAndInOrder(std::uint64_t total)
    {
        EXPECT_EQ(sequence.received(), total);
        EXPECT_EQ(sequence.breaks(), 0u);
        for (std::uint64_t n = total - PacketSequence::kTagSpan; n < total; ++n)
            ASSERT_EQ(tables.T(PacketSequence::packet(n).Datatag), float(n)) << n;
    }

    GuiThread gui;
    std::vector<std::string> calls;
    FakeProvider provider { calls };
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    PacketSequence sequence;
};

TEST_F(HandOver, BurstWithAStalledGuiThreadArrivesWholeAndInOrder)
{
    // 100,000 packets a second for a second; a long repaint or a modal prompt halfway.
    std::thread sender = burst(1000, 100, 1ms);
    QTimer::singleShot(500ms, [] { std::this_thread::sleep_for(300ms); });
    gui.runUntil([&] { return sequence.received() >= 100000; }, 4s);
    sender.join();
    expectWholeAndInOrder(100000);
    EXPECT_EQ(handler.appliedCount(), 100000u);
    EXPECT_EQ(provider.droppedInInbox(), 0u);
}

TEST_F(HandOver, FullInboxDropsWholeBatchesAndCountsThem)
{
    constexpr std::uint64_t kPerBatch = 1000;
    const std::uint64_t fits = DataProvider::kInboxCapacity / kPerBatch;
    // The GUI thread looks away until everything was handed over.
    burst(fits + 20, kPerBatch, 0us).join();
    EXPECT_EQ(provider.droppedInInbox(), 20 * kPerBatch);

    // What was taken in arrives whole and in order; the sequence simply ends early.
    gui.runUntil([&] { return sequence.received() >= fits * kPerBatch; }, 4s);
    QCoreApplication::processEvents();
    expectWholeAndInOrder(fits * kPerBatch);
}

} // namespace
} // namespace corvalog
