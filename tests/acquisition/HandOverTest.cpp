// Packets handed over from provider threads to the GUI thread: the ring that holds them, the
// inbox and the pump.
#include "HandOverFixture.h"
#include "acquisition/PacketRing.h"

#include <QTimer>

namespace corvalog {
namespace {

using namespace std::chrono_literals;

// Pushes and takes interleave so the oldest packet wanders round the storage and the storage
// grows while it wraps; whatever was taken in comes out whole and in order, and only what did
// not fit is refused.
TEST(PacketRing, KeepsOrderAcrossWrapAndGrowthAndRefusesOnlyWhatDoesNotFit)
{
    const struct {
        std::size_t capacity;
        std::vector<std::uint64_t> pushes; // batch sizes; 0 takes everything out
        std::uint64_t refused;
    } cases[] = { { 5000, { 700, 0, 900, 900, 0, 1500, 2000, 0, 3000, 1999, 0 }, 0 },
        { 3000, { 1000, 1000, 1500, 0, 2999, 2, 0 }, 500 + 1 },
        { 1024, { 1000, 0, 1000, 30, 0 }, 6 }, { 0, { 10, 0 }, 10 } };
    for (const auto &c : cases) {
        PacketRing ring(c.capacity);
        std::vector<std::uint64_t> accepted; // the numbers that went in, oldest first
        std::size_t checked = 0;
        std::uint64_t next = 0, refused = 0;
        for (const std::uint64_t count : c.pushes) {
            if (count == 0) {
                PacketBatch out;
                ring.takeAll(out);
                for (const PacketNotification &p : out)
                    ASSERT_EQ(p.Value, std::to_string(accepted.at(checked++)));
                continue;
            }
            const std::size_t took = ring.push(numbered(next, count));
            for (std::uint64_t i = 0; i < took; ++i)
                accepted.push_back(next + i);
            refused += count - took;
            next += count;
        }
        EXPECT_EQ(refused, c.refused) << "capacity " << c.capacity;
        EXPECT_EQ(checked, accepted.size()) << "capacity " << c.capacity;
    }
}

TEST_F(HandOver, BurstWithAStalledGuiThreadArrivesWholeAndInOrder)
{
    // 100,000 packets a second for half a second; a long repaint or a modal prompt halfway.
    std::thread sender = burst(500, 100, 1ms);
    QTimer::singleShot(200ms, [] { std::this_thread::sleep_for(300ms); });
    gui.runUntil([&] { return sequence.received() >= 50000; }, 4s);
    sender.join();
    expectWholeAndInOrder(50000);
    EXPECT_EQ(handler.appliedCount(), 50000u);
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

// While a workspace activates the pump holds an inboxful back and counts the rest.
TEST_F(HandOver, HeldPumpKeepsAnInboxfulAndCountsTheRest)
{
    const std::uint64_t capacity = DataProvider::kInboxCapacity;
    pump.hold();
    pump.apply(numbered(0, capacity - 10));
    pump.apply(numbered(capacity - 10, 25));
    EXPECT_EQ(handler.appliedCount(), 0u);
    EXPECT_EQ(pump.droppedWaiting(), 15u);

    pump.release();
    EXPECT_EQ(handler.appliedCount(), capacity);
    // The newest packet kept is the last that fitted.
    EXPECT_EQ(tables.T(PacketSequence::packet(capacity - 1).Datatag), float(capacity - 1));
    pump.apply(numbered(capacity + 15, 1));
    EXPECT_EQ(handler.appliedCount(), capacity + 1);
}

} // namespace
} // namespace corvalog
