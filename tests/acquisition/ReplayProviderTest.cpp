#include "acquisition/ReplayProvider.h"

#include "runtime/VbError.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>
#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace corvalog {
namespace {

using Pacing = ReplayProvider::Pacing;

// Real-time replays hand batches over through the event loop.
void ensureApplication()
{
    static int argc = 1;
    static char name[] = "acquisition_tests";
    static char *argv[] = { name, nullptr };
    if (!QCoreApplication::instance())
        new QCoreApplication(argc, argv);
}

class ReplayTest : public ::testing::Test
{
protected:
    std::string write(const std::string &contents)
    {
        const std::string path = m_dir.filePath("recording.csv").toStdString();
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }

    // A recording of `count` packets, `stepMs` apart, tags 1, 2, 3, ...
    std::string writeEvenlySpaced(int count, double stepMs)
    {
        std::string text = recordingHeader();
        for (int i = 0; i < count; ++i) {
            RecordedPacket p;
            p.timeMs = i * stepMs;
            p.packet.Datatag = i + 1;
            p.packet.Value = std::to_string(i);
            text += recordingLine(p);
        }
        return write(text);
    }

    QTemporaryDir m_dir;
};

struct Received {
    std::vector<int> tags;
    std::vector<std::size_t> batchSizes;
    int finished = 0;

    void listen(ReplayProvider &provider)
    {
        QObject::connect(&provider, &DataProvider::packetsArrived, [this](const PacketBatch &b) {
            batchSizes.push_back(b.size());
            for (const PacketNotification &p : b)
                tags.push_back(p.Datatag);
        });
        QObject::connect(&provider, &ReplayProvider::finished, [this] { ++finished; });
    }
};

TEST_F(ReplayTest, VirtualTimeDeliversGoodPacketsInOrderAndReportsBadLines)
{
    const std::string path = write(recordingHeader() // lines 1 and 2
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
          "30,1,0008,1,0,-60,100,0,0"); // no line end after the last line
    auto provider = ReplayProvider::create(path, Pacing::Virtual);
    Received got;
    got.listen(*provider);

    ASSERT_EQ(provider->nextPacketTime(), 0.0);
    provider->advanceTo(100);
    EXPECT_TRUE(got.tags.empty()) << "nothing plays before OpenInterface";

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
        EXPECT_EQ(got.tags, s.tagsSoFar) << "at " << s.advanceTo;
        EXPECT_EQ(provider->nextPacketTime(), s.next) << "at " << s.advanceTo;
        EXPECT_EQ(got.finished, 0);
    }
    provider->advanceTo(30);
    EXPECT_EQ(got.tags, (std::vector<int> { 1, 2, 4, 7, 8 }));
    EXPECT_EQ(got.finished, 1);
    EXPECT_TRUE(provider->isFinished());
    EXPECT_EQ(provider->nextPacketTime(), std::nullopt);
    provider->advanceTo(1e9);
    EXPECT_EQ(got.finished, 1);

    EXPECT_EQ(provider->packetCount(), 5u);
    EXPECT_EQ(provider->malformedCount(), 4u);
    EXPECT_EQ(provider->malformedMessages(),
        (std::vector<std::string> {
            "line 4: data_tag 'XYZ' is not 1 to 4 hexadecimal digits",
            "line 8: a quote is not closed",
            "line 10: time_ms 15 goes back before 20",
            "line 11: longer than 65536 bytes",
        }));
}

TEST_F(ReplayTest, VirtualTimeKeepsBatchesBoundedAndReasonsFew)
{
    std::string text;
    for (std::size_t i = 0; i < ReplayProvider::kMaxBatch + 10; ++i)
        text += "5,1,0012,1,0,-60,100,0,0\n";
    for (std::size_t i = 0; i < ReplayProvider::kKeptMessages + 5; ++i)
        text += "5,1,xyz,1,0,-60,100,0,0\n";
    auto provider = ReplayProvider::create(write(text), Pacing::Virtual);
    Received got;
    got.listen(*provider);
    provider->OpenInterface(0, 0);
    provider->advanceTo(5);
    EXPECT_EQ(got.batchSizes, (std::vector<std::size_t> { ReplayProvider::kMaxBatch, 10 }));
    EXPECT_EQ(provider->malformedCount(), ReplayProvider::kKeptMessages + 5);
    EXPECT_EQ(provider->malformedMessages().size(), ReplayProvider::kKeptMessages);
}

TEST_F(ReplayTest, RealTimePacesPacketsAtTheirInstants)
{
    ensureApplication();
    constexpr int kCount = 21;
    constexpr double kStepMs = 10; // 200 ms from first to last
    auto provider = ReplayProvider::create(writeEvenlySpaced(kCount, kStepMs));
    std::vector<int> tags;
    std::vector<double> lateness;
    QElapsedTimer clock;
    QObject::connect(provider.get(), &DataProvider::packetsArrived, [&](const PacketBatch &b) {
        const double now = clock.nsecsElapsed() / 1e6;
        for (const PacketNotification &p : b) {
            tags.push_back(p.Datatag);
            lateness.push_back(now - (p.Datatag - 1) * kStepMs);
        }
    });
    QEventLoop loop;
    QObject::connect(provider.get(), &ReplayProvider::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);

    clock.start();
    ASSERT_EQ(provider->OpenInterface(0, 0), 0);
    loop.exec();

    ASSERT_TRUE(provider->isFinished());
    ASSERT_EQ(tags.size(), std::size_t(kCount));
    for (int i = 0; i < kCount; ++i) {
        EXPECT_EQ(tags[i], i + 1);
        // The clock starts before OpenInterface, so a packet on time is never "early" here.
        EXPECT_GE(lateness[i], 0.0) << "packet " << i;
        EXPECT_LT(lateness[i], 50.0) << "packet " << i; // the machine may be busy
    }
}

TEST_F(ReplayTest, CloseInterfaceStopsAReplayMidway)
{
    ensureApplication();
    auto provider = ReplayProvider::create(writeEvenlySpaced(1000, 10)); // 10 s
    Received got;
    got.listen(*provider);
    const auto pump = [](int ms) {
        QEventLoop loop;
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        loop.exec();
    };
    provider->OpenInterface(0, 0);
    pump(100);

    const auto before = std::chrono::steady_clock::now();
    provider->CloseInterface();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(50))
        << "the sleeping worker must wake to stop";
    pump(10);
    const std::size_t played = got.tags.size();
    EXPECT_GT(played, 0u);
    pump(100);
    EXPECT_EQ(got.tags.size(), played);
    EXPECT_EQ(got.finished, 0);
    EXPECT_FALSE(provider->isFinished());
    EXPECT_EQ(provider->OpenInterface(0, 0), 1) << "a recording plays once";
}

TEST_F(ReplayTest, CreationFailsWithTheFileError)
{
    const struct {
        std::string path;
        int number;
        const char *description;
    } cases[] = {
        { m_dir.filePath("missing.csv").toStdString(), 53, "File not found" },
        { m_dir.filePath("none/x.csv").toStdString(), 76, "Path not found" },
        { m_dir.path().toStdString(), 75, "Path/File access error" },
    };
    for (const auto &c : cases) {
        try {
            ReplayProvider::create(c.path);
            ADD_FAILURE() << c.path << " opened";
        } catch (const VbError &e) {
            EXPECT_EQ(e.number(), c.number) << c.path;
            EXPECT_EQ(e.description(), c.description) << c.path;
        }
    }
}

} // namespace
} // namespace corvalog
