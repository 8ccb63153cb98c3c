// corvalog-cli against a base station on a pseudo-terminal: the emulator a user runs, and the
// verbs and sources that reach it over the line.
#include "ChildProcess.h"
#include "CliFixture.h"

#include <chrono>
#include <csignal>
#include <thread>

using namespace corvalog;

namespace {

// The emulator on a link in the test's folder, up once the link is there.
class CliBaseStation : public Cli
{
protected:
    void SetUp() override
    {
        for (int tries = 0; tries < 250 && !std::filesystem::is_symlink("bs"); ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ASSERT_TRUE(std::filesystem::is_symlink("bs")) << emulator.err();
    }
    ChildProcess emulator { cli("basestation --link bs --seed 3") };
};

TEST_F(CliBaseStation, CommandsAndLogsGoOverTheLine)
{
    writeFile("one.lws",
        "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=1\nlogInterval=100\n"
        "DataTagList1=<0C01>\nFormat1=0\nCaption1=Counter\n");
    const struct {
        std::string words, out;
        int exitCode;
    } cases[] = {
        { "command --source serial:bs --workspace one.lws pause 0C01",
            "Channel 1 ID:C01 pausing. Attempt 0\nChannel 1: the module is paused.\n", 0 },
        { "command --source serial:bs:921600 resume c01",
            "Channel 0 ID:C01 resuming. Attempt 0\nChannel 0: the module is running again.\n", 0 },
        { "command --source serial:bs wake", "", 0 },
        { "command --source serial:bs sleep", "", 0 },
        { "command --source serial:bs keepawake", "", 0 },
        { "command --source serial:bs", "", 2 },
        { "command --source serial:bs pause", "", 2 },
        { "command --source serial:bs jump", "", 2 },
        { "command --source serial:bs: wake", "", 2 },
        { "command --source serial:bs:fast wake", "", 2 },
        { "log --workspace one.lws --source serial:bs --virtual-time", "", 2 },
    };
    for (const auto &c : cases) {
        const ChildResult r = runChild(cli(c.words));
        EXPECT_EQ(r.out, c.out) << c.words << "\n" << r.err;
        EXPECT_EQ(r.exitCode, c.exitCode) << c.words << "\n" << r.err;
    }

    // The counter module counts up once a packet: a log over the line shows it rising.
    const ChildResult log
        = runChild(cli("log --workspace one.lws --source serial:bs --duration 1 --out l.csv"));
    EXPECT_EQ(log.exitCode, 0) << log.err;
    const std::string rows = fileText("l.csv");
    EXPECT_GE(lines(rows), 7u) << rows;
    EXPECT_EQ(rows.find("Date,Time,Elapsed mS,Counter\r\n"), 0u) << rows;

    emulator.signal(SIGINT);
    ASSERT_TRUE(emulator.wait(5000));
    EXPECT_EQ(emulator.exitCode(), 0);
    EXPECT_NE(emulator.err().find("refused 0 lines"), std::string::npos) << emulator.err();
    EXPECT_FALSE(std::filesystem::exists("bs"));
}

// A line that is not there: the program's warnings on stderr, and the command fails.
TEST_F(Cli, ACommandToAMissingLineSaysWhy)
{
    const ChildResult r = runChild(cli("command --source serial:/nonexistent/tty wake"));
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("Cannot attach to USB bus!"), std::string::npos) << r.err;
    EXPECT_NE(
        r.err.find("Cannot open /nonexistent/tty: No such file or directory"), std::string::npos)
        << r.err;
    EXPECT_NE(r.err.find("Cannot detect basestation!"), std::string::npos) << r.err;
}

} // namespace
