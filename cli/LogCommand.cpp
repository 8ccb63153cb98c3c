#include "Commands.h"
#include "SourceOptions.h"
#include "StderrPrompts.h"
#include "runtime/DateTime.h"
#include "runtime/NumberLocale.h"
#include "session/HeadlessLogger.h"
#include "workspace/WorkspaceModule.h"

#include <QDate>
#include <QRegularExpression>
#include <QTime>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <unistd.h>

namespace corvalog::cli {

namespace {

// --start: an ISO 8601 date and time ("2026-11-15T14:03:07", seconds and their fraction
// optional, or a date alone) as a script date. Anything else, even with a valid date-time at
// its start, is refused: a typo must not start a log at a time the user did not mean.
std::optional<double> startOption(CliArgs &args)
{
    const std::optional<std::string> text = args.take("--start");
    if (!text)
        return std::nullopt;
    static const QRegularExpression iso(QStringLiteral(
        R"(^(\d{4})-(\d{2})-(\d{2})(?:[T ](\d{2}):(\d{2})(?::(\d{2})(?:[.,](\d{1,9}))?)?)?$)"));
    const QRegularExpressionMatch m = iso.match(QString::fromStdString(*text));
    const auto field = [&m](int n) { return m.captured(n).toInt(); };
    const QDate day = m.hasMatch() ? QDate(field(1), field(2), field(3)) : QDate();
    const QTime time = m.hasMatch() ? QTime(field(4), field(5), field(6)) : QTime();
    if (!day.isValid() || !time.isValid() || day.year() < 100)
        throw UsageError("--start: not an ISO 8601 date-time (such as 2026-11-15T14:03:07.250) "
                         "between the years 100 and 9999: "
            + *text);
    const QString fraction = m.captured(7);
    const double seconds = fraction.isEmpty() ? 0.0 : (QStringLiteral("0.") + fraction).toDouble();
    return dateFromCivil(
               { day.year(), day.month(), day.day(), time.hour(), time.minute(), time.second() })
        + seconds / 86400.0;
}

void printProgress(const HeadlessProgress &p)
{
    const double rate = p.wallSeconds > 0 ? static_cast<double>(p.rows) / p.wallSeconds : 0;
    std::cerr << "\r" << p.rows << " rows, " << std::fixed << std::setprecision(1)
              << p.loggedMs / 1000.0 << " s logged, " << std::setprecision(0) << rate
              << " rows/s   " << std::defaultfloat << std::flush;
}

} // namespace

int runLog(CliArgs &args, std::ostream &)
{
    const std::optional<std::string> workspaceFile = args.take("--workspace");
    if (!workspaceFile)
        throw UsageError("--workspace FILE is required");
    HeadlessLogOptions options;
    options.source = sourceOption(args, nullptr);
    options.outPath = args.take("--out").value_or("/dev/stdout");
    options.durationMs = durationOption(args);
    options.virtualTime = args.takeFlag("--virtual-time");
    const std::optional<double> start = startOption(args);
    args.positional(0);
    if (start)
        options.start = *start;
    if (start && !options.virtualTime)
        throw UsageError("--start needs --virtual-time (live logs carry the real time)");
    if (options.virtualTime
        && (options.source.kind == ProviderSource::Kind::Udp
            || options.source.kind == ProviderSource::Kind::Serial
            || options.source.kind == ProviderSource::Kind::Mqtt))
        throw UsageError("--virtual-time needs sim or replay: datagrams, serial lines and "
                         "brokers deliver in real time");
    if (options.virtualTime && options.source.kind == ProviderSource::Kind::Simulated
        && !options.durationMs)
        throw UsageError("--virtual-time with sim needs --duration: the simulation never ends");

    StderrPrompts prompts(std::cerr);
    WorkspaceClass workspace;
    if (!LoadWorkspace(workspace, *workspaceFile, prompts))
        return 1;
    options.semicolons = numberLocale().commaDecimal();
    options.rescueFolder = "."; // the tool's user works in the current folder
    options.driverSettings = driverSettings(prompts);
    options.notices = printNotice;

    const std::unique_ptr<QCoreApplication> application = makeCoreApplication();
    catchStopSignals();
    HeadlessLogger logger(workspace, options, prompts);
    const bool showProgress = ::isatty(STDERR_FILENO) == 1;
    const bool ok = logger.run(stopSignalled, [showProgress](const HeadlessProgress &p) {
        if (showProgress)
            printProgress(p);
    });
    if (showProgress)
        std::cerr << "\n";
    if (const DataProvider *driver = logger.driver())
        reportSourceWarnings(*driver, logger.losses(), std::cerr);
    if (options.outPath != "/dev/stdout")
        std::cerr << "Logged " << logger.rowsWritten() << " rows to " << options.outPath << "\n";
    return ok ? 0 : 1;
}

} // namespace corvalog::cli
