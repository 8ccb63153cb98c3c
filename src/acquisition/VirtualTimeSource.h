#pragma once

#include <optional>

namespace corvalog {

// A packet source that runs on virtual time: nothing arrives until its caller moves time on.
// Times are milliseconds since the interface was opened.
class VirtualTimeSource
{
public:
    virtual ~VirtualTimeSource() = default;
    // The next instant at which packets may arrive, or nothing when none ever will.
    virtual std::optional<double> nextPacketTime() = 0;
    // Delivers every packet due up to and including the instant, in order, before returning.
    virtual void advanceTo(double timeMs) = 0;
};

} // namespace corvalog
