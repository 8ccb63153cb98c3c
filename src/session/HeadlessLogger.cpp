#include "HeadlessLogger.h"

#include "acquisition/InterfaceInit.h"
#include "acquisition/ProviderFactory.h"
#include "acquisition/ReplayProvider.h"
#include "acquisition/VirtualTimeSource.h"
#include "logging/IntervalTimer.h"
#include "runtime/TimerPeriods.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <limits>

namespace corvalog {

// The log timer on virtual time: the run loop fires it at exact multiples of its period.
class HeadlessLogger::VirtualTimer final : public TickTimer
{
public:
    void start(std::int32_t intervalMs) override { interval = intervalMs; }
    void stop() override { interval = 0; }
    std::int32_t interval = 0; // 0 while stopped
};

HeadlessLogger::HeadlessLogger(
    WorkspaceClass workspace, HeadlessLogOptions options, UserPrompts &prompts)
    : m_options(std::move(options))
    , m_prompts(prompts)
    , m_virtualClock(m_options.start)
    , m_logTimer(makeLogTimer())
    , m_session(SessionOptions { [this] {
                                    return createProvider(m_options.source, m_options.virtualTime,
                                        numberLocale(), m_options.driverSettings);
                                },
                    m_options.virtualTime ? &m_virtualClock : nullptr, numberLocale(),
                    m_options.semicolons, m_options.rescueFolder },
          SessionHost { *this, *this, *m_logTimer, m_prompts })
{
    m_session.workspace() = std::move(workspace);
    m_session.driverHost().setNoticeHandler(m_options.notices);
    m_session.logger().setMetadata([this] {
        const DataProvider *driver = m_session.driver();
        return LogMetadata { m_options.source.text, driver ? driver->name() : std::string() };
    });
}

std::unique_ptr<TickTimer> HeadlessLogger::makeLogTimer()
{
    if (m_options.virtualTime)
        return std::make_unique<VirtualTimer>();
    return std::make_unique<IntervalTimer>([this](std::int32_t ms) {
        DataLogger &logger = m_session.logger();
        if (m_rowLimit && logger.rowsWritten() >= *m_rowLimit)
            return;
        m_session.logTick(ms);
        if (m_rowLimit && logger.rowsWritten() >= *m_rowLimit && m_rowLimitReached)
            m_rowLimitReached();
    });
}

HeadlessLogger::~HeadlessLogger()
{
    m_session.logger().stop();
    if (DataProvider *driver = m_session.driver())
        driver->CloseInterface();
}

void HeadlessLogger::processEvents()
{
    if (!m_options.virtualTime)
        QCoreApplication::processEvents();
}

std::string HeadlessLogger::panelTitle(int n) const
{
    return m_session.workspace().item(n).Caption;
}

bool HeadlessLogger::activate()
{
    // The base station comes up as the program brings it up, without the pauses that give a
    // real driver time to let go of its port.
    InterfaceInitHooks hooks;
    hooks.wait = [](std::int32_t) {};
    if (!m_options.virtualTime)
        hooks.processEvents = [] { QCoreApplication::processEvents(); };
    m_session.activate(hooks);
    return m_session.driver() != nullptr;
}

bool HeadlessLogger::run(const std::function<bool()> &stopRequested,
    const std::function<void(const HeadlessProgress &)> &progress)
{
    if (!activate())
        return false;
    const bool ok = m_options.virtualTime ? runVirtual(stopRequested, progress)
                                          : runLive(stopRequested, progress);
    m_rows = m_session.logger().rowsWritten();
    m_session.logger().stop();
    if (DataProvider *driver = m_session.driver())
        driver->CloseInterface();
    return ok;
}

bool HeadlessLogger::runVirtual(const std::function<bool()> &stopRequested,
    const std::function<void(const HeadlessProgress &)> &progress)
{
    auto *source = dynamic_cast<VirtualTimeSource *>(m_session.driver());
    if (!source) {
        m_prompts.message(DataLogger::kTitle, "This packet source cannot run on virtual time.",
            PromptIcon::Critical);
        return false;
    }
    auto &timer = static_cast<VirtualTimer &>(*m_logTimer);
    // Virtual time passes only as packets come, so a stop is what ends a wait for a slow
    // writer of a FIFO, or for the reader of the log.
    if (auto *replay = dynamic_cast<ReplayProvider *>(m_session.driver()))
        replay->setInterruption(stopRequested);
    m_session.logger().setInterruption(stopRequested);
    if (!m_session.logger().start(m_options.outPath))
        return false;

    QElapsedTimer wall;
    wall.start();
    qint64 lastReport = 0;
    constexpr double kNever = std::numeric_limits<double>::infinity();
    const double end = m_options.durationMs.value_or(kNever);
    // Timer instants are kept as whole milliseconds, so the thousandth tick is exact.
    std::int64_t screenNext = kScreenIntervalMs;
    std::int64_t logNext = timer.interval;
    for (std::uint64_t step = 0;; ++step) {
        const std::optional<double> packet = source->nextPacketTime();
        if (!packet && !m_options.durationMs)
            break; // the recording has ended
        const double logAt = timer.interval > 0 ? static_cast<double>(logNext) : kNever;
        const double now
            = std::min({ packet.value_or(kNever), static_cast<double>(screenNext), logAt });
        if (now > end || now == kNever)
            break;
        m_virtualClock.set(m_options.start + now / 86400000.0);
        // At one instant: packets first, then the screen tick, then the log tick.
        if (packet && *packet == now)
            source->advanceTo(now);
        if (static_cast<double>(screenNext) == now) {
            m_session.screenTick();
            screenNext += kScreenIntervalMs;
        }
        if (logAt == now) {
            m_session.logger().LogTimer_Timer(timer.interval);
            logNext += timer.interval;
            if (!m_session.logger().isLogging())
                return false; // a row could not be written; the user was told
        }
        if ((step & 0xFFF) == 0) {
            if (stopRequested())
                break;
            if (wall.elapsed() - lastReport >= 1000) {
                lastReport = wall.elapsed();
                progress({ m_session.logger().rowsWritten(), m_session.logger().elapsedMs(),
                    static_cast<double>(lastReport) / 1000.0 });
            }
        }
    }
    return true;
}

bool HeadlessLogger::runLive(const std::function<bool()> &stopRequested,
    const std::function<void(const HeadlessProgress &)> &progress)
{
    QEventLoop loop;
    bool ok = true;
    QElapsedTimer wall;
    const std::optional<double> duration = m_options.durationMs;
    // Past the end, a row still due gets this long to come before the run ends without it.
    constexpr qint64 kGraceMs = 500;
    const auto pastEnd = [&](qint64 grace) {
        return duration && wall.isValid()
            && static_cast<double>(wall.elapsed()) >= *duration + static_cast<double>(grace);
    };
    // A row waiting for a pipe's reader is given up on a stop, or once the end is well past.
    m_session.logger().setInterruption([&] { return stopRequested() || pastEnd(kGraceMs); });
    if (duration && m_session.workspace().LogInterval > 0)
        m_rowLimit = static_cast<std::uint64_t>(*duration / m_session.workspace().LogInterval);
    m_rowLimitReached = [&] {
        if (pastEnd(0))
            loop.quit();
    };

    QTimer screen;
    screen.setTimerType(Qt::PreciseTimer);
    QObject::connect(&screen, &QTimer::timeout, [this] { m_session.screenTick(); });
    QTimer poll;
    qint64 lastReport = 0;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        m_session.logger().checkOutput();
        if (stopRequested()) {
            loop.quit();
        } else if (!m_session.logger().isLogging()) {
            ok = false; // a row could not be written; the user was told
            loop.quit();
        } else if (pastEnd(0)
            && (!m_rowLimit || m_session.logger().rowsWritten() >= *m_rowLimit
                || pastEnd(kGraceMs))) {
            loop.quit();
        } else if (wall.elapsed() - lastReport >= 1000) {
            lastReport = wall.elapsed();
            progress({ m_session.logger().rowsWritten(), m_session.logger().elapsedMs(),
                static_cast<double>(lastReport) / 1000.0 });
        }
    });
    if (auto *replay = dynamic_cast<ReplayProvider *>(m_session.driver()))
        QObject::connect(
            replay, &ReplayProvider::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);

    // The run's time starts before the log is opened: a FIFO waiting for its reader counts.
    wall.start();
    if (!m_session.logger().start(m_options.outPath))
        return false;
    screen.start(kScreenIntervalMs);
    poll.start(50);
    loop.exec();
    m_rowLimitReached = nullptr;
    m_session.logger().setInterruption(stopRequested);
    return ok && m_session.logger().isLogging();
}

} // namespace corvalog
