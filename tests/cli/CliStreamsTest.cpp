// The logger and the recorder writing to files, pipes and FIFOs, on full disks, stopped by
// signals and deadlines while something waits.
#include "ChildProcess.h"
#include "CliFixture.h"
#include "SmallDisk.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace corvalog;
using namespace std::chrono_literals;

namespace {

using CliStreams = Cli;

// The rows due up to the end, no more and no fewer: as on virtual time.
TEST_F(CliStreams, ALiveRunWritesTheRowDueAtItsEnd)
{
    const ChildResult live = runChild(logRun(125, "--source sim --duration 1"));
    const ChildResult simulated = runChild(logRun(125, "--source sim --duration 1 --virtual-time"));
    EXPECT_EQ(live.exitCode, 0) << live.err;
    EXPECT_EQ(lines(live.out), 1u + 8u) << live.out;
    EXPECT_EQ(lines(simulated.out), 1u + 8u);
    EXPECT_LT(live.seconds, 2.5);
}

// A FIFO or pipe: written as its reader takes it; a reader that leaves ends the run at once.
TEST_F(CliStreams, AReaderThatLeavesEndsTheRunAtOnce)
{
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    const std::pair<const char *, std::vector<std::string>> cases[] = {
        { "log to a FIFO", logRun(20, "--source sim --out fifo") },
        { "log to standard output, a pipe", logRun(20, "--source sim") },
        { "record to a FIFO", cli("record --source sim --out fifo") },
    };
    for (const auto &[name, argv] : cases) {
        SCOPED_TRACE(name);
        const bool toFifo = argv.back() == "fifo";
        int ends[2] = { -1, -1 };
        ChildProcess::Options o;
        if (!toFifo) {
            ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            o.stdoutFd = ends[1];
        }
        ChildProcess child(argv, o);
        ::close(ends[1]);
        // Opening the FIFO waits for the writer.
        const int reader = toFifo ? ::open("fifo", O_RDONLY | O_CLOEXEC) : ends[0];
        char buffer[256];
        ASSERT_GT(::read(reader, buffer, sizeof buffer), 0); // the header at least
        std::this_thread::sleep_for(300ms);
        ::close(reader);
        EXPECT_TRUE(child.wait(1500)) << "still running a while after its reader left";
        EXPECT_EQ(child.exitCode(), 1);
        EXPECT_NE(child.err().find("nothing reads"), std::string::npos) << child.err();
    }
}

// Neither a reader that takes nothing nor a source that sends nothing holds a stop up; nor does
// the longest duration end a run early.
TEST_F(CliStreams, StopsAndDeadlinesEndTheRunWhileSomethingWaits)
{
    ASSERT_EQ(::mkfifo("quiet", 0600), 0);
    const int quietWriter = ::open("quiet", O_RDWR | O_CLOEXEC); // never writes
    const struct {
        const char *name;
        bool stalledReader; // else the source is quiet; only a reader that takes nothing fails
        int signal; // 0: the duration ends the run
        const char *duration;
    } cases[] = {
        { "reader takes nothing, Ctrl+C", true, SIGINT, "" },
        { "reader takes nothing, duration", true, 0, " --duration 1" },
        { "quiet source, SIGTERM within the longest duration", false, SIGTERM,
            " --duration 2678400" },
        { "quiet source, duration", false, 0, " --duration 1" },
    };
    // All four run at once; the signalled ones are asked once they are surely waiting.
    std::vector<std::unique_ptr<ChildProcess>> runs;
    std::vector<int> readEnds;
    const auto started = std::chrono::steady_clock::now();
    for (const auto &c : cases) {
        int ends[2] = { -1, -1 };
        ChildProcess::Options o;
        if (c.stalledReader) {
            EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            ::fcntl(ends[1], F_SETPIPE_SZ, 4096); // full within a moment
            o.stdoutFd = ends[1];
        }
        const std::string out = "q" + std::to_string(runs.size()) + ".csv";
        runs.push_back(std::make_unique<ChildProcess>(c.stalledReader
                ? logRun(1, std::string("--source sim") + c.duration) // a row every millisecond
                : logRun(100, "--source replay:quiet --out " + out + c.duration),
            o));
        readEnds.push_back(ends[0]);
        ::close(ends[1]);
    }
    std::this_thread::sleep_for(500ms);
    const auto asked = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (cases[i].signal) {
            EXPECT_FALSE(runs[i]->wait(0)) << cases[i].name << ": ended before it was asked";
            runs[i]->signal(cases[i].signal);
        }
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        // A signalled run ends within a second of the signal; a timed one within 2.5 s of its
        // start.
        const auto due = cases[i].signal ? asked + 1000ms : started + 2500ms;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            due - std::chrono::steady_clock::now());
        EXPECT_TRUE(runs[i]->wait(static_cast<int>(std::max<std::int64_t>(left.count(), 0))))
            << "did not end in time";
        EXPECT_EQ(runs[i]->exitCode(), cases[i].stalledReader ? 1 : 0) << runs[i]->err();
        ::close(readEnds[i]);
    }
    ::close(quietWriter);
}

// A file emptied by another program (a copy-and-truncate rotation) is written on at its new
// end: no hole of NUL bytes, and the user is told once.
TEST_F(CliStreams, ALogEmptiedByAnotherProgramGoesOnAtItsNewEnd)
{
    ChildProcess child(logRun(20, "--source sim --out rotated.csv"));
    for (const auto wait : { 600ms, 300ms }) {
        std::this_thread::sleep_for(wait);
        ASSERT_EQ(::truncate("rotated.csv", 0), 0);
    }
    std::this_thread::sleep_for(300ms);
    child.signal(SIGINT);
    ASSERT_TRUE(child.wait(2000));
    const std::string text = fileText("rotated.csv");
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
    SmallDisk disk(4); // one page: full within a second
    if (!disk.available())
        GTEST_SKIP() << disk.why();
    const std::string r = disk.path("r.csv"), l = disk.path("l.csv");
    const ChildResult recorded
        = runChild({ CORVALOG_CLI_PATH, "record", "--source", "sim", "--out", r });
    EXPECT_EQ(recorded.exitCode, 1);
    EXPECT_NE(recorded.err.find("could not be written: Disk full (error 61)"), std::string::npos)
        << recorded.err;
    const std::string file = fileText(r);
    EXPECT_EQ(recorded.err.substr(recorded.err.rfind("Recorded ")),
        "Recorded " + std::to_string(lines(file) - 2) + " packets to " + r + "\n");
    EXPECT_EQ(file.back(), '\n');

    ::unlink(r.c_str());
    std::vector<std::string> argv = logRun(1, "--source sim --out");
    argv.push_back(l);
    const ChildResult logged = runChild(argv);
    EXPECT_EQ(logged.exitCode, 1);
    EXPECT_NE(logged.err.find("Disk full (error 61)"), std::string::npos) << logged.err;
    EXPECT_EQ(fileText(l).substr(fileText(l).size() - 2), "\r\n");
}

} // namespace
