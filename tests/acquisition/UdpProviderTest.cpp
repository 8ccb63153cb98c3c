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
                arrived.insert(arrived.end(), batch.begin(), batch.end());
                sequence.check(batch);
            });
        ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    }

    GuiThread gui;
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables };
    PacketPump pump { handler };
    std::unique_ptr<UdpProvider> provider;
    PacketBatch arrived;
    PacketSequence sequence;
};

PacketNotification packet(std::int32_t tag, std::string value, std::int16_t status = 0,
    std::int16_t rssi = -60, std::int16_t cv = 100, std::int16_t battLow = 0,
    std::int16_t error = 0)
{
    return { 1, tag, std::move(value), status, rssi, cv, battLow, error };
}

bool same(const PacketNotification &a, const PacketNotification &b)
{
    return a.BaseStation == b.BaseStation && a.Datatag == b.Datatag && a.Value == b.Value
        && a.Status == b.Status && a.RSSI == b.RSSI && a.CV == b.CV && a.BattLow == b.BattLow
        && a.Error == b.Error;
}

TEST_F(UdpReceive, SplitsDatagramsIntoLinesAndSkipsOnlyTheBadOnes)
{
    const struct {
        const char *name;
        std::string datagram;
        std::vector<PacketNotification> expected;
        std::vector<int> malformedLines; // line numbers within the datagram
    } cases[] = {
        { "one line", "1,FF12,12.5,0,-60,100,0,0\n", { packet(0xFF12, "12.5") }, {} },
        { "last line without its end", "1,ff12,12.5,0,-60,100,0,0", { packet(0xFF12, "12.5") },
            {} },
        { "CR LF between lines", "1,0001,1,0,-60,100,0,0\r\n1,2,2,1,-61,99,1,3\r\n",
            { packet(1, "1"), packet(2, "2", 1, -61, 99, 1, 3) }, {} },
        { "comments, blanks and column names skipped",
            "# from the bench\n\nbase_station,data_tag,value,status,rssi,cv,batt_low,error\n"
            "1,0003,3,0,-60,100,0,0\n",
            { packet(3, "3") }, {} },
        { "bad line between good ones",
            "1,0004,4,0,-60,100,0,0\nnot,a,packet\n1,5,5,0,-60,100,0,0\n",
            { packet(4, "4"), packet(5, "5") }, { 2 } },
        { "line with time_ms has a column too many", "0,1,FF12,12.5,0,-60,100,0,0\n", {}, { 1 } },
        { "tag beyond four hex digits", "1,10000,1,0,-60,100,0,0\n", {}, { 1 } },
        { "binary garbage", std::string("\0\xFF\x01\x80garbage\n\x7F", 13), {}, { 1, 2 } },
    };
    // The end of each case shows as this packet, sent after it on the same path.
    const PacketNotification marker = packet(0xFFFF, "0");
    for (const auto &c : cases) {
        arrived.clear();
        const std::uint64_t malformedBefore = provider->malformedCount();
        const std::uint64_t datagram = provider->datagramCount() + 1;
        ASSERT_TRUE(LoopbackSender::sendDatagram(provider->port(), c.datagram)) << c.name;
        ASSERT_TRUE(LoopbackSender::sendDatagram(provider->port(), "1,FFFF,0,0,-60,100,0,0\n"));
        ASSERT_TRUE(
            gui.runUntil([&] { return !arrived.empty() && same(arrived.back(), marker); }, 2s))
            << c.name;
        arrived.pop_back();
        EXPECT_EQ(arrived.size(), c.expected.size()) << c.name;
        for (std::size_t i = 0; i < std::min(arrived.size(), c.expected.size()); ++i)
            EXPECT_TRUE(same(arrived[i], c.expected[i])) << c.name << ": packet " << i;
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
        ASSERT_TRUE(LoopbackSender::sendDatagram(provider->port(), "\x01\x02 not a packet"));
        ASSERT_TRUE(LoopbackSender::sendDatagram(
            provider->port(), "1,GGGG,1,0,-60,100,0,0\n" + PacketSequence::line(std::uint64_t(i))));
    }
    EXPECT_TRUE(gui.runUntil([&] { return sequence.received() >= kGood; }, 3s));
    EXPECT_EQ(sequence.received(), std::uint64_t(kGood));
    EXPECT_EQ(sequence.breaks(), 0u);
    // Each datagram's bad line is counted; only the first reasons are kept.
    EXPECT_EQ(provider->malformedCount(), 2u * kGood);
    EXPECT_EQ(provider->malformedMessages().size(), UdpProvider::kKeptMessages);
}

TEST_F(UdpReceive, LosesNothingAtASteadyRate)
{
    constexpr std::uint64_t kPackets = 50000; // one second's worth
    for (const int linesPerDatagram : { 1, 10 }) {
        sequence = PacketSequence();
        const std::uint64_t appliedBefore = handler.appliedCount();
        LoopbackSender sender({ provider->port(), kPackets, 50000.0, linesPerDatagram, 3s });
        gui.runUntil([&] { return sequence.received() >= kPackets; }, 4s);
        sender.wait();
        ASSERT_EQ(sender.sentPackets(), kPackets) << linesPerDatagram << " lines a datagram";
        EXPECT_EQ(sequence.received(), kPackets) << linesPerDatagram << " lines a datagram";
        EXPECT_EQ(sequence.breaks(), 0u) << linesPerDatagram << " lines a datagram";
        EXPECT_EQ(handler.appliedCount() - appliedBefore, kPackets);
        // The tables hold the newest value of each tag, so nothing was applied out of order.
        for (std::uint64_t n = kPackets - PacketSequence::kTagSpan; n < kPackets; ++n) {
            const PacketNotification p = PacketSequence::packet(n);
            ASSERT_EQ(tables.T(p.Datatag), float(n)) << "tag " << p.Datatag;
        }
    }
    EXPECT_EQ(provider->malformedCount(), 0u);
    EXPECT_EQ(provider->droppedInInbox(), 0u);
}

TEST_F(UdpReceive, HearsNothingWhileClosed)
{
    provider->CloseInterface();
    ASSERT_TRUE(LoopbackSender::sendDatagram(provider->port(), PacketSequence::line(7)));
    gui.runUntil([] { return false; }, 50ms);
    EXPECT_TRUE(arrived.empty());

    // Reopening drops what came while closed and hears what comes after.
    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    ASSERT_TRUE(LoopbackSender::sendDatagram(provider->port(), PacketSequence::line(0)));
    ASSERT_TRUE(gui.runUntil([&] { return !arrived.empty(); }, 2s));
    gui.runUntil([] { return false; }, 20ms);
    ASSERT_EQ(arrived.size(), 1u);
    EXPECT_EQ(arrived[0].Value, "0");
}

TEST(UdpProviderCreate, ReportsWhyItCannotListen)
{
    const std::unique_ptr<UdpProvider> first = UdpProvider::create();
    const struct {
        const char *name;
        std::string host;
        std::uint16_t port;
        const char *reason;
    } cases[] = {
        { "port taken", "127.0.0.1", first->port(), "Address already in use" },
        { "address of no interface here", "192.0.2.1", 0, "Cannot assign requested address" },
    };
    for (const auto &c : cases) {
        try {
            UdpProvider::create(c.host, c.port);
            ADD_FAILURE() << c.name << ": created";
        } catch (const VbError &e) {
            EXPECT_LT(e.number(), 0) << c.name;
            const std::string where = "udp:" + c.host + ":" + std::to_string(c.port);
            EXPECT_NE(e.description().find(where), std::string::npos) << e.description();
            EXPECT_NE(e.description().find(c.reason), std::string::npos) << e.description();
        }
    }
}

} // namespace
} // namespace corvalog
