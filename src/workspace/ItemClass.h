#pragma once

#include "ChannelFunction.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvalog {

// One display channel of a workspace. A new item is all zeros and empty; loading fills it from
// the file (with the defaults for missing keys), the editor from its own defaults.
struct ItemClass {
    // Persisted.
    std::int16_t DataTag = 0; // single Data Tag; only read when converting version 1 files
    std::string DataTagList; // the channel expression, e.g. "(<FF12>+<0012>)/2-<3>"
    std::string Caption;
    std::string Format; // number format of the value, e.g. "00.000"
    float TareValue = 0;
    std::int16_t Timeout = 0; // seconds
    // Shown while the channel is in error (its modules silent or reporting errors). A load
    // always gives a number; "none" is a Default cleared in the editor, and then the channel
    // keeps its last output, until the workspace is next loaded.
    std::optional<float> Default = 0.0f;
    float Underload = 0; // flashes below
    float Overload = 0; // flashes above
    ChannelFunction Functionality = ChannelFunction::None;

    // Filled by activation from DataTagList, not saved.
    std::string DataTagExpression;
    std::string DataTagErrorScript;
    std::string DataTagLQIScript;
    std::string DataTagBattScript;
    std::string DataTagTimeoutScript;
};

} // namespace corvalog
