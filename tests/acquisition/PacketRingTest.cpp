#include "acquisition/PacketRing.h"

#include "PacketSequence.h"
#include "acquisition/PacketPump.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <gtest/gtest.h>

namespace corvalog {
namespace {

PacketBatch numbered(std::uint64_t from, std::uint64_t count)
{
    PacketBatch batch;
    for (std::uint64_t n = from; n < from + count; ++n)
        batch.push_back(PacketSequence::packet(n));
    return batch;
}

// Pushes and takes interleave so the oldest packet wanders round the storage and the storage
// grows while it wraps; whatever was taken in comes out whole and in order, and only what did
// not fit is refused.
TEST(PacketRing, KeepsOrderAcrossWrapAndGrowthAndRefusesOnlyWhatDoesNotFit)
{
    const struct {
        std::size_t capacity;
        std::vector<std::uint64_t> pushes; // batch sizes; 0 takes everything out
        std::uint64_t refused;
    } cases[] = {
        { 5000, { 700, 0, 900, 900, 0, 1500, 2000, 0, 3000, 1999, 0 }, 0 },
        { 3000, { 1000, 1000, 1500, 0, 2999, 2, 0 }, 500 + 1 },
        { 1024, { 1000, 0, 1000, 30, 0 }, 6 },
        { 0, { 10, 0 }, 10 },
    };
    for (const auto &c : cases) {
        PacketRing ring(c.capacity);
        std::vector<std::uint64_t> accepted; // the numbers that went in, oldest first
        std::size_t checked = 0;
        std::uint64_t next = 0, refused = 0;
        for (const std::uint64_t count : c.pushes) {
            if (count == 0) {
                PacketBatch out;
                ring.takeAll(out);
                EXPECT_TRUE(ring.empty());
                for (const PacketNotification &p : out)
                    ASSERT_EQ(p.Value, std::to_string(accepted.at(checked++)));
                continue;
            }
            const std::size_t took = ring.push(numbered(next, count));
            EXPECT_LE(ring.size(), c.capacity);
            for (std::uint64_t i = 0; i < took; ++i)
                accepted.push_back(next + i);
            refused += count - took;
            next += count;
        }
        EXPECT_EQ(refused, c.refused) << "capacity " << c.capacity;
        EXPECT_EQ(checked, accepted.size()) << "capacity " << c.capacity;
    }
}

TEST(PacketPump, WhileHeldKeepsAnInboxfulAndCountsTheRest)
{
    ManualClock clock;
    ScriptClass tables(clock);
    PacketHandler handler(tables);
    PacketPump pump(handler);
    const std::uint64_t capacity = DataProvider::kInboxCapacity;
    pump.hold();
    pump.apply(numbered(0, capacity - 10));
    pump.apply(numbered(capacity - 10, 25));
    EXPECT_EQ(handler.appliedCount(), 0u);
    EXPECT_EQ(pump.droppedWaiting(), 15u);
    EXPECT_EQ(pump.received(), capacity + 15);

    pump.release();
    EXPECT_EQ(handler.appliedCount(), capacity);
    // The newest packet kept is the last that fitted.
    const PacketNotification last = PacketSequence::packet(capacity - 1);
    EXPECT_EQ(tables.T(last.Datatag), float(capacity - 1));
    pump.apply(numbered(capacity + 15, 1));
    EXPECT_EQ(handler.appliedCount(), capacity + 1);
}

} // namespace
} // namespace corvalog
