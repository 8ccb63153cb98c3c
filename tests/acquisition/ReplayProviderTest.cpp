#include "acquisition/ReplayProvider.h"

#include "GuiThread.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace corvalog {
namespace {

using namespace std::chrono_literals;
using Pacing = ReplayProvider::Pacing;

class ReplayTest : public ::testing::Test
{
protected:
    ReplayTest() { clock.start(); }

    // A replay of the file, with the tags it delivers, when (ms on `clock`), and its ends.
    std::unique_ptr<ReplayProvider> play(const std::string &path, Pacing pacing)
    {
        auto provider = ReplayProvider::create(path, pacing, NumberLocale::point());
        QObject::connect(
            provider.get(), &DataProvider::packetsArrived, [this](const PacketBatch &b) {
                for (const PacketNotification &p : b) {
                    tags.push_back(p.Datatag);
                    arrivedMs.push_back(clock.nsecsElapsed() / 1e6);
                }
            });
        QObject::connect(provider.get(), &ReplayProvider::finished, [this] { ++finished; });
        return provider;
    }

    // A recording of the text.
    std::string file(const std::string &text)
    {
        const std::string path = m_dir.filePath("recording.csv").toStdString();
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    // `count` packets `stepMs` apart, tags 1, 2, 3, ...
    std::string evenlySpaced(int count, double stepMs)
    {
        std::string text = recordingHeader();
        for (int i = 0; i < count; ++i)
            text += recordingLine({ i * stepMs, { 1, i + 1, "1" } }, NumberLocale::point());
        return file(text);
    }

    QTemporaryDir m_dir;
    GuiThread gui;
    QElapsedTimer clock;
    std::vector<int> tags;
    std::vector<double> arrivedMs;
    int finished = 0;
};

TEST_F(ReplayTest, VirtualTimeDeliversGoodPacketsInOrderAndReportsBadLines)
{
    // Lines 1 and 2 are the header; 7 is malformed, 9 goes back in time, 10 is too long.
    const std::string text = recordingHeader()
        + "0,1,0001,1,0,-60,100,0,0\n10,1,0002,1,0,-60,100,0,0\n# a comment\n\n"
          "20,1,0003,\"unterminated,0,-60,100,0,0\r\n20,1,0004,1,0,-60,100,0,0\r\n"
          "15,1,0005,1,0,-60,100,0,0\n20.5,1,0006,"
        + std::string(70000, '9') + ",0,-60,100,0,0\n20.5,1,0007,1,0,-60,100,0,0\n"
        + "30,1,0008,1,0,-60,100,0,0"; // no line end after the last line
    auto provider = play(file(text), Pacing::Virtual);

    ASSERT_EQ(provider->nextPacketTime(), 0.0);
    provider->advanceTo(100);
    EXPECT_TRUE(tags.empty()) << "nothing plays before OpenInterface";

    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    // Advancing to each instant plays the tags up to it; the next packet is then due, and the
    // end is told once, with the last packet.
    const std::vector<int> all = { 1, 2, 4, 7, 8 };
    const std::tuple<double, std::vector<int>, std::optional<double>> steps[]
        = { { -1, {}, 0.0 }, { 0, { 1 }, 10.0 }, { 19.999, { 1, 2 }, 20.0 },
              { 29, { 1, 2, 4, 7 }, 30.0 }, { 30, all, std::nullopt }, { 1e9, all, std::nullopt } };
    for (const auto &[to, played, next] : steps) {
        provider->advanceTo(to);
        EXPECT_EQ(tags, played) << "at " << to;
        EXPECT_EQ(provider->nextPacketTime(), next) << "at " << to;
        EXPECT_EQ(finished, next ? 0 : 1) << "at " << to;
    }
    EXPECT_EQ(provider->malformedMessages(),
        (std::vector<std::string> { "line 7: a quote is not closed",
            "line 9: time_ms 15 goes back before 20", "line 10: longer than 65536 bytes" }));
}

TEST_F(ReplayTest, RealTimePacesPacketsAtTheirInstants)
{
    constexpr int kCount = 21;
    constexpr double kStepMs = 10; // 200 ms from first to last
    auto provider = play(evenlySpaced(kCount, kStepMs), Pacing::RealTime);
    clock.start();
    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    ASSERT_TRUE(gui.runUntil([&] { return finished == 1; }, 5s));
    ASSERT_EQ(tags.size(), std::size_t(kCount));
    for (int i = 0; i < kCount; ++i) {
        EXPECT_EQ(tags[i], i + 1);
        // The clock starts before OpenInterface, so a packet on time is never "early" here.
        const double lateness = arrivedMs[i] - i * kStepMs;
        EXPECT_TRUE(lateness >= 0 && lateness < 50) << i << ": " << lateness;
    }
}

// A replay between packets, a FIFO whose writer stays quiet and a file that never ends all
// stop at once when closed, deliver nothing more and cannot play again.
TEST_F(ReplayTest, CloseStopsEveryReplayAtOnceAndForGood)
{
    const std::string fifo = m_dir.filePath("live").toStdString();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const int writer = ::open(fifo.c_str(), O_RDWR | O_CLOEXEC); // held open, writing nothing more
    ASSERT_GE(writer, 0);
    for (const std::string &path : { evenlySpaced(1000, 10), fifo, std::string("/dev/zero") }) {
        auto provider = play(path, Pacing::RealTime);
        ASSERT_EQ(provider->OpenInterface(0, 0), 0);
        gui.runUntil([] { return false; }, 100ms);
        QElapsedTimer closing;
        closing.start();
        provider->CloseInterface();
        EXPECT_LT(closing.elapsed(), 500) << path;
        gui.runUntil([] { return false; }, 10ms); // batches queued before the close
        const std::size_t played = tags.size();
        gui.runUntil([] { return false; }, 30ms);
        EXPECT_EQ(tags.size(), played) << path;
        EXPECT_EQ(provider->OpenInterface(0, 0), 1) << path;
    }
    EXPECT_EQ(finished, 0);

    // On virtual time the caller's own stop is asked while the FIFO keeps quiet.
    auto provider = play(fifo, Pacing::Virtual);
    int asked = 0;
    provider->setInterruption([&] { return ++asked >= 3; }); // after one wait for more
    provider->OpenInterface(0, 0);
    const std::string line = "0,1,0BAD,5,0,-60,100,0,0\n";
    ASSERT_EQ(::write(writer, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    EXPECT_EQ(provider->nextPacketTime(), 0.0);
    provider->advanceTo(0); // plays the packet, then waits to learn whether more are due
    EXPECT_EQ(tags.back(), 0x0BAD);
    EXPECT_EQ(provider->nextPacketTime(), std::nullopt);
    ::close(writer);
}

} // namespace
} // namespace corvalog
