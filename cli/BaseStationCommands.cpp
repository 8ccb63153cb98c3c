#include "Commands.h"
#include "SourceOptions.h"
#include "StderrPrompts.h"
#include "ToolDriver.h"
#include "acquisition/BaseStationEmulator.h"
#include "acquisition/ModuleCommands.h"
#include "runtime/Convert.h"
#include "runtime/VbError.h"
#include "values/TagReplace.h"
#include "workspace/WorkspaceModule.h"

#include <QCoreApplication>
#include <QTimer>
#include <iostream>

namespace corvalog::cli {

namespace {

// Pause and resume's progress on standard output, one line an attempt; Ctrl+C is the status
// window's Cancel button.
class PrintedStatus final : public StatusDisplay
{
public:
    explicit PrintedStatus(std::ostream &out)
        : m_out(out)
    {
    }
    void ShowMessage(const std::string &message, const std::string &) override
    {
        m_out << (!message.empty() && message[0] == '!' ? message.substr(1) : message) << std::endl;
    }
    bool StatusClosed() const override { return stopSignalled(); }

private:
    std::ostream &m_out;
};

// The channel whose expression refers to the module first, as the panel's menu finds it; 0
// when none does.
int channelOfModule(const WorkspaceClass &workspace, std::int32_t tag)
{
    for (int n = 1; n <= workspace.Channels; ++n)
        if (firstDataTag(workspace.item(n).DataTagList) == tag)
            return n;
    return 0;
}

} // namespace

int runBaseStation(CliArgs &args, std::ostream &)
{
    const std::optional<std::string> link = args.take("--link");
    if (!link || link->empty())
        throw UsageError("--link PATH is required");
    SimulationOptions options;
    if (const std::optional<std::string> seed = args.take("--seed"))
        options.seed = static_cast<std::uint64_t>(parseWhole(*seed, 0, INT64_MAX, "--seed"));
    args.positional(0);

    const std::unique_ptr<QCoreApplication> application = makeCoreApplication();
    catchStopSignals();
    std::string error;
    const std::unique_ptr<BaseStationEmulator> station
        = BaseStationEmulator::create(*link, options, error);
    if (!station) {
        std::cerr << "Error: " << error << "\n";
        return 1;
    }
    std::cerr << "Base station on " << station->device() << ", linked at " << *link
              << "; Ctrl+C ends it" << std::endl;
    QTimer stopCheck;
    QObject::connect(&stopCheck, &QTimer::timeout, [] {
        if (stopSignalled())
            QCoreApplication::quit();
    });
    stopCheck.start(50);
    QCoreApplication::exec();
    std::cerr << "Sent " << station->packetsSent() << " packets (" << station->packetsDropped()
              << " dropped while nothing read them), answered " << station->commandsAnswered()
              << " commands, refused " << station->linesRefused() << " lines\n";
    return 0;
}

int runCommand(CliArgs &args, std::ostream &out)
{
    const ProviderSource source = sourceOption(args, nullptr);
    const std::optional<std::string> workspaceFile = args.take("--workspace");
    const std::vector<std::string> words = args.positionalAll();
    if (words.empty())
        throw UsageError("a command is required: wake, sleep, keepawake, pause TAG or resume TAG");
    const std::string &verb = words[0];
    const bool pauseOrResume = verb == "pause" || verb == "resume";
    if (!pauseOrResume && verb != "wake" && verb != "sleep" && verb != "keepawake")
        throw UsageError("unknown module command '" + verb
            + "' (use wake, sleep, keepawake, pause TAG or resume TAG)");
    if (words.size() != (pauseOrResume ? 2u : 1u))
        throw UsageError(pauseOrResume ? verb + " needs one Data Tag: " + verb + " TAG"
                                       : verb + " takes no arguments");
    const std::int32_t tag = pauseOrResume ? parseDataTag(words[1]) : 0;

    const std::unique_ptr<QCoreApplication> application = makeCoreApplication();
    catchStopSignals();
    StderrPrompts prompts(std::cerr);
    WorkspaceClass workspace;
    if (workspaceFile && !LoadWorkspace(workspace, *workspaceFile, prompts))
        return 1;
    ToolDriver tool(source, prompts);
    if (!tool.activate(workspace))
        return 1;
    DriverHost &host = tool.host();

    int status = 0;
    try {
        DataProvider &driver = driverOf(host);
        if (verb == "wake") {
            driver.WakeAll(toByte(workspace.BSAddress));
        } else if (verb == "sleep") {
            driver.SleepAll();
        } else if (verb == "keepawake") {
            driver.KeepAwakeAll();
        } else {
            const bool pause = verb == "pause";
            const int channel = channelOfModule(workspace, tag);
            PrintedStatus progress(out);
            const bool acknowledged = PauseResume(
                host, workspace, progress, pause ? 1 : 0, tag, static_cast<std::int16_t>(channel));
            // Ctrl+C is the window's Cancel: the program counts it a success, a script must not.
            if (stopSignalled()) {
                out << "Channel " << channel << ": stopped before the module acknowledged.\n";
                status = 1;
            } else {
                out << pauseResumeOutcome(channel, pause, acknowledged) << "\n";
                status = acknowledged ? 0 : 1;
            }
        }
    } catch (const VbError &e) {
        std::cerr << "Error: " << e.description() << " (error " << e.number() << ")\n";
        status = 1;
    }
    // Commands nobody waits for are on the line before it closes.
    DataProvider &driver = *host.driver();
    driver.CloseInterface();
    reportSourceWarnings(driver, tool.losses(), std::cerr);
    return status;
}

} // namespace corvalog::cli
