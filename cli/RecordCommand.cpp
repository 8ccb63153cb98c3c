#include "Commands.h"
#include "SourceOptions.h"
#include "StderrPrompts.h"
#include "ToolDriver.h"
#include "acquisition/RecordingFormat.h"
#include "acquisition/ReplayProvider.h"
#include "logging/LogFile.h"
#include "workspace/WorkspaceModule.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <iostream>

namespace corvalog::cli {

namespace {

std::string failureText(const std::string &path, const LogFile::Failure &failure)
{
    if (failure.readerGone)
        return "nothing reads " + path + " any more (its reader has closed it)";
    if (failure.interrupted)
        return "nothing was reading " + path + " when the recording ended";
    return path + " could not be written: " + failure.error.description + " (error "
        + std::to_string(failure.error.number) + ")";
}

} // namespace

int runRecord(CliArgs &args, std::ostream &)
{
    const ProviderSource source = sourceOption(args, "sim");
    const std::optional<std::string> path = args.take("--out");
    if (!path)
        throw UsageError("--out FILE is required");
    const std::optional<double> duration = durationOption(args);
    const std::optional<std::string> workspaceFile = args.take("--workspace");
    args.positional(0);

    catchStopSignals();
    QElapsedTimer elapsed;
    LogFile file;
    // A reader that takes nothing holds the tool only until a stop or the end of the run.
    file.setInterruption([&] {
        return stopSignalled()
            || (duration && elapsed.isValid() && elapsed.elapsed() >= *duration + 500);
    });
    if (const std::optional<FileError> error = file.open(*path)) {
        std::cerr << "Error: cannot write " << *path << ": " << error->description << " (error "
                  << error->number << ")\n";
        return 1;
    }
    if (const std::optional<LogFile::Failure> failure = file.write(recordingHeader())) {
        std::cerr << "Error: cannot write " << failureText(*path, *failure) << "\n";
        return 1;
    }

    const std::unique_ptr<QCoreApplication> application = makeCoreApplication();
    QCoreApplication &app = *application;
    StderrPrompts prompts(std::cerr);
    // The workspace names the serial line, the base station's address and its radio channel.
    WorkspaceClass workspace;
    if (workspaceFile && !LoadWorkspace(workspace, *workspaceFile, prompts))
        return 1;
    ToolDriver tool(source, prompts);

    std::uint64_t written = 0;
    std::optional<LogFile::Failure> stopped;
    elapsed.start();
    DataProvider *driver = tool.activate(workspace);
    if (!driver)
        return 1;
    std::string lines;
    // Each batch goes to the file in one write as it arrives, so a killed tool loses nothing it
    // received; the first write that fails ends the recording with the file holding exactly the
    // packets counted.
    QObject::connect(driver, &DataProvider::packetsArrived, &app, [&](const PacketBatch &batch) {
        if (stopped)
            return;
        const double ms = static_cast<double>(elapsed.nsecsElapsed()) / 1e6;
        lines.clear();
        for (const PacketNotification &p : batch)
            lines += recordingLine({ ms, p }, numberLocale());
        if ((stopped = file.write(lines))) {
            QCoreApplication::quit();
            return;
        }
        written += batch.size();
    });
    if (auto *replay = dynamic_cast<ReplayProvider *>(driver))
        QObject::connect(
            replay, &ReplayProvider::finished, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    QTimer stopCheck;
    QObject::connect(&stopCheck, &QTimer::timeout, &app, [&] {
        if (!stopped)
            stopped = file.checkReader();
        if (stopped || stopSignalled() || (duration && elapsed.elapsed() >= *duration))
            QCoreApplication::quit();
    });
    stopCheck.start(50);
    app.exec();

    driver->CloseInterface();
    QCoreApplication::processEvents(); // packets already handed over still reach the file
    file.close();
    reportSourceWarnings(*driver, tool.losses(), std::cerr);
    if (stopped)
        std::cerr << "Error: recording stopped: " << failureText(*path, *stopped) << "\n";
    std::cerr << "Recorded " << written << " packets to " << *path << "\n";
    return stopped ? 1 : 0;
}

} // namespace corvalog::cli
