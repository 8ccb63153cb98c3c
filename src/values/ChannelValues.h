#pragma once

#include "ScriptProgram.h"
#include "runtime/VbError.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace corvalog {

// The per-channel results of the evaluation cycle, channels 1 to 24 (entry 0 is never used):
// the working value (the last evaluation before tare; for peak and trough channels the
// captured extreme), the output value (tared, filtered or the default: what panels show and
// the log writes) and the error flag (-1 while the channel is in error, else 0). An index
// outside 0..24 raises Subscript out of range (9).
class ChannelValues
{
public:
    static constexpr int kEntries = 25;
    // The starting points of peak and trough capture: the first reading is a new extreme.
    static constexpr float kPeakSeed = -9999999.0f;
    static constexpr float kTroughSeed = 9999999.0f;

    float &working(int n) { return m_working[index(n)]; }
    float working(int n) const { return m_working[index(n)]; }
    float &output(int n) { return m_output[index(n)]; }
    float output(int n) const { return m_output[index(n)]; }
    std::int16_t &error(int n) { return m_error[index(n)]; }
    std::int16_t error(int n) const { return m_error[index(n)]; }

    // A channel's compiled scripts (expression, timeout, error, link quality, battery), kept
    // with the text they were compiled from so the cycle needs no lookup while that stays.
    struct CompiledScript {
        std::string text;
        std::shared_ptr<const ScriptProgram> program;
    };
    static constexpr int kScripts = 5;
    std::array<CompiledScript, kScripts> &scripts(int n) { return m_scripts[index(n)]; }

private:
    static std::size_t index(int n)
    {
        if (n < 0 || n >= kEntries)
            throw VbError(vberr::SubscriptOutOfRange);
        return static_cast<std::size_t>(n);
    }

    std::array<float, kEntries> m_working {};
    std::array<float, kEntries> m_output {};
    std::array<std::int16_t, kEntries> m_error {};
    std::array<std::array<CompiledScript, kScripts>, kEntries> m_scripts;
};

} // namespace corvalog
