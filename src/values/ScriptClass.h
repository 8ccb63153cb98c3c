#pragma once

#include "runtime/Clock.h"
#include "runtime/Variant.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvalog {

// How a member of ScriptClass is called.
enum class MemberForm : std::uint8_t { Function, Procedure, PropertyRead, PropertyWrite };

// One entry of ScriptClass's member list, in the order the script engine's name table lists
// them. Arguments count those of the read form; a write form takes one more (the value).
struct ScriptMember {
    int number; // 1..25
    const char *name;
    MemberForm form;
    int minArgs;
    int maxArgs; // -1: any number
};

// All 25 members in order: PI, SetTimeout, TT, T (read, write), TB, TE, TL, C, CB, CE, CT, CL
// (each read then write), Min, Fmt, TagReplace, QuickTagReplace.
const std::array<ScriptMember, 25> &scriptMembers();

// Everything known about the modules and the display channels: per Data Tag (0..65535) the
// last value, its arrival time, error, battery and link-quality states; per channel (0..24)
// value, error, battery, timeout and link-quality states; and the script functions that
// channel expressions call. Tables are fixed-size and zero-filled at creation; an index out of
// range raises Subscript out of range (9) with nothing stored.
class ScriptClass
{
public:
    static constexpr std::int32_t kTagCount = 65536;
    static constexpr std::int32_t kChannelCount = 25;

    // The clock stamps arrival times (T writes) and is "the present" for TT.
    explicit ScriptClass(const Clock &clock);

    // 1. The single-precision pi, 3.1415927.
    float PI() const { return 3.14159265358979323846f; }
    // 2. Seconds of silence after which TT reports a tag as timed out.
    void SetTimeout(std::int16_t seconds) { m_timeout = seconds; }
    // 3. True when more second boundaries than the timeout lie between the tag's arrival and now.
    bool TT(std::int32_t tag) const;
    // 4, 5. Tag value; writing it also stamps the arrival time.
    float T(std::int32_t tag) const;
    void setT(std::int32_t tag, float value);
    // 6..11. Battery, error and link-quality states of a tag (writes leave the arrival time).
    std::int16_t TB(std::int32_t tag) const;
    void setTB(std::int32_t tag, std::int16_t value);
    std::int16_t TE(std::int32_t tag) const;
    void setTE(std::int32_t tag, std::int16_t value);
    std::int16_t TL(std::int32_t tag) const;
    void setTL(std::int32_t tag, std::int16_t value);
    // 12..21. Channel value and states.
    float C(std::int32_t channel) const;
    void setC(std::int32_t channel, float value);
    std::int16_t CB(std::int32_t channel) const;
    void setCB(std::int32_t channel, std::int16_t value);
    std::int16_t CE(std::int32_t channel) const;
    void setCE(std::int32_t channel, std::int16_t value);
    std::int16_t CT(std::int32_t channel) const;
    void setCT(std::int32_t channel, std::int16_t value);
    std::int16_t CL(std::int32_t channel) const;
    void setCL(std::int32_t channel, std::int16_t value);
    // 22. Smallest argument, each read back through its text with Val; 9999999999 with none.
    double Min(const Variant *args, std::size_t count) const;
    // 23. Format of a value with a pattern.
    std::string Fmt(const Variant &value, std::string_view format) const;
    // 24. Full rewriting of a channel expression into its expression and four scripts.
    void TagReplace(std::string_view source, std::string &expression, std::string &errorScript,
        std::string &lqiScript, std::string &battScript, std::string &timeoutScript) const;
    // 25. The rewritten expression alone, for checking while typing.
    std::string QuickTagReplace(std::string_view source) const;

    // The arrival time of a tag's last value (the zero date when none came).
    double arrivalTime(std::int32_t tag) const;
    std::int16_t timeout() const { return m_timeout; }
    const Clock &clock() const { return m_clock; }

    // Judges every TT of one channel's scripts at one instant, read once, so that its timeout
    // and its values agree on which modules are silent; ended, TT reads the clock again.
    void beginCycle() { m_cycleNow = m_clock.now(); }
    void endCycle() { m_cycleNow.reset(); }

private:
    static std::size_t tagIndex(std::int32_t tag);
    static std::size_t channelIndex(std::int32_t channel);

    struct TagEntry {
        double arrival;
        float value;
        std::int16_t error;
        std::int16_t battery;
        std::int16_t quality;
    };
    struct ChannelEntry {
        float value;
        std::int16_t error;
        std::int16_t battery;
        std::int16_t timeout;
        std::int16_t quality;
    };

    const Clock &m_clock;
    std::unique_ptr<TagEntry[]> m_tags;
    std::array<ChannelEntry, kChannelCount> m_channels {};
    std::int16_t m_timeout = 0;
    std::optional<double> m_cycleNow;
};

} // namespace corvalog
