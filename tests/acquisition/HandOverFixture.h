#pragma once

#include "FakeProvider.h"
#include "GuiThread.h"
#include "PacketSequence.h"
#include "acquisition/PacketPump.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace corvalog {

// Packets n, n+1, ... of the numbered sequence.
inline PacketBatch numbered(std::uint64_t from, std::uint64_t count)
{
    PacketBatch batch;
    for (std::uint64_t n = from; n < from + count; ++n)
        batch.push_back(PacketSequence::packet(n));
    return batch;
}

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
            for (std::uint64_t b = 0; b < batches; ++b) {
                std::this_thread::sleep_until(start + b * interval);
                provider.send(numbered(b * perBatch, perBatch));
            }
        });
    }

    // The first `total` packets arrived in order, and the tables hold the newest of each tag.
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
    PacketHandler handler { tables, NumberLocale::point() };
    PacketPump pump { handler };
    PacketSequence sequence;
};

} // namespace corvalog
