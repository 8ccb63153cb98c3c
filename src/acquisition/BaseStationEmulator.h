#pragma once

#include "BaseStationProtocol.h"
#include "SimulatedProvider.h"

#include <QObject>
#include <QSocketNotifier>
#include <cstdint>
#include <memory>
#include <string>

namespace corvalog {

// The built-in simulated base station behind a pseudo-terminal, speaking the line protocol: a
// serial line for the serial driver (or any program) to open, with the simulator's eight
// modules on the other end. Sleep and wake act on the modules, pause and resume are
// acknowledged as the simulator acknowledges them. Lives on the thread that created it.
class BaseStationEmulator final : public QObject
{
    Q_OBJECT

public:
    // Bytes held while the reader is slow or absent (a second or so of packets); beyond them
    // packets are dropped (counted), as a base station's radio buffer overflows, so a reader
    // that opens the line late is not fed old packets. Answers are never dropped.
    static constexpr std::size_t kMaxPending = 8 << 10;

    // Opens a pseudo-terminal (raw, so nothing is echoed or translated) and links its device at
    // `linkPath` (a symbolic link; an old link there is replaced, any other file is refused).
    // Nothing (and `error` set) when that fails.
    static std::unique_ptr<BaseStationEmulator> create(
        const std::string &linkPath, const SimulationOptions &options, std::string &error);
    ~BaseStationEmulator() override;

    // The pseudo-terminal's own device (/dev/pts/N).
    const std::string &device() const { return m_device; }
    std::uint64_t packetsSent() const { return m_sent; }
    std::uint64_t packetsDropped() const { return m_dropped; }
    std::uint64_t commandsAnswered() const { return m_answered; }
    std::uint64_t linesRefused() const { return m_refused; }

private:
    BaseStationEmulator(int master, int slave, std::string device, std::string linkPath,
        const SimulationOptions &options);

    void readCommands();
    void answer(std::string_view line);
    std::string run(const bsp::CommandLine &command);
    void send(const PacketBatch &packets);
    void queue(const std::string &text);
    void flush();

    int m_master;
    int m_slave; // held open, so the line stays up while no reader has it open
    std::string m_device;
    std::string m_linkPath;
    SimulatedProvider m_simulator;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    bsp::LineAssembler m_assembler;
    std::string m_pending;
    std::uint64_t m_sent = 0;
    std::uint64_t m_dropped = 0;
    std::uint64_t m_answered = 0;
    std::uint64_t m_refused = 0;
};

} // namespace corvalog
