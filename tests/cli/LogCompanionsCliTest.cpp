// The files beside a log written by corvalog-cli log: whole lines only, even when the tool is
// killed, and a metadata document that reads.
#include "ChildProcess.h"
#include "CliFixture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <chrono>
#include <csignal>
#include <thread>

using namespace corvalog;

namespace {

// The load cell's noise flaps around 12.5, so a limit there gives events every few rows.
const char *const kWorkspace = "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=2\nlogInterval=20\n"
                               "DataTagList1=<FF12>\nFormat1=0.000\nCaption1=Load, kg\n"
                               "Overload1=12.5\nUnderload1=12.49\nTareValue1=0\n"
                               "DataTagList2=1/0\nCaption2=Broken\n";

std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    EXPECT_EQ(start, text.size()) << "a part line at the end";
    return lines;
}

TEST_F(Cli, EventsAndMetadataSurviveAKill)
{
    writeFile("w.lws", kWorkspace);
    ChildProcess log(cli("log --workspace w.lws --source sim:4 --out run.csv"));
    for (int tries = 0; tries < 200 && lines(fileText("run.csv")) < 60; ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    log.signal(SIGKILL);
    ASSERT_TRUE(log.wait(5000));

    const std::vector<std::string> events = linesOf(fileText("run.events.csv"));
    ASSERT_GE(events.size(), 4u) << fileText("run.events.csv");
    EXPECT_EQ(events[0], "Date,Time,Elapsed mS,Channel,Caption,Event,Value,Limit");
    // The channel that never evaluates goes into error once.
    std::size_t crossings = 0;
    std::size_t brokenEvents = 0;
    for (std::size_t i = 1; i < events.size(); ++i) {
        const std::string &e = events[i];
        if (e.find(",2,Broken,") != std::string::npos) {
            ++brokenEvents;
            EXPECT_NE(e.find(",2,Broken,error,"), std::string::npos) << e;
        }
        crossings += e.find(",1,\"Load, kg\",over,") != std::string::npos
            || e.find(",1,\"Load, kg\",under,") != std::string::npos;
        EXPECT_TRUE(e.back() != ',' || e.find(",error,") != std::string::npos) << e;
    }
    EXPECT_GE(crossings, 2u);
    EXPECT_EQ(brokenEvents, 1u);

    const QJsonObject meta
        = QJsonDocument::fromJson(QByteArray::fromStdString(fileText("run.meta.json"))).object();
    EXPECT_EQ(meta["source"].toString(), "sim:4");
    EXPECT_EQ(meta["driver"].toString(), "Corvalog simulated base station");
    EXPECT_EQ(meta["decimal"].toString(), "point");
    EXPECT_EQ(meta["workspace"]["items"][0]["Caption"].toString(), "Load, kg");
}

// A log on standard output has no name to put files beside.
TEST_F(Cli, ALogOnStandardOutputHasNoCompanions)
{
    writeFile("w.lws", kWorkspace);
    const ChildResult r = runChild(cli("log --workspace w.lws --source sim:4 --duration 1 "
                                       "--virtual-time"));
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_GE(lines(r.out), 40u);
    EXPECT_FALSE(std::filesystem::exists(".events.csv"));
    EXPECT_EQ(std::distance(
                  std::filesystem::directory_iterator("."), std::filesystem::directory_iterator()),
        1);
}

} // namespace
