#include "IntervalTimer.h"

#include <limits>

namespace corvalog {

IntervalTimer::IntervalTimer(std::function<void(std::int32_t)> onTick, QObject *parent)
    : QObject(parent)
    , m_onTick(std::move(onTick))
{
    m_timer.setSingleShot(true);
    // Coarse timers may fire 5 % early or late; a log interval is a promise.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &IntervalTimer::tick);
}

void IntervalTimer::start(std::int32_t intervalMs)
{
    ++m_generation;
    m_intervalNs = std::max<qint64>(intervalMs, 1) * 1000000;
    m_clock.start();
    m_reportedNs = 0;
    m_dueNs = m_intervalNs;
    m_active = true;
    arm();
}

void IntervalTimer::stop()
{
    ++m_generation;
    m_active = false;
    m_timer.stop();
}

void IntervalTimer::arm()
{
    const qint64 waitNs = m_dueNs - m_clock.nsecsElapsed();
    const qint64 waitMs = waitNs <= 0 ? 0 : (waitNs + 999999) / 1000000;
    m_timer.start(static_cast<int>(std::min<qint64>(waitMs, std::numeric_limits<int>::max())));
}

void IntervalTimer::tick()
{
    const qint64 now = m_clock.nsecsElapsed();
    if (now < m_dueNs) {
        arm(); // a wait longer than a timer can take, or a tick a little early
        return;
    }
    m_dueNs += m_intervalNs;
    const qint64 ms = std::min<qint64>(
        (now - m_reportedNs) / 1000000, std::numeric_limits<std::int32_t>::max());
    m_reportedNs += ms * 1000000;
    const quint64 generation = m_generation;
    m_onTick(static_cast<std::int32_t>(ms));
    if (m_active && generation == m_generation)
        arm();
}

} // namespace corvalog
