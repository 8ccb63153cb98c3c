#include "acquisition/UdpProvider.h"

#include "GuiThread.h"
#include "LoopbackSender.h"
#include "PacketSequence.h"
#include "acquisition/PacketPump.h"
#include "runtime/Clock.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace corvalog {
namespace {

using namespace std::chrono_literals;

class UdpReceive : public ::testing::Test
{
protected:
    void SetUp() override
    {
        provider = UdpProvider::create();
        pump.attach(provider.get());
        QObject::connect(provider.get(), &DataProvider::packetsArrived, provider.get(),
            [this](const PacketBatch &batch) {
                for (const PacketNotification &p : batch)
                    arrived.push_back(p.Value);
                sequence.check(batch);
            });
        ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    }

    bool send(const std::string &datagram)
    {
        return LoopbackSender::sendDatagram(provider->port(), datagram);
    }

    GuiThread gui;
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    std::unique_ptr<UdpProvider> provider;
    std::vector<std::string> arrived; // the values
    PacketSequence sequence;
};

TEST_F(UdpReceive, SplitsDatagramsIntoLinesAndSkipsOnlyTheBadOnes)
{
    const struct {
        const char *name;
        std::string datagram;
        std::vector<std::string> values;
        std::vector<int> malformedLines; // line numbers within the datagram
    } cases[] = {
        { "last line without its end", "1,ff12,12.5,0,-60,100,0,0", { "12.5" }, {} },
        { "CR LF between lines", "1,0001,1,0,-60,100,0,0\r\n1,2,2,1,-61,99,1,3\r\n", { "1", "2" },
            {} },
        { "comments, blanks and column names skipped",
            "# from the bench\n\nbase_station,data_tag,value,status,rssi,cv,batt_low,error\n"
            "1,0003,3,0,-60,100,0,0\n",
            { "3" }, {} },
        { "bad line between good ones",
            "1,0004,4,0,-60,100,0,0\nnot,a,packet\n1,5,5,0,-60,100,0,0\n", { "4", "5" }, { 2 } },
        { "line with time_ms has a column too many", "0,1,FF12,12.5,0,-60,100,0,0\n", {}, { 1 } },
        { "binary garbage", std::string("\0\xFF\x01\x80garbage\n\x7F", 13), {}, { 1, 2 } },
    };
    for (const auto &c : cases) {
        arrived.clear();
        const std::uint64_t malformedBefore = provider->malformedCount();
        const std::uint64_t datagram = provider->datagramCount() + 1;
        // The end of each case shows as a packet sent after it on the same path.
        ASSERT_TRUE(send(c.datagram) && send("1,FFFF,end,0,-60,100,0,0\n")) << c.name;
        ASSERT_TRUE(gui.runUntil([&] { return !arrived.empty() && arrived.back() == "end"; }, 2s))
            << c.name;
        arrived.pop_back();
        EXPECT_EQ(arrived, c.values) << c.name;
        ASSERT_EQ(provider->malformedCount() - malformedBefore, c.malformedLines.size()) << c.name;
        const std::vector<std::string> messages = provider->malformedMessages();
        for (std::size_t i = 0; i < c.malformedLines.size(); ++i) {
            const std::string prefix = "datagram " + std::to_string(datagram) + " line "
                + std::to_string(c.malformedLines[i]) + ": ";
            const std::string &message = messages[malformedBefore + i];
            EXPECT_EQ(message.substr(0, prefix.size()), prefix) << c.name;
            EXPECT_GT(message.size(), prefix.size()) << c.name << ": no reason given";
        }
    }
}

TEST_F(UdpReceive, FloodOfMalformedDatagramsCostsNoGoodPacket)
{
    constexpr int kGood = 3000;
    for (int i = 0; i < kGood; ++i) {
        ASSERT_TRUE(send("\x01\x02 not a packet"));
        ASSERT_TRUE(send("1,GGGG,1,0,-60,100,0,0\n" + PacketSequence::line(std::uint64_t(i))));
    }
    EXPECT_TRUE(gui.runUntil([&] { return sequence.received() >= kGood; }, 3s));
    EXPECT_EQ(sequence.received(), std::uint64_t(kGood));
    EXPECT_EQ(sequence.breaks(), 0u);
    // Each datagram's bad line is counted; only the first reasons are kept.
    EXPECT_EQ(provider->malformedCount(), 2u * kGood);
    EXPECT_EQ(provider->malformedMessages().size(), UdpProvider::kKeptMessages);
}

TEST_F(UdpReceive, SteadyRateArrivesWholeAndInOrder)
{
    constexpr std::uint64_t kPackets = 20000;
    LoopbackSender sender({ provider->port(), kPackets, 50000.0, 10, 3s });
    gui.runUntil([&] { return sequence.received() >= kPackets; }, 4s);
    sender.wait();
    EXPECT_EQ(sequence.received(), kPackets);
    EXPECT_EQ(sequence.breaks(), 0u);
    EXPECT_EQ(handler.appliedCount(), kPackets);
}

// Datagrams the system drops when the receive buffer is full are counted by the system and
// reported: every datagram sent either arrives or is counted.
TEST(UdpReceiveBuffer, DatagramsTheSystemDropsAreCounted)
{
    GuiThread gui;
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    PacketSequence sequence;
    const std::unique_ptr<UdpProvider> provider = UdpProvider::create("127.0.0.1", 0, 1);
    pump.attach(provider.get());
    QObject::connect(provider.get(), &DataProvider::packetsArrived, provider.get(),
        [&](const PacketBatch &batch) { sequence.check(batch); });
    // Dropped while closed: not a loss of the open interface.
    for (int i = 0; i < 200; ++i)
        LoopbackSender::sendDatagram(provider->port(), PacketSequence::line(std::uint64_t(i)));
    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    EXPECT_EQ(provider->droppedBySystem(), 0u);

    constexpr std::uint64_t kPackets = 20000;
    LoopbackSender sender({ provider->port(), kPackets, 0.0, 1, 3s });
    sender.wait();
    gui.runUntil([&] { return sequence.received() + provider->droppedBySystem() >= kPackets; }, 3s);
    gui.runUntil([] { return false; }, 50ms);
    EXPECT_GT(provider->droppedBySystem(), 0u) << "a buffer this small overflows";
    EXPECT_EQ(sequence.received() + provider->droppedBySystem(), kPackets);
    EXPECT_EQ(provider->droppedInInbox(), 0u);
}

TEST(UdpProviderCreate, ReportsWhyItCannotListen)
{
    const std::unique_ptr<UdpProvider> first = UdpProvider::create();
    try {
        UdpProvider::create("127.0.0.1", first->port());
        ADD_FAILURE() << "bound a port in use";
    } catch (const VbError &e) {
        EXPECT_LT(e.number(), 0);
        const std::string where = "udp:127.0.0.1:" + std::to_string(first->port());
        EXPECT_NE(e.description().find(where), std::string::npos) << e.description();
        EXPECT_NE(e.description().find("Address already in use"), std::string::npos);
    }
}

} // namespace
} // namespace corvalog
