#pragma once

#include "ChannelValues.h"
#include "workspace/WorkspaceClass.h"

#include <optional>
#include <string>
#include <vector>

namespace corvalog {

// Where a channel's value stands against its limits, as its panel shows it: above Overload or
// below Underload flashes (a value exactly at a limit does not), an error shows no value.
enum class LimitState { InRange, Over, Under, Error };

LimitState limitState(const ItemClass &item, float value, bool error);

// A change of a channel's state: "over", "under", "in range" (back between the limits),
// "error" (the channel went into error) or "recovered" (out of it), with the channel's value
// and the limit it crossed (none for error and recovered).
struct LimitEvent {
    int channel = 0;
    const char *kind = "";
    float value = 0;
    std::optional<float> limit;
};

// Follows every channel's state from one evaluation to the next and tells its changes; a
// value that flaps around a limit gives one event per crossing. Channels start in range.
class LimitWatch
{
public:
    void reset() { m_states.clear(); }
    // The events of the evaluation just made, channel by channel.
    std::vector<LimitEvent> update(const WorkspaceClass &workspace, const ChannelValues &values);

private:
    std::vector<LimitState> m_states;
};

} // namespace corvalog
