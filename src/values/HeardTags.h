#pragma once

#include "ScriptClass.h"

#include <cstdint>
#include <vector>

namespace corvalog {

// A module the tables have heard from: its Data Tag, its last value and link quality, and how
// many seconds ago its last value came.
struct HeardTag {
    std::int32_t tag = 0;
    float value = 0;
    std::int16_t quality = 0;
    double secondsAgo = 0;
};

// Every module heard since the tables were made, by Data Tag.
std::vector<HeardTag> heardTags(const ScriptClass &tables);

} // namespace corvalog
