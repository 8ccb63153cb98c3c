#include "HeardTags.h"

namespace corvalog {

std::vector<HeardTag> heardTags(const ScriptClass &tables)
{
    std::vector<HeardTag> heard;
    const double now = tables.clock().now();
    for (std::int32_t tag = 0; tag < ScriptClass::kTagCount; ++tag) {
        const double arrival = tables.arrivalTime(tag);
        // The zero date is "never": no clock the tables run on reads it.
        if (arrival == 0.0)
            continue;
        const double ago = (now - arrival) * 86400.0;
        heard.push_back({ tag, tables.T(tag), tables.TL(tag), ago > 0 ? ago : 0.0 });
    }
    return heard;
}

} // namespace corvalog
