#include "acquisition/ReplayProvider.h"

#include "GuiThread.h"
#include "runtime/VbError.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace corvalog {
namespace {

using namespace std::chrono_literals;
using Pacing = ReplayProvider::Pacing;

class ReplayTest : public ::testing::Test
{
protected:
    // A replay of the text, with what it delivers collected.
    std::unique_ptr<ReplayProvider> replay(const std::string &text, Pacing pacing)
    {
        const std::string path = m_dir.filePath("recording.csv").toStdString();
        std::ofstream(path, std::ios::binary) << text;
        auto provider = ReplayProvider::create(path, pacing);
        QObject::connect(
            provider.get(), &DataProvider::packetsArrived, [this](const PacketBatch &b) {
                for (const PacketNotification &p : b)
                    tags.push_back(p.Datatag);
            });
        QObject::connect(provider.get(), &ReplayProvider::finished, [this] { ++finished; });
        return provider;
    }

    // `count` packets `stepMs` apart, tags 1, 2, 3, ...
    static std::string evenlySpaced(int count, double stepMs)
    {
        std::string text = recordingHeader();
        for (int i = 0; i < count; ++i) {
            RecordedPacket p;
            p.timeMs = i * stepMs;
            p.packet.Datatag = i + 1;
            text += recordingLine(p);
        }
        return text;
    }

    QTemporaryDir m_dir;
    std::vector<int> tags;
    int finished = 0;
};

TEST_F(ReplayTest, VirtualTimeDeliversGoodPacketsInOrderAndReportsBadLines)
{
    auto provider = replay(recordingHeader() // lines 1 and 2
            + "0,1,0001,1,0,-60,100,0,0\n"
              "10,1,XYZ,1,0,-60,100,0,0\n" // 4: bad tag
              "10,1,0002,1,0,-60,100,0,0\n"
              "# a comment\n"
              "\n"
              "20,1,0003,\"unterminated,0,-60,100,0,0\r\n" // 8
              "20,1,0004,1,0,-60,100,0,0\r\n"
              "15,1,0005,1,0,-60,100,0,0\n" // 10: back in time
              "20.5,1,0006,"
            + std::string(70000, '9') // 11: longer than any recording line
            + ",0,-60,100,0,0\n"
              "20.5,1,0007,1,0,-60,100,0,0\n"
              "30,1,0008,1,0,-60,100,0,0", // no line end after the last line
        Pacing::Virtual);

    ASSERT_EQ(provider->nextPacketTime(), 0.0);
    provider->advanceTo(100);
    EXPECT_TRUE(tags.empty()) << "nothing plays before OpenInterface";

    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    const struct {
        double advanceTo;
        std::vector<int> tagsSoFar;
        std::optional<double> next;
    } steps[] = {
        { -1, {}, 0.0 },
        { 0, { 1 }, 10.0 },
        { 19.999, { 1, 2 }, 20.0 },
        { 20.5, { 1, 2, 4, 7 }, 30.0 },
        { 29, { 1, 2, 4, 7 }, 30.0 },
    };
    for (const auto &s : steps) {
        provider->advanceTo(s.advanceTo);
        EXPECT_EQ(tags, s.tagsSoFar) << "at " << s.advanceTo;
        EXPECT_EQ(provider->nextPacketTime(), s.next) << "at " << s.advanceTo;
        EXPECT_EQ(finished, 0);
    }
    provider->advanceTo(30);
    EXPECT_EQ(tags, (std::vector<int> { 1, 2, 4, 7, 8 }));
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(provider->nextPacketTime(), std::nullopt);
    provider->advanceTo(1e9);
    EXPECT_EQ(finished, 1);

    EXPECT_EQ(provider->malformedMessages(),
        (std::vector<std::string> {
            "line 4: data_tag 'XYZ' is not 1 to 4 hexadecimal digits",
            "line 8: a quote is not closed",
            "line 10: time_ms 15 goes back before 20",
            "line 11: longer than 65536 bytes",
        }));
}

TEST_F(ReplayTest, RealTimePacesPacketsAtTheirInstants)
{
    GuiThread gui;
    constexpr int kCount = 21;
    constexpr double kStepMs = 10; // 200 ms from first to last
    auto provider = replay(evenlySpaced(kCount, kStepMs), Pacing::RealTime);
    std::vector<double> lateness;
    QElapsedTimer clock;
    QObject::connect(provider.get(), &DataProvider::packetsArrived, [&](const PacketBatch &b) {
        for (const PacketNotification &p : b)
            lateness.push_back(clock.nsecsElapsed() / 1e6 - (p.Datatag - 1) * kStepMs);
    });
    clock.start();
    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    ASSERT_TRUE(gui.runUntil([&] { return finished == 1; }, 5s));
    ASSERT_EQ(tags.size(), std::size_t(kCount));
    for (int i = 0; i < kCount; ++i) {
        EXPECT_EQ(tags[i], i + 1);
        // The clock starts before OpenInterface, so a packet on time is never "early" here.
        EXPECT_GE(lateness[i], 0.0) << "packet " << i;
        EXPECT_LT(lateness[i], 50.0) << "packet " << i; // the machine may be busy
    }
}

TEST_F(ReplayTest, CloseInterfaceStopsAReplayForGood)
{
    GuiThread gui;
    auto provider = replay(evenlySpaced(1000, 10), Pacing::RealTime); // 10 s
    provider->OpenInterface(0, 0);
    gui.runUntil([&] { return tags.size() >= 5; }, 2s);
    provider->CloseInterface();
    gui.runUntil([] { return false; }, 10ms); // batches queued before the close
    const std::size_t played = tags.size();
    gui.runUntil([] { return false; }, 100ms);
    EXPECT_EQ(tags.size(), played);
    EXPECT_LT(played, 100u);
    EXPECT_EQ(finished, 0);
    EXPECT_EQ(provider->OpenInterface(0, 0), 1) << "a recording plays once";
}

// A FIFO whose writer stays quiet, and a file that never ends, hold neither a close nor a stop.
TEST_F(ReplayTest, SourcesThatNeverEndStopWhenAsked)
{
    GuiThread gui;
    const std::string fifo = m_dir.filePath("live").toStdString();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const int writer = ::open(fifo.c_str(), O_RDWR | O_CLOEXEC); // held open, writing nothing more
    ASSERT_GE(writer, 0);
    const std::string line = "0,1,0001,5,0,-60,100,0,0\n";
    ASSERT_EQ(::write(writer, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    const struct {
        const char *name;
        std::string path;
        Pacing pacing;
    } cases[] = {
        { "quiet FIFO, real time", fifo, Pacing::RealTime },
        { "endless file, real time", "/dev/zero", Pacing::RealTime },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        auto provider = ReplayProvider::create(c.path, c.pacing);
        ASSERT_EQ(provider->OpenInterface(0, 0), 0);
        gui.runUntil([] { return false; }, 200ms);
        QElapsedTimer closing;
        closing.start();
        provider->CloseInterface();
        EXPECT_LT(closing.elapsed(), 500);
    }

    // On virtual time the caller's own stop is asked while the FIFO keeps quiet.
    std::atomic<bool> stop { false };
    auto provider = ReplayProvider::create(fifo, Pacing::Virtual);
    provider->setInterruption([&] { return stop.load(); });
    provider->OpenInterface(0, 0);
    ASSERT_EQ(::write(writer, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    EXPECT_EQ(provider->nextPacketTime(), 0.0);
    QElapsedTimer waiting;
    waiting.start();
    std::thread stopper([&] {
        std::this_thread::sleep_for(300ms);
        stop = true;
    });
    provider->advanceTo(0); // plays the packet, then waits to learn whether more are due
    EXPECT_EQ(provider->nextPacketTime(), std::nullopt);
    stopper.join();
    EXPECT_LT(waiting.elapsed(), 1000);
    ::close(writer);
}

// The description names the recording and the system's reason.
TEST_F(ReplayTest, CreationFailsNamingTheFileAndTheReason)
{
    const std::string missing = m_dir.filePath("missing.csv").toStdString();
    const std::string noFolder = m_dir.filePath("none/r.csv").toStdString();
    const std::string folder = m_dir.path().toStdString();
    const struct {
        std::string path;
        int number;
        std::string description;
    } cases[] = {
        { missing, 53, "Cannot open the recording " + missing + ": File not found" },
        { noFolder, 76, "Cannot open the recording " + noFolder + ": Path not found" },
        { folder, 75, "Cannot open the recording " + folder + ": Path/File access error" },
    };
    for (const auto &c : cases) {
        try {
            ReplayProvider::create(c.path);
            ADD_FAILURE() << c.path << " opened";
        } catch (const VbError &e) {
            EXPECT_EQ(e.number(), c.number) << c.path;
            EXPECT_EQ(e.description(), c.description);
        }
    }
}

} // namespace
} // namespace corvalog
