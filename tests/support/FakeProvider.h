#pragma once

#include "acquisition/DataProvider.h"

#include <map>
#include <string>
#include <vector>

namespace corvalog {

// A driver that records every call ("OpenInterface(0,0)") and does what the test scripts: an
// error to raise per operation, statuses to return, and the attempt on which SendCommand is
// acknowledged (-1: never).
class FakeProvider final : public DataProvider
{
public:
    explicit FakeProvider(std::vector<std::string> &calls)
        : m_calls(calls)
    {
    }

    struct Failure {
        int number;
        std::string description;
    };
    std::map<std::string, Failure> raises; // operation name -> the error it raises
    std::int16_t openStatus = 0;
    std::int32_t detectResult = 1;
    int acknowledgeOnAttempt = 0;
    int sendCommandCalls = 0;

    std::string name() const override { return "fake"; }
    std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) override;
    void CloseInterface() override;
    void WakeAll(std::uint8_t address) override;
    void SleepAll() override;
    void KeepAwakeAll() override;
    float ComVersion() override { return 1.5f; }
    float DllVersion() override { return 2.5f; }
    void SetRadioChannel(std::uint8_t address, std::uint8_t channel) override;
    std::int32_t DetectBaseStation(std::uint8_t address) override;
    std::int32_t SendCommand(std::uint8_t &address, std::int32_t datatag, std::uint8_t &command,
        std::string &data) override;

    std::uint64_t systemDrops = 0;
    std::uint64_t droppedBySystem() const override { return systemDrops; }

    // Hands packets over as a driver does (for tests of what happens to them).
    void send(PacketBatch packets) { deliver(std::move(packets)); }

private:
    void record(const std::string &operation, const std::string &call);

    std::vector<std::string> &m_calls;
};

} // namespace corvalog
