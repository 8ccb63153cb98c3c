#include "ScriptClass.h"

#include "TagReplace.h"
#include "runtime/Convert.h"
#include "runtime/DateTime.h"
#include "runtime/Format.h"
#include "runtime/Val.h"
#include "runtime/VbError.h"

namespace corvalog {

const std::array<ScriptMember, 25> &scriptMembers()
{
    using F = MemberForm;
    static const std::array<ScriptMember, 25> members { {
        { 1, "PI", F::Function, 0, 0 },
        { 2, "SetTimeout", F::Procedure, 1, 1 },
        { 3, "TT", F::Function, 1, 1 },
        { 4, "T", F::PropertyRead, 1, 1 },
        { 5, "T", F::PropertyWrite, 1, 1 },
        { 6, "TB", F::PropertyRead, 1, 1 },
        { 7, "TB", F::PropertyWrite, 1, 1 },
        { 8, "TE", F::PropertyRead, 1, 1 },
        { 9, "TE", F::PropertyWrite, 1, 1 },
        { 10, "TL", F::PropertyRead, 1, 1 },
        { 11, "TL", F::PropertyWrite, 1, 1 },
        { 12, "C", F::PropertyRead, 1, 1 },
        { 13, "C", F::PropertyWrite, 1, 1 },
        { 14, "CB", F::PropertyRead, 1, 1 },
        { 15, "CB", F::PropertyWrite, 1, 1 },
        { 16, "CE", F::PropertyRead, 1, 1 },
        { 17, "CE", F::PropertyWrite, 1, 1 },
        { 18, "CT", F::PropertyRead, 1, 1 },
        { 19, "CT", F::PropertyWrite, 1, 1 },
        { 20, "CL", F::PropertyRead, 1, 1 },
        { 21, "CL", F::PropertyWrite, 1, 1 },
        { 22, "Min", F::Function, 0, -1 },
        { 23, "Fmt", F::Function, 2, 2 },
        { 24, "TagReplace", F::Procedure, 6, 6 },
        { 25, "QuickTagReplace", F::Function, 1, 1 },
    } };
    return members;
}

ScriptClass::ScriptClass(const Clock &clock)
    : m_clock(clock)
    , m_tags(new TagEntry[kTagCount]()) // value-initialised: all zero, arrival = the zero date
{
}

std::size_t ScriptClass::tagIndex(std::int32_t tag)
{
    if (tag < 0 || tag >= kTagCount)
        throw VbError(vberr::SubscriptOutOfRange);
    return static_cast<std::size_t>(tag);
}

std::size_t ScriptClass::channelIndex(std::int32_t channel)
{
    if (channel < 0 || channel >= kChannelCount)
        throw VbError(vberr::SubscriptOutOfRange);
    return static_cast<std::size_t>(channel);
}

bool ScriptClass::TT(std::int32_t tag) const
{
    const double arrival = m_tags[tagIndex(tag)].arrival;
    return dateDiffSeconds(arrival, m_cycleNow ? *m_cycleNow : m_clock.now()) > m_timeout;
}

float ScriptClass::T(std::int32_t tag) const
{
    return m_tags[tagIndex(tag)].value;
}

void ScriptClass::setT(std::int32_t tag, float value)
{
    TagEntry &e = m_tags[tagIndex(tag)];
    e.value = value;
    e.arrival = m_clock.now();
}

std::int16_t ScriptClass::TB(std::int32_t tag) const
{
    return m_tags[tagIndex(tag)].battery;
}

void ScriptClass::setTB(std::int32_t tag, std::int16_t value)
{
    m_tags[tagIndex(tag)].battery = value;
}

std::int16_t ScriptClass::TE(std::int32_t tag) const
{
    return m_tags[tagIndex(tag)].error;
}

void ScriptClass::setTE(std::int32_t tag, std::int16_t value)
{
    m_tags[tagIndex(tag)].error = value;
}

std::int16_t ScriptClass::TL(std::int32_t tag) const
{
    return m_tags[tagIndex(tag)].quality;
}

void ScriptClass::setTL(std::int32_t tag, std::int16_t value)
{
    m_tags[tagIndex(tag)].quality = value;
}

float ScriptClass::C(std::int32_t channel) const
{
    return m_channels[channelIndex(channel)].value;
}

void ScriptClass::setC(std::int32_t channel, float value)
{
    m_channels[channelIndex(channel)].value = value;
}

std::int16_t ScriptClass::CB(std::int32_t channel) const
{
    return m_channels[channelIndex(channel)].battery;
}

void ScriptClass::setCB(std::int32_t channel, std::int16_t value)
{
    m_channels[channelIndex(channel)].battery = value;
}

std::int16_t ScriptClass::CE(std::int32_t channel) const
{
    return m_channels[channelIndex(channel)].error;
}

void ScriptClass::setCE(std::int32_t channel, std::int16_t value)
{
    m_channels[channelIndex(channel)].error = value;
}

std::int16_t ScriptClass::CT(std::int32_t channel) const
{
    return m_channels[channelIndex(channel)].timeout;
}

void ScriptClass::setCT(std::int32_t channel, std::int16_t value)
{
    m_channels[channelIndex(channel)].timeout = value;
}

std::int16_t ScriptClass::CL(std::int32_t channel) const
{
    return m_channels[channelIndex(channel)].quality;
}

void ScriptClass::setCL(std::int32_t channel, std::int16_t value)
{
    m_channels[channelIndex(channel)].quality = value;
}

double ScriptClass::Min(const Variant *args, std::size_t count) const
{
    // Each argument is judged by its text, so link qualities (small whole numbers) compare
    // exactly and anything that is not a number counts as 0.
    double minimum = 9999999999.0;
    for (std::size_t i = 0; i < count; ++i) {
        // A whole number's text reads back as itself, so link qualities skip the round trip.
        const VarType type = args[i].type();
        const bool whole
            = type == VarType::Integer || type == VarType::Long || type == VarType::Byte;
        const double value = whole ? args[i].numberValue() : Val(CStr(args[i]));
        if (value < minimum)
            minimum = value;
    }
    return minimum;
}

std::string ScriptClass::Fmt(const Variant &value, std::string_view format) const
{
    return Format(value, format);
}

void ScriptClass::TagReplace(std::string_view source, std::string &expression,
    std::string &errorScript, std::string &lqiScript, std::string &battScript,
    std::string &timeoutScript) const
{
    const RewrittenExpression r = rewriteExpression(source);
    expression = r.expression;
    errorScript = r.errorScript;
    lqiScript = r.lqiScript;
    battScript = r.battScript;
    timeoutScript = r.timeoutScript;
}

std::string ScriptClass::QuickTagReplace(std::string_view source) const
{
    return rewriteReferences(source);
}

double ScriptClass::arrivalTime(std::int32_t tag) const
{
    return m_tags[tagIndex(tag)].arrival;
}

} // namespace corvalog
