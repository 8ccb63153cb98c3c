#include "FakeProvider.h"

#include "runtime/VbError.h"

namespace corvalog {

void FakeProvider::record(const std::string &operation, const std::string &call)
{
    m_calls.push_back(call);
    const auto found = raises.find(operation);
    if (found != raises.end())
        throw VbError(found->second.number, found->second.description);
}

std::int16_t FakeProvider::OpenInterface(std::int16_t port, std::int32_t baudrate)
{
    record("OpenInterface",
        "OpenInterface(" + std::to_string(port) + "," + std::to_string(baudrate) + ")");
    return openStatus;
}

void FakeProvider::CloseInterface()
{
    record("CloseInterface", "CloseInterface()");
}

void FakeProvider::WakeAll(std::uint8_t address)
{
    record("WakeAll", "WakeAll(" + std::to_string(address) + ")");
}

void FakeProvider::SleepAll()
{
    record("SleepAll", "SleepAll()");
}

void FakeProvider::KeepAwakeAll()
{
    record("KeepAwakeAll", "KeepAwakeAll()");
}

void FakeProvider::SetRadioChannel(std::uint8_t address, std::uint8_t channel)
{
    record("SetRadioChannel",
        "SetRadioChannel(" + std::to_string(address) + "," + std::to_string(channel) + ")");
}

std::int32_t FakeProvider::DetectBaseStation(std::uint8_t address)
{
    record("DetectBaseStation", "DetectBaseStation(" + std::to_string(address) + ")");
    return detectResult;
}

std::int32_t FakeProvider::SendCommand(
    std::uint8_t &address, std::int32_t datatag, std::uint8_t &command, std::string &data)
{
    record("SendCommand",
        "SendCommand(" + std::to_string(address) + "," + std::to_string(datatag) + ","
            + std::to_string(command) + "," + data + ")");
    const int attempt = sendCommandCalls++;
    return attempt == acknowledgeOnAttempt ? 0 : 1;
}

} // namespace corvalog
