#include "Commands.h"
#include "SourceOptions.h"
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
#include <fstream>
#include <iostream>

namespace corvalog::cli {

int runRecord(CliArgs &args, std::ostream &)
{
    const ProviderSource source = sourceOption(args, "sim");
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

    const std::unique_ptr<QCoreApplication> application = makeCoreApplication();
    QCoreApplication &app = *application;
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
        QTimer::singleShot(static_cast<int>(*duration), &app, &QCoreApplication::quit);
    catchStopSignals();
    QTimer stopCheck;
    QObject::connect(&stopCheck, &QTimer::timeout, &app, [] {
        if (stopSignalled())
            QCoreApplication::quit();
    });
    stopCheck.start(50);
    app.exec();

    driver->CloseInterface();
    QCoreApplication::processEvents(); // packets already handed over still reach the file
    file.flush();
    reportSourceWarnings(*driver, handler.droppedCount(), std::cerr);
    std::cerr << "Recorded " << written << " packets to " << *path << "\n";
    return file ? 0 : 1;
}

} // namespace corvalog::cli
