#include "SourceOptions.h"

#include "acquisition/SourceLosses.h"
#include "workspace/SystemFolders.h"

#include <atomic>
#include <csignal>
#include <iostream>

namespace corvalog::cli {

namespace {

std::atomic<bool> g_stopRequested { false };

extern "C" void requestStop(int)
{
    g_stopRequested = true;
}

} // namespace

ProviderSource sourceOption(CliArgs &args, const char *fallback)
{
    const std::optional<std::string> text = args.take("--source");
    if (!text && !fallback)
        throw UsageError("--source SRC is required");
    std::string error;
    const std::optional<ProviderSource> source
        = ProviderSource::parse(text ? *text : std::string(fallback), &error);
    if (!source)
        throw UsageError(error);
    ProviderSource chosen = *source;
    brokerOptions(args, chosen.mqttCaFile, chosen.mqttCredentialsFile);
    return chosen;
}

void brokerOptions(CliArgs &args, std::string &caFile, std::string &credentialsFile)
{
    if (const std::optional<std::string> ca = args.take("--ca-file"))
        caFile = *ca;
    if (const std::optional<std::string> credentials = args.take("--credentials"))
        credentialsFile = *credentials;
}

std::optional<double> durationOption(CliArgs &args)
{
    const std::optional<std::string> text = args.take("--duration");
    if (!text)
        return std::nullopt;
    return 1000.0 * static_cast<double>(parseWhole(*text, 1, 31 * 24 * 3600, "--duration"));
}

std::unique_ptr<QCoreApplication> makeCoreApplication()
{
    static int argc = 1;
    static char name[] = "corvalog-cli";
    static char *argv[] = { name, nullptr };
    return std::make_unique<QCoreApplication>(argc, argv);
}

void catchStopSignals()
{
    struct sigaction action {
    };
    action.sa_handler = requestStop;
    sigemptyset(&action.sa_mask);
    // No SA_RESTART: a call that waits is cut short, so the stop is seen at once.
    action.sa_flags = 0;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool stopSignalled()
{
    return g_stopRequested.load();
}

DriverSettings driverSettings(UserPrompts &prompts)
{
    return readDriverSettings(setUpPaths(SystemFolders::current(), prompts).settingsFile);
}

void printNotice(const std::string &text, bool problem)
{
    std::cerr << (problem ? "Warning: " : "Note: ") << text << std::endl;
}

void reportSourceWarnings(const DataProvider &driver, const SourceLosses &losses, std::ostream &err)
{
    const std::vector<std::string> messages = driver.malformedMessages();
    for (const std::string &m : messages)
        err << "Warning: " << m << "\n";
    if (driver.malformedCount() > messages.size())
        err << "Warning: " << driver.malformedCount() - messages.size()
            << " more malformed lines\n";
    // The malformed lines are told one by one above.
    SourceLosses lost = losses;
    lost.malformed = 0;
    for (const std::string &sentence : lossSentences(lost))
        err << "Warning: " << sentence << "\n";
}

} // namespace corvalog::cli
