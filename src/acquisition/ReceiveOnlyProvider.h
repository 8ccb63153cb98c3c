#pragma once

#include "DataProvider.h"

namespace corvalog {

// A source that only ever hears packets (a recording, a UDP port): the commands to the modules
// have nothing to reach, so they are accepted and do nothing, any address answers (whatever
// sends is the base station), and no command is ever acknowledged (1) — not an error, so a
// retry loop runs as it would for a module out of range.
class ReceiveOnlyProvider : public DataProvider
{
public:
    using DataProvider::DataProvider;

    void WakeAll(std::uint8_t) override { }
    void SleepAll() override { }
    void KeepAwakeAll() override { }
    float ComVersion() override { return 1.0f; }
    float DllVersion() override { return 1.0f; }
    void SetRadioChannel(std::uint8_t, std::uint8_t) override { }
    std::int32_t DetectBaseStation(std::uint8_t) override { return 1; }
    std::int32_t SendCommand(std::uint8_t &, std::int32_t, std::uint8_t &, std::string &) override
    {
        return 1;
    }
};

} // namespace corvalog
