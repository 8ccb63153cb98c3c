// corvalog-cli's logger and recorder as a script runs them: to files, pipes and FIFOs, on full
// disks, stopped by signals and deadlines while something waits.
#include "ChildProcess.h"
#include "FileText.h"
#include "SmallDisk.h"

#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace corvalog;
using namespace std::chrono_literals;

namespace {

const std::string kCli = CORVALOG_CLI_PATH;

class CliStreams : public ::testing::Test
{
protected:
    QTemporaryDir dir;

    std::string path(const std::string &name) const
    {
        return dir.filePath(QString::fromStdString(name)).toStdString();
    }

    // Two constant channels logged every `intervalMs`.
    std::string workspace(int intervalMs)
    {
        return writeFile(path("w" + std::to_string(intervalMs) + ".lws"),
            "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=2\nlogInterval="
                + std::to_string(intervalMs)
                + "\nDataTagList1=5/4\nFormat1=0.00\nDataTagList2=7\nFormat2=0\n");
    }

    std::vector<std::string> log(int intervalMs, std::vector<std::string> more)
    {
        std::vector<std::string> argv { kCli, "log", "--workspace", workspace(intervalMs) };
        argv.insert(argv.end(), more.begin(), more.end());
        return argv;
    }
};

std::size_t lines(const std::string &text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST_F(CliStreams, StandardOutputIsTheOneHandedDown)
{
    const std::string file = writeFile(path("out.csv"), "earlier run\r\n");
    const int fd = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    ChildProcess::Options o;
    o.stdoutFd = fd;
    const ChildResult r
        = runChild(log(500, { "--source", "sim", "--virtual-time", "--duration", "2" }), o);
    ::close(fd);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    const std::string text = fileText(file);
    EXPECT_EQ(text.rfind("earlier run\r\nDate,Time,Elapsed mS,Channel 1,Channel 2\r\n", 0), 0u)
        << text;
    EXPECT_EQ(lines(text), 1u + 1u + 4u);
}

// The rows due up to the end, no more and no fewer: as on virtual time.
TEST_F(CliStreams, ALiveRunWritesTheRowDueAtItsEnd)
{
    const ChildResult live = runChild(log(250, { "--source", "sim", "--duration", "2" }));
    const ChildResult simulated
        = runChild(log(250, { "--source", "sim", "--duration", "2", "--virtual-time" }));
    EXPECT_EQ(live.exitCode, 0) << live.err;
    EXPECT_EQ(lines(live.out), 1u + 8u) << live.out;
    EXPECT_EQ(lines(simulated.out), 1u + 8u);
    EXPECT_LT(live.seconds, 3.5);
}

TEST_F(CliStreams, TheStartIsTakenWholeWithItsFraction)
{
    const struct {
        const char *start;
        const char *firstTime; // of the row 250 ms in; nullptr: refused
    } cases[] = {
        { "2026-11-15T14:03:07.750", "14:03:08" },
        { "2026-11-15T14:03:07.700", "14:03:07" },
        { "2026-11-15 14:03", "14:03:00" },
        { "2026-11-15", "00:00:00" },
        { "2026-11-15T14:03:07Z", nullptr },
        { "2026-11-15T14:03:07xyz", nullptr },
        { "2026-11-15T14:03:07.", nullptr },
        { "2026-02-30T00:00:00", nullptr },
        { "2026-11-15T24:00:00", nullptr },
        { "2026-1-5", nullptr },
        { "0099-01-01", nullptr },
    };
    for (const auto &c : cases) {
        const ChildResult r = runChild(log(
            250, { "--source", "sim", "--virtual-time", "--duration", "1", "--start", c.start }));
        if (!c.firstTime) {
            EXPECT_EQ(r.exitCode, 2) << c.start;
            EXPECT_EQ(r.out, "") << c.start;
            continue;
        }
        EXPECT_EQ(r.exitCode, 0) << c.start << r.err;
        const std::size_t row = r.out.find("\r\n") + 2;
        EXPECT_EQ(r.out.substr(row + 11, 8), c.firstTime) << c.start;
    }
}

// A FIFO or pipe: written as its reader takes it; a reader that leaves ends the run at once.
TEST_F(CliStreams, AReaderThatLeavesEndsTheRunAtOnce)
{
    const std::string fifo = path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const struct {
        const char *name;
        bool useFifo;
        bool record;
    } cases[] = {
        { "log to a FIFO", true, false },
        { "log to standard output, a pipe", false, false },
        { "record to a FIFO", true, true },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ChildProcess::Options o;
        int reader = -1;
        if (!c.useFifo) {
            ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            o.stdoutFd = ends[1];
            reader = ends[0];
        }
        std::vector<std::string> argv = c.record
            ? std::vector<std::string> { kCli, "record", "--source", "sim", "--out", fifo }
            : log(20, { "--source", "sim" });
        if (c.useFifo && !c.record) {
            argv.push_back("--out");
            argv.push_back(fifo);
        }
        ChildProcess child(argv, o);
        if (c.useFifo)
            reader = ::open(fifo.c_str(), O_RDONLY | O_CLOEXEC); // waits for the writer
        else
            ::close(ends[1]);
        char buffer[256];
        ASSERT_GT(::read(reader, buffer, sizeof buffer), 0); // the header at least
        std::this_thread::sleep_for(300ms);
        ::close(reader);
        EXPECT_TRUE(child.wait(1500)) << "still running a while after its reader left";
        EXPECT_EQ(child.exitCode(), 1);
        EXPECT_NE(child.err().find("nothing reads"), std::string::npos) << child.err();
    }
}

// Neither a reader that takes nothing nor a source that sends nothing holds a stop up.
TEST_F(CliStreams, StopsAndDeadlinesEndTheRunWhileSomethingWaits)
{
    const std::string quietFifo = path("quiet");
    ASSERT_EQ(::mkfifo(quietFifo.c_str(), 0600), 0);
    const int quietWriter = ::open(quietFifo.c_str(), O_RDWR | O_CLOEXEC); // never writes
    const struct {
        const char *name;
        bool stalledReader; // else the source is quiet
        int signal; // 0: the duration ends the run
        int exitCode;
    } cases[] = {
        { "reader takes nothing, Ctrl+C", true, SIGINT, 1 },
        { "reader takes nothing, duration", true, 0, 1 },
        { "quiet FIFO source, SIGTERM", false, SIGTERM, 0 },
        { "quiet FIFO source, duration", false, 0, 0 },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        int ends[2] = { -1, -1 };
        ChildProcess::Options o;
        std::vector<std::string> argv;
        if (c.stalledReader) {
            ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            ::fcntl(ends[1], F_SETPIPE_SZ, 4096); // full within a moment
            o.stdoutFd = ends[1];
            argv = log(1, { "--source", "sim" }); // a row every millisecond fills the pipe
        } else {
            argv = log(100, { "--source", "replay:" + quietFifo, "--out", path("q.csv") });
        }
        if (!c.signal) {
            argv.push_back("--duration");
            argv.push_back("1");
        }
        ChildProcess child(argv, o);
        if (ends[1] >= 0)
            ::close(ends[1]);
        std::this_thread::sleep_for(c.signal ? 1500ms : 0ms);
        const auto asked = std::chrono::steady_clock::now();
        if (c.signal)
            child.signal(c.signal);
        EXPECT_TRUE(child.wait(c.signal ? 1000 : 2500)) << "did not end in time";
        EXPECT_EQ(child.exitCode(), c.exitCode) << child.err();
        EXPECT_LT(std::chrono::steady_clock::now() - asked, c.signal ? 1000ms : 2500ms);
        if (ends[0] >= 0)
            ::close(ends[0]);
    }
    ::close(quietWriter);
}

TEST_F(CliStreams, TheLongestDurationIsHonoured)
{
    ChildProcess child(
        log(100, { "--source", "sim", "--duration", "2678400", "--out", path("month.csv") }));
    EXPECT_FALSE(child.wait(1500)) << child.err();
    child.signal(SIGTERM);
    ASSERT_TRUE(child.wait(1000));
    EXPECT_EQ(child.exitCode(), 0);
    EXPECT_GE(lines(fileText(path("month.csv"))), 10u);
    EXPECT_EQ(runChild({ kCli, "log", "--workspace", workspace(100), "--source", "sim",
                           "--duration", "2678401" })
                  .exitCode,
        2);
}

// A file emptied by another program (a copy-and-truncate rotation) is written on at its new
// end: no hole of NUL bytes, and the user is told once.
TEST_F(CliStreams, ALogEmptiedByAnotherProgramGoesOnAtItsNewEnd)
{
    const std::string file = path("rotated.csv");
    ChildProcess child(log(20, { "--source", "sim", "--out", file }));
    std::this_thread::sleep_for(600ms);
    ASSERT_EQ(::truncate(file.c_str(), 0), 0);
    std::this_thread::sleep_for(300ms);
    ASSERT_EQ(::truncate(file.c_str(), 0), 0);
    std::this_thread::sleep_for(300ms);
    child.signal(SIGINT);
    ASSERT_TRUE(child.wait(2000));
    const std::string text = fileText(file);
    EXPECT_EQ(text.find('\0'), std::string::npos);
    EXPECT_GE(lines(text), 5u);
    EXPECT_EQ(text.rfind("Date", 0), std::string::npos); // the header went with the rotation
    const std::string err = child.err();
    const std::string told = "was emptied by another program";
    EXPECT_NE(err.find(told), std::string::npos) << err;
    EXPECT_EQ(err.find(told), err.rfind(told)) << "told more than once";
}

// On a disk that fills up, the recorder and the logger stop at the first write that fails,
// with the system's reason, and what they say they wrote is what the file holds.
TEST_F(CliStreams, AFullDiskStopsWithTheSystemsReason)
{
    SmallDisk disk(8);
    if (!disk.available())
        GTEST_SKIP() << disk.why();
    const ChildResult recorded
        = runChild({ kCli, "record", "--source", "sim", "--out", disk.path("r.csv") });
    EXPECT_EQ(recorded.exitCode, 1);
    EXPECT_NE(recorded.err.find("could not be written: Disk full (error 61)"), std::string::npos)
        << recorded.err;
    const std::string reported = recorded.err.substr(recorded.err.rfind("Recorded ") + 9);
    const std::string file = fileText(disk.path("r.csv"));
    EXPECT_EQ(
        std::to_string(lines(file) - 2) + " packets to " + disk.path("r.csv") + "\n", reported);
    EXPECT_EQ(file.back(), '\n');

    ::unlink(disk.path("r.csv").c_str());
    const ChildResult logged = runChild(log(1, { "--source", "sim", "--out", disk.path("l.csv") }));
    EXPECT_EQ(logged.exitCode, 1);
    EXPECT_NE(logged.err.find("Disk full (error 61)"), std::string::npos) << logged.err;
    const std::string rows = fileText(disk.path("l.csv"));
    EXPECT_EQ(rows.substr(rows.size() - 2), "\r\n");
}

} // namespace
