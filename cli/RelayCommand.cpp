#include "Commands.h"
#include "SourceOptions.h"
#include "StderrPrompts.h"
#include "ToolDriver.h"
#include "acquisition/ReplayProvider.h"
#include "relay/MqttRelay.h"
#include "runtime/VbError.h"
#include "workspace/WorkspaceModule.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <iostream>
#include <mutex>

namespace corvalog::cli {

namespace {

// How long the relay waits at its end for the broker to acknowledge what is left.
constexpr std::chrono::seconds kFinalWait { 10 };
// How often the packets gathered go out as one message.
constexpr int kBatchIntervalMs = 50;

// "256M", "100K", "1G" or a number of bytes.
std::uint64_t sizeOption(const std::string &text)
{
    std::string digits = text;
    std::uint64_t unit = 1;
    if (!digits.empty()) {
        switch (digits.back()) {
        case 'K':
        case 'k':
            unit = 1ull << 10;
            break;
        case 'M':
        case 'm':
            unit = 1ull << 20;
            break;
        case 'G':
        case 'g':
            unit = 1ull << 30;
            break;
        default:
            break;
        }
        if (unit != 1)
            digits.pop_back();
    }
    const auto value = static_cast<std::uint64_t>(
        parseWhole(digits, 1, std::int64_t { 1 } << 40, "--spool-limit"));
    return value * unit;
}

} // namespace

int runRelay(CliArgs &args, std::ostream &out)
{
    ProviderSource source = sourceOption(args, nullptr);
    const std::optional<std::string> to = args.take("--to");
    if (!to)
        throw UsageError("--to mqtt://HOST[:PORT]/PREFIX/STATION is required");
    std::string error;
    const std::optional<MqttAddress> address = MqttAddress::parse(*to, true, &error);
    if (!address)
        throw UsageError(error);
    const std::optional<std::string> spool = args.take("--spool");
    const std::optional<std::string> limit = args.take("--spool-limit");
    const std::optional<double> duration = durationOption(args);
    const std::optional<std::string> workspaceFile = args.take("--workspace");
    args.positional(0);

    catchStopSignals();
    const std::unique_ptr<QCoreApplication> application = makeCoreApplication();
    QCoreApplication &app = *application;
    StderrPrompts prompts(std::cerr);
    const DriverSettings settings = driverSettings(prompts);

    std::mutex printing;
    MqttRelay::Options options;
    options.address = *address;
    options.spoolFolder = spool ? *spool : MqttRelay::defaultSpoolFolder(*address);
    if (limit)
        options.spoolLimitBytes = sizeOption(*limit);
    // --ca-file and --credentials are the broker's the relay publishes to.
    options.caFile = source.mqttCaFile.empty() ? settings.mqttCaFile : source.mqttCaFile;
    options.credentialsFile = source.mqttCredentialsFile.empty() ? settings.mqttCredentialsFile
                                                                 : source.mqttCredentialsFile;
    options.locale = numberLocale();
    options.notice = [&printing](const std::string &text, bool problem) {
        const std::lock_guard<std::mutex> lock(printing);
        printNotice(text, problem);
    };
    std::unique_ptr<MqttRelay> relay;
    try {
        relay = std::make_unique<MqttRelay>(options);
    } catch (const VbError &e) {
        std::cerr << "Error: " << e.description() << "\n";
        return 1;
    }
    relay->start();

    WorkspaceClass workspace;
    if (workspaceFile && !LoadWorkspace(workspace, *workspaceFile, prompts))
        return 1;
    ToolDriver tool(source, prompts);
    QElapsedTimer elapsed;
    elapsed.start();
    DataProvider *driver = tool.activate(workspace);
    if (!driver)
        return 1;
    QObject::connect(driver, &DataProvider::packetsArrived, &app,
        [&relay](const PacketBatch &batch) { relay->add(batch); });
    if (auto *replay = dynamic_cast<ReplayProvider *>(driver))
        QObject::connect(
            replay, &ReplayProvider::finished, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    QTimer batches;
    QObject::connect(&batches, &QTimer::timeout, &app, [&] {
        relay->flush();
        if (stopSignalled() || (duration && elapsed.elapsed() >= *duration))
            QCoreApplication::quit();
    });
    batches.start(kBatchIntervalMs);
    app.exec();

    driver->CloseInterface();
    QCoreApplication::processEvents(); // packets already handed over still go
    relay->finish(kFinalWait);
    reportSourceWarnings(*driver, tool.losses(), std::cerr);
    const MqttRelay::Counts counts = relay->counts();
    out << "Relayed " << counts.relayedPackets << " packets to " << address->shown();
    if (counts.spooledPackets > 0 || counts.spooledMessages > 0)
        out << " (" << counts.spooledPackets << " packets remain spooled in " << options.spoolFolder
            << " and go with the next run)";
    out << "\n";
    if (counts.droppedPackets > 0) {
        std::cerr << "Warning: the spool was full: " << counts.droppedPackets
                  << " packets were dropped, the oldest first\n";
        return 1;
    }
    return 0;
}

} // namespace corvalog::cli
