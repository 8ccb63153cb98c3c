#pragma once

#include "LoggingView.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

namespace corvalog {

// A periodic timer on the GUI thread whose ticks report the whole milliseconds since the
// previous tick, measured on the monotonic clock. The fractions left over are carried into the
// next report, so the reports add up to the time that really passed.
//
// Ticks are due at exact multiples of the interval from the start. A tick that comes late does
// not move the later ones, and ticks missed while the thread was busy follow one by one as soon
// as it is free (the event loop runs between them), so every period gets its tick: a log has
// every row.
class IntervalTimer final : public QObject, public TickTimer
{
    Q_OBJECT

public:
    explicit IntervalTimer(std::function<void(std::int32_t)> onTick, QObject *parent = nullptr);

    void start(std::int32_t intervalMs) override;
    void stop() override;
    bool isActive() const { return m_active; }

private:
    void arm();
    void tick();

    std::function<void(std::int32_t)> m_onTick;
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_reportedNs = 0;
    qint64 m_intervalNs = 0;
    qint64 m_dueNs = 0;
    bool m_active = false;
    quint64 m_generation = 0; // a start or stop during a tick ends that tick's timing
};

} // namespace corvalog
