#include "acquisition/SerialProvider.h"

#include "GuiThread.h"
#include "RecordingPrompts.h"
#include "ScriptedBaseStation.h"
#include "acquisition/InterfaceInit.h"
#include "acquisition/ModuleCommands.h"
#include "acquisition/PacketPump.h"
#include "acquisition/SourceLosses.h"
#include "runtime/Clock.h"
#include "runtime/VbError.h"
#include "values/ScriptClass.h"

#include <QTemporaryDir>
#include <chrono>
#include <deque>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// What a base station answers each command with, by operation; silence for those not named.
using Answers = std::map<std::string, std::function<Lines(const bsp::CommandLine &)>>;

ScriptedBaseStation::Reply station(Answers answers)
{
    return [answers = std::move(answers)](const std::string &line) -> Lines {
        bsp::CommandLine c;
        std::string error;
        if (!bsp::parseCommandLine(line, c, error))
            return {};
        const auto found = answers.find(c.operation);
        return found == answers.end() ? Lines {} : found->second(c);
    };
}

std::function<Lines(const bsp::CommandLine &)> result(const std::string &value)
{
    return
        [value](const bsp::CommandLine &c) { return Lines { bsp::answerText(c.seq, { value }) }; };
}

// A base station at any address that answers every command as it should.
Answers polite()
{
    return { { "DETECT", result("1") }, { "SETCHANNEL", result("0") }, { "SEND", result("0") },
        { "VERSION", [](const bsp::CommandLine &c) {
             return Lines { bsp::answerText(c.seq, { "2.5", "1.0" }) };
         } } };
}

// The commands as they went over the line, without their numbers ("DETECT,7").
Lines operations(const Lines &lines)
{
    Lines ops;
    for (const std::string &line : lines) {
        bsp::CommandLine c;
        std::string error;
        if (bsp::parseCommandLine(line, c, error)) {
            std::string op = c.operation;
            for (const std::string &a : c.arguments)
                op += "," + a;
            ops.push_back(op);
        }
    }
    return ops;
}

class StatusLines final : public StatusDisplay
{
public:
    void ShowMessage(const std::string &message, const std::string &) override
    {
        lines.push_back(message);
    }
    bool StatusClosed() const override { return false; }
    Lines lines;
};

// The driver on one end of a pseudo-terminal, a scripted base station on the other, and the
// program's side: pump, handler, tables and InterfaceInit's prompts.
class SerialLine : public ::testing::Test
{
protected:
    void start(Answers answers, SerialOptions options = {})
    {
        base = std::make_unique<ScriptedBaseStation>(station(std::move(answers)));
        if (options.device.empty() && options.settings.comDevices.empty()
            && options.settings.usbDevice.empty())
            options.device = base->device();
        options.reopenIntervalMs = 100;
        this->options = options;
        host.create();
        watch();
    }
    // Collects what the driver object of the moment delivers and tells.
    void watch()
    {
        QObject::connect(host.driver(), &DataProvider::packetsArrived, host.driver(),
            [this](const PacketBatch &batch) {
                for (const PacketNotification &p : batch)
                    values.push_back(p.Value);
            });
        QObject::connect(host.driver(), &DataProvider::noticed, host.driver(),
            [this](const QString &text, bool problem) {
                notices.push_back((problem ? "! " : "") + text.toStdString());
            });
    }
    SerialProvider &driver() { return static_cast<SerialProvider &>(*host.driver()); }
    void activate(int address = 1, int channel = 1)
    {
        workspace.Interface = 1;
        workspace.Port = 3;
        workspace.Baudrate = 115200;
        workspace.BSAddress = address;
        workspace.RFChannel = channel;
        InterfaceInit(host, workspace, prompts, { [] {}, [](std::int32_t) {} });
        watch();
    }
    Lines messages() const
    {
        Lines texts;
        for (const auto &m : prompts.messages)
            texts.push_back(m.text);
        return texts;
    }
    bool waitFor(const std::function<bool()> &done) { return gui.runUntil(done, 3000ms); }

    GuiThread gui;
    std::unique_ptr<ScriptedBaseStation> base;
    SerialOptions options;
    ManualClock clock;
    ScriptClass tables { clock };
    PacketHandler handler { tables, NumberLocale::point() };
    PacketPump pump { handler };
    DriverHost host { [this] { return std::make_unique<SerialProvider>(options); }, pump };
    WorkspaceClass workspace;
    RecordingPrompts prompts;
    Lines values;
    Lines notices;
};

// Activation over the line: the commands carry the workspace's address and radio channel, and
// each way a base station can fail gives the program's own warning.
TEST_F(SerialLine, ActivationSendsTheWorkspacesSettingsAndWarnsAsTheProgramDoes)
{
    const auto fail = [](const bsp::CommandLine &c) {
        return Lines { bsp::failureText(c.seq, 17, "radio busy") };
    };
    struct Case {
        const char *name;
        Answers answers;
        Lines sent;
        Lines warnings;
    } cases[] = {
        { "answers", polite(), { "DETECT,7", "SETCHANNEL,7,12" }, {} },
        { "no base station", { { "DETECT", result("0") } }, { "DETECT,7" },
            { "Cannot detect basestation!" } },
        { "silent", {}, { "DETECT,7" }, { "Cannot detect basestation!" } },
        { "garbled detect", { { "DETECT", result("yes") } }, { "DETECT,7" },
            { "Cannot detect basestation!" } },
        { "channel refused", { { "DETECT", result("1") }, { "SETCHANNEL", fail } },
            { "DETECT,7", "SETCHANNEL,7,12" }, { "Cannot read channel number from basestation!" } },
    };
    for (Case &c : cases) {
        SCOPED_TRACE(c.name);
        prompts.messages.clear();
        start(c.answers);
        const auto began = std::chrono::steady_clock::now();
        activate(7, 12);
        const auto took = std::chrono::steady_clock::now() - began;
        EXPECT_EQ(operations(base->lines()), c.sent);
        EXPECT_EQ(messages(), c.warnings);
        // Only silence waits, and no longer than the answer limit allows.
        if (c.answers.empty())
            EXPECT_TRUE(took >= 1000ms && took < 1500ms);
        else
            EXPECT_LT(took, 500ms);
    }
}

TEST_F(SerialLine, ADeviceThatCannotOpenIsNamedWithTheSystemsReason)
{
    SerialOptions com;
    com.settings.comDevices[3] = "/nonexistent/ttyBS";
    start(polite(), com);
    activate();
    ASSERT_EQ(messages().size(), 2u);
    EXPECT_EQ(messages()[0],
        "Cannot open COM port 3 at 115200 baud!\r\nError: Cannot open /nonexistent/ttyBS: No "
        "such file or directory");
    EXPECT_EQ(messages()[1], "Cannot detect basestation!");

    SerialOptions usb;
    usb.settings.usbDevice = "/nonexistent/ttyUSB9";
    start(polite(), usb);
    workspace.Interface = 0;
    InterfaceInit(host, workspace, prompts, { [] {}, [](std::int32_t) {} });
    EXPECT_EQ(messages()[2],
        "Cannot attach to USB bus!\r\nError: Cannot open /nonexistent/ttyUSB9: No such file or "
        "directory");
}

// Pause retried over the line: SEND carries the module's tag and code 57 with data "0", each
// refusal is one progress line, and a failure line is the driver's error.
TEST_F(SerialLine, PauseAndResumeRetryOverTheLine)
{
    auto statuses
        = std::make_shared<std::deque<std::string>>(std::deque<std::string> { "1", "1", "0" });
    Answers answers = polite();
    answers["SEND"] = [statuses](const bsp::CommandLine &c) {
        if (c.arguments.at(2) == "59")
            return Lines { bsp::failureText(c.seq, -2147220990, "module asleep, try later") };
        const std::string status = statuses->front();
        statuses->pop_front();
        return Lines { bsp::answerText(c.seq, { status }) };
    };
    start(answers);
    activate();
    StatusLines status;
    EXPECT_TRUE(PauseResume(host, workspace, status, 1, 0xFF12, 3, [](std::int32_t) {}));
    EXPECT_EQ(status.lines,
        (Lines { "!Channel 3 ID:FF12 pausing. Attempt 0", "!Channel 3 ID:FF12 pausing. Attempt 1",
            "!Channel 3 ID:FF12 pausing. Attempt 2" }));
    const Lines ops = operations(base->lines());
    EXPECT_EQ(Lines(ops.end() - 3, ops.end()), Lines(3, "SEND,1,FF12,57,0"));

    try {
        PauseResume(host, workspace, status, 0, 0x12, 1, [](std::int32_t) {});
        ADD_FAILURE() << "the failure line did not raise";
    } catch (const VbError &e) {
        EXPECT_EQ(e.number(), -2147220990);
        EXPECT_EQ(e.description(), "module asleep, try later");
    }
    EXPECT_EQ(operations(base->lines()).back(), "SEND,1,0012,59,0");
}

// Commands nobody waits for are on the line even when it closes right after them (a script's
// last SLEEP).
TEST_F(SerialLine, UnwaitedCommandsReachTheLineBeforeItCloses)
{
    start(polite());
    ASSERT_EQ(driver().OpenInterface(1, 115200), 0);
    driver().WakeAll(4);
    driver().SleepAll();
    driver().KeepAwakeAll();
    driver().CloseInterface();
    ASSERT_TRUE(waitFor([&] { return base->lines().size() == 3; }));
    EXPECT_EQ(operations(base->lines()), (Lines { "WAKE,4", "SLEEP", "KEEPAWAKE" }));
    EXPECT_THROW(driver().SleepAll(), VbError) << "a closed line takes no command";
}

// While a command waits nothing else runs, and the packets that came meanwhile follow in order.
TEST_F(SerialLine, PacketsThatArriveDuringACommandKeepTheirOrder)
{
    Answers answers = polite();
    answers["VERSION"] = [](const bsp::CommandLine &c) {
        Lines out;
        for (int n = 1; n <= 5; ++n)
            out.push_back("P,1,FF12," + std::to_string(n) + ",0,-60,90,0,0\r\n");
        out.push_back(bsp::answerText(c.seq, { "3.0", "4.5" }));
        out.push_back("P,1,FF12,6,0,-60,90,0,0\n");
        return out;
    };
    start(answers);
    ASSERT_EQ(driver().OpenInterface(3, 921600), 0);
    EXPECT_FLOAT_EQ(driver().ComVersion(), 3.0f);
    EXPECT_TRUE(values.empty()) << "a packet was handled while the command waited";
    EXPECT_FLOAT_EQ(driver().DllVersion(), 4.5f);
    ASSERT_TRUE(waitFor([&] { return values.size() == 6; }));
    EXPECT_EQ(values, (Lines { "1", "2", "3", "4", "5", "6" }));
    EXPECT_EQ(operations(base->lines()), Lines { "VERSION" }) << "versions are asked once";
    EXPECT_EQ(tables.T(0xFF12), 6.0f);
}

// Lines that break the protocol are counted with their device and line number; the good ones
// around them all arrive.
TEST_F(SerialLine, LinesThatBreakTheProtocolAreCountedAndSkipped)
{
    start(polite());
    ASSERT_EQ(driver().OpenInterface(1, 9600), 0);
    const Lines bad = { "X,1,2", "P,1,ZZZZZ,1,0,0,0,0,0", "P,1,FF12", "R,0,1", "R,abc,1",
        "E,3,many,why", "\"unclosed", std::string(2000, 'P'), "Pure nonsense" };
    std::string stream = "# hello\n\n";
    for (std::size_t n = 0; n < bad.size(); ++n)
        stream += bad[n] + "\nP,1,0012," + std::to_string(n) + ",0,-60,90,0,0\n";
    base->send(stream);
    ASSERT_TRUE(waitFor([&] { return values.size() == bad.size(); }));
    EXPECT_EQ(driver().malformedCount(), bad.size());
    const Lines reasons = driver().malformedMessages();
    ASSERT_EQ(reasons.size(), bad.size());
    EXPECT_EQ(reasons[0], base->device() + " line 3: not a P, R, E or # line");
    EXPECT_NE(reasons[7].find("longer than 1024 bytes"), std::string::npos) << reasons[7];
    EXPECT_EQ(values.back(), std::to_string(bad.size() - 1));
    // The program tells them with its other losses.
    EXPECT_NE(
        lossWarning(sourceLosses(driver(), 0, 0))
            .find("9 lines could not be read and were skipped (the first: " + reasons[0] + ")"),
        std::string::npos);
}

// A line that hangs up is told once, reopened, retuned, and its packets flow again.
TEST_F(SerialLine, ABaseStationThatHangsUpIsReopenedAndRetuned)
{
    QTemporaryDir dir;
    const std::string link = dir.filePath("bs").toStdString();
    auto first = std::make_unique<ScriptedBaseStation>(station(polite()));
    first->linkAt(link);
    SerialOptions o;
    o.device = link;
    start(polite(), o);
    base = std::move(first);
    activate(2, 9);
    ASSERT_TRUE(messages().empty()) << messages().front();
    base->send("P,1,FF12,1,0,-60,90,0,0\n");
    ASSERT_TRUE(waitFor([&] { return tables.T(0xFF12) == 1.0f; }));

    base->hangUp();
    ASSERT_TRUE(waitFor([&] { return !notices.empty(); }));
    EXPECT_EQ(notices.front().rfind("! The base station on " + link + " was lost (", 0), 0u)
        << notices.front();
    std::uint8_t address = 2, code = 57;
    std::string data = "0";
    EXPECT_THROW(driver().SendCommand(address, 0xFF12, code, data), VbError);

    gui.runUntil([] { return false; }, 300ms);
    EXPECT_EQ(notices.size(), 1u) << "told once, not at every attempt";
    auto second = std::make_unique<ScriptedBaseStation>(station(polite()));
    second->linkAt(link);
    ASSERT_TRUE(waitFor([&] { return notices.size() == 2; }));
    EXPECT_EQ(notices[1], "The base station on " + link + " is back.");
    ASSERT_TRUE(waitFor([&] { return second->lines().size() == 2; }));
    EXPECT_EQ(operations(second->lines()), (Lines { "DETECT,2", "SETCHANNEL,2,9" }));
    second->send("P,1,FF12,2,0,-60,90,0,0\n");
    ASSERT_TRUE(waitFor([&] { return tables.T(0xFF12) == 2.0f; }));
    EXPECT_EQ(driver().SendCommand(address, 0xFF12, code, data), 0);
}

} // namespace
} // namespace corvalog
