#include "LimitEvents.h"

#include <algorithm>

namespace corvalog {

LimitState limitState(const ItemClass &item, float value, bool error)
{
    if (error)
        return LimitState::Error;
    if (value > item.Overload)
        return LimitState::Over;
    if (value < item.Underload)
        return LimitState::Under;
    return LimitState::InRange;
}

std::vector<LimitEvent> LimitWatch::update(
    const WorkspaceClass &workspace, const ChannelValues &values)
{
    const int channels = std::min<int>({ workspace.Channels,
        static_cast<int>(workspace.Items.size()), ChannelValues::kEntries - 1 });
    m_states.resize(static_cast<std::size_t>(std::max(channels, 0)), LimitState::InRange);
    std::vector<LimitEvent> events;
    for (int n = 1; n <= channels; ++n) {
        const ItemClass &item = workspace.item(n);
        const float v = values.output(n);
        LimitState &was = m_states[static_cast<std::size_t>(n - 1)];
        const LimitState now = limitState(item, v, values.error(n) != 0);
        if (now == was)
            continue;
        if (now == LimitState::Error) {
            events.push_back({ n, "error", v, std::nullopt });
        } else {
            if (was == LimitState::Error)
                events.push_back({ n, "recovered", v, std::nullopt });
            if (now == LimitState::Over)
                events.push_back({ n, "over", v, item.Overload });
            else if (now == LimitState::Under)
                events.push_back({ n, "under", v, item.Underload });
            else if (was != LimitState::Error)
                events.push_back(
                    { n, "in range", v, was == LimitState::Over ? item.Overload : item.Underload });
        }
        was = now;
    }
    return events;
}

} // namespace corvalog
