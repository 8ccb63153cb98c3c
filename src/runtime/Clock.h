#pragma once

namespace corvalog {

// The present date-time as a script date (days since 30 December 1899, local time). Injected
// wherever "now" matters, so replays and tests run on virtual time.
class Clock
{
public:
    virtual ~Clock() = default;
    virtual double now() const = 0;
};

// The computer's local date-time, with millisecond resolution.
class SystemClock final : public Clock
{
public:
    double now() const override;

private:
    mutable long long m_offsetValidUntil
        = 0; // unix seconds until the cached UTC offset is rechecked
    mutable long m_utcOffsetSeconds = 0;
};

// A clock that shows what it was set to (virtual time, tests).
class ManualClock final : public Clock
{
public:
    explicit ManualClock(double now = 0.0)
        : m_now(now)
    {
    }
    double now() const override { return m_now; }
    void set(double now) { m_now = now; }
    void advanceSeconds(double seconds) { m_now += seconds / 86400.0; }

private:
    double m_now;
};

} // namespace corvalog
