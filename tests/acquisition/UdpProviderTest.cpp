#include "acquisition/UdpProvider.h"

#include "HandOverFixture.h"
#include "LoopbackSender.h"

namespace corvalog {
namespace {

using namespace std::chrono_literals;

// An open receiver on a free port of 127.0.0.1, with what it delivers in order.
class UdpReceive : public HandOver
{
protected:
    void listen(int receiveBufferBytes)
    {
        udp = UdpProvider::create("127.0.0.1", 0, receiveBufferBytes, NumberLocale::point());
        QObject::connect(
            udp.get(), &DataProvider::packetsArrived, udp.get(), [this](const PacketBatch &batch) {
                for (const PacketNotification &p : batch)
                    values.push_back(p.Value);
                sequence.check(batch);
            });
    }
    void SetUp() override
    {
        listen(UdpProvider::kReceiveBufferBytes);
        ASSERT_EQ(udp->OpenInterface(0, 0), 0);
    }

    bool send(const std::string &datagram)
    {
        return LoopbackSender::sendDatagram(udp->port(), datagram);
    }

    std::unique_ptr<UdpProvider> udp;
    std::vector<std::string> values;
};

// Bad lines, and a flood of bad datagrams, cost no good packet; each is counted, and the
// first are told by datagram and line with their reasons.
TEST_F(UdpReceive, SplitsDatagramsIntoLinesAndSkipsOnlyTheBadOnes)
{
    const std::string datagrams[] = { "1,ff12,12.5,0,-60,100,0,0", // no line end
        "1,0001,1,0,-60,100,0,0\r\n1,2,2,1,-61,99,1,3\r\n",
        "1,0004,4,0,-60,100,0,0\nnot,a,packet\n1,5,5,0,-60,100,0,0\n",
        std::string("\0\xFF\x01\x80garbage\n\x7F", 13) };
    for (const std::string &datagram : datagrams)
        ASSERT_TRUE(send(datagram));
    std::vector<std::string> expected = { "12.5", "1", "2", "4", "5" };
    for (int i = 0; i < 2000; ++i) {
        expected.push_back(std::to_string(i));
        ASSERT_TRUE(send("1,GGGG,1,0,-60,100,0,0\n1,FFFF," + expected.back() + ",0,-60,100,0,0"));
    }
    ASSERT_TRUE(gui.runUntil([&] { return values.size() >= expected.size(); }, 2s));
    EXPECT_EQ(values, expected);
    EXPECT_EQ(udp->malformedCount(), 3u + 2000u);
    const std::vector<std::string> messages = udp->malformedMessages();
    const std::string where[]
        = { "datagram 3 line 2: ", "datagram 4 line 1: ", "datagram 4 line 2: " };
    ASSERT_EQ(messages.size(), UdpProvider::kKeptMessages);
    for (std::size_t i = 0; i < std::size(where); ++i) {
        EXPECT_EQ(messages[i].substr(0, where[i].size()), where[i]);
        EXPECT_GT(messages[i].size(), where[i].size()) << "no reason given";
    }
}

// Every datagram sent to an open receiver either arrives or is counted as dropped by the
// system; what arrived while it was closed is neither.
TEST_F(UdpReceive, DatagramsTheSystemDropsAreCounted)
{
    listen(1);
    for (int i = 0; i < 200; ++i)
        send(PacketSequence::line(std::uint64_t(i)));
    ASSERT_EQ(udp->OpenInterface(0, 0), 0);
    EXPECT_EQ(udp->droppedBySystem(), 0u);

    constexpr std::uint64_t kPackets = 20000;
    LoopbackSender({ udp->port(), kPackets, 0.0, 1, 3s }).wait();
    gui.runUntil([&] { return sequence.received() + udp->droppedBySystem() >= kPackets; }, 3s);
    gui.runUntil([] { return false; }, 50ms);
    EXPECT_GT(udp->droppedBySystem(), 0u) << "a buffer this small overflows";
    EXPECT_EQ(sequence.received() + udp->droppedBySystem(), kPackets);
}

} // namespace
} // namespace corvalog
