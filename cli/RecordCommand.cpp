#include "Commands.h"
#include "StderrPrompts.h"
#include "acquisition/InterfaceInit.h"
#include "acquisition/ProviderFactory.h"
#include "acquisition/RecordingFormat.h"
#include "acquisition/ReplayProvider.h"
#include "runtime/Clock.h"
#include "values/ScriptClass.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <fstream>
#include <iostream>

namespace corvalog::cli {

namespace {

std::atomic<bool> g_stopRequested { false };

extern "C" void requestStop(int)
{
    g_stopRequested = true;
}

} // namespace

namespace {

ProviderSource sourceOption(CliArgs &args)
{
    const std::string text = args.take("--source").value_or("sim");
    std::string error;
    const std::optional<ProviderSource> source = ProviderSource::parse(text, &error);
    if (!source)
        throw UsageError(error);
    return *source;
}

std::optional<double> durationOption(CliArgs &args)
{
    const std::optional<std::string> text = args.take("--duration");
    if (!text)
        return std::nullopt;
    return static_cast<double>(parseWhole(*text, 1, 31 * 24 * 3600, "--duration"));
}

} // namespace

int runRecord(CliArgs &args, std::ostream &)
{
    const ProviderSource source = sourceOption(args);
    const std::optional<std::string> path = args.take("--out");
    if (!path)
        throw UsageError("--out FILE is required");
    const std::optional<double> duration = durationOption(args);
    args.positional(0);

    std::ofstream file(*path, std::ios::binary | std::ios::trunc);
    if (!file) {
        std::cerr << "Error: cannot write " << *path << "\n";
        return 1;
    }
    file << recordingHeader();

    static int argc = 1;
    static char name[] = "corvalog-cli";
    static char *argv[] = { name, nullptr };
    QCoreApplication app(argc, argv);
    StderrPrompts prompts(std::cerr);
    SystemClock clock;
    auto tables = std::make_unique<ScriptClass>(clock);
    PacketHandler handler(*tables);
    PacketPump pump(handler);
    DriverHost host([&source] { return createProvider(source); }, pump);

    std::uint64_t written = 0;
    QElapsedTimer elapsed;
    elapsed.start();
    // The tool brings the base station up exactly as the program does, without the pauses
    // that give a real driver time to let go of its port.
    InterfaceInit(host, WorkspaceClass(), prompts,
        { [] { QCoreApplication::processEvents(); }, [](std::int32_t) {} });
    DataProvider *driver = host.driver();
    if (!driver)
        return 1;
    QObject::connect(driver, &DataProvider::packetsArrived, &app, [&](const PacketBatch &batch) {
        const double ms = static_cast<double>(elapsed.nsecsElapsed()) / 1e6;
        for (const PacketNotification &p : batch)
            file << recordingLine({ ms, p });
        file.flush(); // what was received is in the file even if the tool is killed
        written += batch.size();
    });
    if (auto *replay = dynamic_cast<ReplayProvider *>(driver))
        QObject::connect(
            replay, &ReplayProvider::finished, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    if (duration)
        QTimer::singleShot(static_cast<int>(*duration * 1000), &app, &QCoreApplication::quit);
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    QTimer stopCheck;
    QObject::connect(&stopCheck, &QTimer::timeout, &app, [] {
        if (g_stopRequested)
            QCoreApplication::quit();
    });
    stopCheck.start(50);
    app.exec();

    driver->CloseInterface();
    QCoreApplication::processEvents(); // packets already handed over still reach the file
    file.flush();
    const std::vector<std::string> messages = driver->malformedMessages();
    for (const std::string &m : messages)
        std::cerr << "Warning: " << m << "\n";
    if (driver->malformedCount() > messages.size())
        std::cerr << "Warning: " << driver->malformedCount() - messages.size()
                  << " more malformed lines\n";
    if (handler.droppedCount() > 0 || driver->droppedInInbox() > 0)
        std::cerr << "Warning: " << handler.droppedCount() << " packets could not be stored, "
                  << driver->droppedInInbox() << " were dropped waiting\n";
    std::cerr << "Recorded " << written << " packets to " << *path << "\n";
    return file ? 0 : 1;
}

} // namespace corvalog::cli
