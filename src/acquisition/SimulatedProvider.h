#pragma once

#include "DataProvider.h"
#include "VirtualTimeSource.h"

#include <QElapsedTimer>
#include <QTimer>
#include <cstdint>
#include <string>
#include <vector>

namespace corvalog {

// How the built-in base station and its eight modules behave. The defaults match the demo
// workspace, so it shows live data as it is.
struct SimulationOptions {
    // The same seed gives the same packets at the same instants, for the same commands.
    std::uint64_t seed = 1;
    // The one address the base station answers at.
    std::uint8_t baseStationAddress = 1;
    // The channel the modules send on; a base station set to another channel hears nothing.
    std::uint8_t radioChannel = 1;
    // Share (0..1) of the commands reaching a module that it leaves unacknowledged.
    double commandFailureRate = 0.0;
    // Multiplies every module's rate; each rate is then held within 1..200 packets/s.
    double rateScale = 1.0;
    // True: a timer delivers the packets as time passes. False: only advanceTo does.
    bool realTime = true;
};

// A base station with eight modules (the tags of SimulatedModules.h): a load cell, a
// temperature, a counter, a raw binary record, a weak link, a battery running low, a module
// reporting errors now and then, and one that goes silent for seconds at a time.
//
// Every module sends at fixed instants (ms since OpenInterface), so the packets of a seed do not
// depend on when the timer happens to fire. A command takes effect at the instant packets were
// last generated up to (now()). Operations other than OpenInterface, CloseInterface,
// DetectBaseStation and the versions raise VbError(kErrorNotOpen) while the interface is closed.
class SimulatedProvider final : public DataProvider, public VirtualTimeSource
{
    Q_OBJECT

public:
    // Automation error numbers of the component's own (from vbObjectError + 513), as a driver
    // raises them.
    static constexpr int kErrorNotOpen = -2147220991;
    static constexpr int kErrorNoBaseStation = -2147220990;
    // OpenInterface status for a port number or speed no port can have.
    static constexpr std::int16_t kNoSuchPort = 1;
    // SendCommand statuses other than 0 (acknowledged).
    static constexpr std::int32_t kNoAcknowledgement = 1;
    static constexpr std::int32_t kUnknownModule = 2;
    static constexpr std::int32_t kWrongBaseStation = 3;
    // Command codes the modules act on; others are acknowledged and ignored.
    static constexpr std::uint8_t kPause = 57;
    static constexpr std::uint8_t kResume = 59;
    // How long one keep-awake broadcast keeps sleeping modules sending.
    static constexpr double kKeepAwakeMs = 10000.0;
    // How often the real-time timer generates packets.
    static constexpr int kTickMs = 20;

    explicit SimulatedProvider(SimulationOptions options = {}, QObject *parent = nullptr);
    ~SimulatedProvider() override;

    // "Corvalog simulated base station".
    std::string name() const override;
    // 0 for USB (0, 0) and for a serial port >= 1 at a speed > 0, else kNoSuchPort with
    // nothing changed. Opening restarts the simulation at time 0: modules awake and resumed,
    // channel as configured.
    std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) override;
    // Stops the packets; harmless when closed.
    void CloseInterface() override;
    // Wakes the modules; raises kErrorNoBaseStation at another address.
    void WakeAll(std::uint8_t baseStationAddress) override;
    // Sends the modules to sleep: silent from now() unless kept awake.
    void SleepAll() override;
    // Keeps the modules sending for kKeepAwakeMs from now(), even asleep.
    void KeepAwakeAll() override;
    // 2.1.
    float ComVersion() override;
    // 1.4.
    float DllVersion() override;
    // Tunes the base station; raises kErrorNoBaseStation at another address.
    void SetRadioChannel(std::uint8_t baseStationAddress, std::uint8_t radioChannel) override;
    // 1 while open at the configured address, else 0 (never raises).
    std::int32_t DetectBaseStation(std::uint8_t baseStationAddress) override;
    // 0 when acknowledged: pause (57) silences the module, resume (59) restarts it; the data
    // text is not used. Else kWrongBaseStation, kUnknownModule, or kNoAcknowledgement (the
    // failure rate, or modules that cannot hear: asleep or on another channel), and the command
    // has no effect.
    std::int32_t SendCommand(std::uint8_t &baseStationAddress, std::int32_t datatag,
        std::uint8_t &command, std::string &data) override;

    // Generates and delivers, as one batch in time order, every packet due up to the instant.
    void advanceTo(double msSinceOpen) override;
    // The next instant a module is due to send (it may keep silent then); nothing while closed.
    std::optional<double> nextPacketTime() override;
    // The instants of the batch advanceTo delivered last, one per packet (valid in the slot).
    const std::vector<double> &lastBatchTimes() const { return m_lastTimes; }
    // The instant packets have been generated up to (ms since open).
    double now() const { return m_now; }
    // True from a successful OpenInterface to CloseInterface.
    bool isOpen() const { return m_open; }

private:
    // Generates every packet due up to the instant without delivering it; each one's instant
    // goes to `times` when given. Ties are ordered as the tags in SimulatedModules.h.
    PacketBatch packetsDueUntil(double msSinceOpen, std::vector<double> *times = nullptr);
    // The packets per second the module with this tag sends when heard; 0 for no module.
    double packetRate(std::int32_t datatag) const;

    struct Module;

    void restart();
    void requireOpen() const;
    void requireAddress(std::uint8_t baseStationAddress) const;
    bool modulesHearAt(double ms) const;
    void tick();

    SimulationOptions m_options;
    std::vector<Module> m_modules;
    bool m_open = false;
    double m_now = 0.0;
    std::uint8_t m_channel = 1;
    bool m_asleep = false;
    double m_keepAwakeUntil = 0.0;
    std::uint64_t m_commandRandom = 0;
    std::vector<double> m_lastTimes;
    QTimer m_timer;
    QElapsedTimer m_sinceOpen;
};

} // namespace corvalog
