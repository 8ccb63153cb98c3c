#pragma once

#include <cstdint>

namespace corvalog {

// What a channel does with its value, as the workspace stores it (the key Function). A file may
// hold any other 16-bit number: such a channel does nothing more than None, and the number is
// kept and saved as it was.
enum class ChannelFunction : std::int16_t {
    None = 0,
    PeakCapture = 1,
    TroughCapture = 2,
    FilterLight = 3,
    FilterMedium = 4,
    FilterHeavy = 5,
};

// The codes of version 1 files: those above one higher, and two sums that are expressions now.
enum class Version1Function : std::int16_t {
    SumOfChannels = 1, // every channel since the previous sum channel
    SumOfDataTags = 7, // the "+" list of Data Tags
};

inline bool isCapture(ChannelFunction f)
{
    return f == ChannelFunction::PeakCapture || f == ChannelFunction::TroughCapture;
}

inline bool isFilter(ChannelFunction f)
{
    return f == ChannelFunction::FilterLight || f == ChannelFunction::FilterMedium
        || f == ChannelFunction::FilterHeavy;
}

// The number stored in a file.
inline std::int16_t functionCode(ChannelFunction f)
{
    return static_cast<std::int16_t>(f);
}

} // namespace corvalog
