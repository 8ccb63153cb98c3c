#include "Clock.h"

#include <QDateTime>
#include <chrono>

namespace corvalog {

namespace {
constexpr double kUnixEpochDays = 25569.0; // 1970-01-01 as a script date
}

double SystemClock::now() const
{
    using namespace std::chrono;
    const auto ms = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    const long long seconds = ms / 1000;
    // The UTC offset changes twice a year; asking the C library on every packet would cost more
    // than the whole packet handler, so it is rechecked once a minute.
    if (seconds >= m_offsetValidUntil) {
        m_utcOffsetSeconds = QDateTime::fromSecsSinceEpoch(seconds).offsetFromUtc();
        m_offsetValidUntil = seconds - seconds % 60 + 60;
    }
    return kUnixEpochDays + static_cast<double>(ms + m_utcOffsetSeconds * 1000LL) / 86400000.0;
}

} // namespace corvalog
