#pragma once

#include "BaseStationProtocol.h"
#include "DataProvider.h"
#include "DriverSettings.h"
#include "runtime/NumberLocale.h"
#include "runtime/VbError.h"

#include <QThread>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvalog {

// How the serial driver finds its line.
struct SerialOptions {
    std::string device; // opened whatever port OpenInterface names; "" maps the port
    std::int32_t baudrate = 0; // with `device`: its speed; 0 takes OpenInterface's (or 115200)
    DriverSettings settings; // the devices of USB and of each COM port number
    NumberLocale locale; // of the value texts handed on
    int answerTimeoutMs = bsp::kAnswerTimeoutMs;
    int reopenIntervalMs = 1000;
};

// A base station on a serial line (a COM port, a USB serial adapter, a pseudo-terminal) that
// speaks the line protocol. The line is read on a thread of its own and its packets handed to
// the GUI thread in batches. A command that has an answer waits for it on the calling thread
// without dispatching anything; packets arriving meanwhile wait in the inbox, in order. A line
// that goes away while open is told once (noticed) and reopened every reopenIntervalMs.
class SerialProvider final : public DataProvider
{
    Q_OBJECT

public:
    // Automation error numbers of our own (from vbObjectError + 513), as a driver raises them.
    static constexpr int kErrorNotOpen = -2147220991;
    static constexpr int kErrorOpen = -2147220989;
    static constexpr int kErrorNoAnswer = -2147220988;
    static constexpr int kErrorBadAnswer = -2147220987;
    // The speed of a USB base station.
    static constexpr std::int32_t kUsbBaudrate = 115200;

    explicit SerialProvider(SerialOptions options, QObject *parent = nullptr);
    ~SerialProvider() override;

    // "Corvalog serial base station".
    std::string name() const override;
    // Opens the device: the options' device, else USB (port 0, baud 0: the settings' USB
    // device or the first USB serial device present, at 115200 baud) or COM port N (its
    // settings entry or /dev/ttyS<N-1>) at the baud rate. 0 when open; raises VbError
    // (kErrorOpen) naming the device and the system's reason.
    std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) override;
    // Closes the line and stops reopening it; harmless when closed.
    void CloseInterface() override;
    // Not waited for: the line is written and the call returns.
    void WakeAll(std::uint8_t baseStationAddress) override;
    void SleepAll() override;
    void KeepAwakeAll() override;
    // The base station's VERSION answer (asked once per opening).
    float ComVersion() override;
    float DllVersion() override;
    // Each waits for its answer; an E line raises its number and description, silence
    // kErrorNoAnswer, a closed or lost line kErrorNotOpen.
    void SetRadioChannel(std::uint8_t baseStationAddress, std::uint8_t radioChannel) override;
    std::int32_t DetectBaseStation(std::uint8_t baseStationAddress) override;
    std::int32_t SendCommand(std::uint8_t &baseStationAddress, std::int32_t datatag,
        std::uint8_t &command, std::string &data) override;

    // The device being used ("" before the first OpenInterface).
    std::string device() const;
    // True while the line is open (false while it is being reopened).
    bool connected() const { return m_connected.load(); }

private:
    class Link;
    friend class Link;

    // Sends a command and waits for its answer or failure.
    bsp::StationLine ask(std::string_view operation, const std::vector<std::string> &arguments);
    // Sends a command whose answer nobody waits for.
    void tell(std::string_view operation, const std::vector<std::string> &arguments = {});
    void requireConnected(std::string_view operation) const;
    std::int32_t integerResult(std::string_view operation, const bsp::StationLine &answer) const;
    void readVersions();
    void forgetVersions();
    std::uint16_t nextSequence();

    // From the link's thread.
    void answerArrived(bsp::StationLine &&line);
    void linkChanged(bool connected);
    void handOver(PacketBatch &&batch) { deliver(std::move(batch)); }
    void lineMalformed(std::string reason) { reportMalformed(std::move(reason)); }
    void tellUser(const std::string &text, bool problem) { notice(text, problem); }

    SerialOptions m_options;
    QThread m_thread;
    Link *m_link = nullptr;
    std::atomic<bool> m_connected { false };
    std::atomic<std::uint16_t> m_seq { 0 };

    mutable std::mutex m_answerMutex;
    std::condition_variable m_answerChanged;
    std::uint16_t m_awaited = 0;
    std::optional<bsp::StationLine> m_answer;
    std::string m_device;

    std::optional<std::pair<float, float>> m_versions;
    std::optional<VbError> m_versionFailure;
};

} // namespace corvalog
