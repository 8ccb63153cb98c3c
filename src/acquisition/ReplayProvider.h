#pragma once

#include "ReceiveOnlyProvider.h"
#include "RecordingFormat.h"
#include "VirtualTimeSource.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace corvalog {

// A base station that plays back a packet recording, read line by line as it plays (a long
// recording is never held in memory). The recording's time 0 is the moment OpenInterface is
// called; it plays once, and CloseInterface ends it for good.
//
// Real time: a worker thread sleeps until each packet's instant and hands what is due to the
// GUI thread in batches. Virtual time: no thread runs; the caller moves time on with
// advanceTo() and learns the next instant from nextPacketTime(), so a long recording replays
// in moments and the same way every time.
//
// Malformed lines are counted, their reasons kept with their line numbers, and skipped. So is
// a line whose time goes back before the line played last: the format promises non-decreasing
// times, so such a line is damage (a splice, a clock jump), and playing it late would stamp it
// with the wrong instant.
class ReplayProvider final : public ReceiveOnlyProvider, public VirtualTimeSource
{
    Q_OBJECT

public:
    enum class Pacing { RealTime, Virtual };

    // A batch goes to the GUI thread when it holds this many packets...
    static constexpr std::size_t kMaxBatch = 4096;
    // ...or spans this much recording time, so the GUI thread stays responsive when catching up.
    static constexpr double kMaxBatchSpanMs = 10.0;
    // Malformed lines whose reasons are kept; later ones are only counted.
    // A longer line is malformed (recording lines are a few hundred bytes at most).
    static constexpr std::size_t kMaxLineBytes = 64 * 1024;

    // Opens a recording to play with the given pacing; raises VbError with the file error
    // number and description (53 "File not found", 70 "Permission denied", ...) when it cannot.
    static std::unique_ptr<ReplayProvider> create(
        const std::string &path, Pacing pacing, const NumberLocale &locale);
    ~ReplayProvider() override;

    Pacing pacing() const { return m_pacing; }

    // Virtual time only: the instant (ms since the recording began) of the next packet to play,
    // or nothing when the recording has no more (or the interface was closed).
    std::optional<double> nextPacketTime() override;
    // Virtual time only: delivers every packet up to and including `timeMs`, in order, on the
    // calling thread, before returning. Does nothing before OpenInterface or after
    // CloseInterface.
    void advanceTo(double timeMs) override;

    // Asked, on the thread that plays, whenever the recording would wait for more bytes: true
    // ends the replay there (a stop signalled to a tool playing a FIFO on virtual time).
    void setInterruption(std::function<bool()> interrupted);

    std::string name() const override { return "Corvalog recording replay"; }
    // Starts playing (0); a second call while playing changes nothing (0); after CloseInterface
    // the recording cannot play again (1).
    std::int16_t OpenInterface(std::int16_t port, std::int32_t baudrate) override;
    // Stops playing and joins the worker. Batches already queued still reach the GUI thread.
    void CloseInterface() override;

signals:
    // The last packet of the recording was handed on; on the GUI thread, after that packet's
    // batch. Not emitted when CloseInterface stopped the replay first.
    void finished();

private:
    class LineReader;

    ReplayProvider(int fd, Pacing pacing, const NumberLocale &locale);
    bool peek();
    void takeInto(PacketBatch &batch);
    void keepMessage(std::uint64_t lineNumber, const std::string &reason);
    void run();

    const Pacing m_pacing;
    const NumberLocale m_locale; // of the value texts handed on
    // Read only by the thread that plays: the worker in real time, the caller in virtual time.
    std::unique_ptr<LineReader> m_reader;
    RecordedPacket m_next;
    bool m_hasNext = false;
    double m_lastTime = 0;
    std::uint64_t m_lineNumber = 0;
    std::string m_error;

    enum class State { Ready, Open, Closed };
    State m_state = State::Ready;
    std::chrono::steady_clock::time_point m_start;
    std::thread m_worker;
    std::atomic<bool> m_stop { false };
    std::mutex m_wakeMutex;
    std::condition_variable m_wake;

    std::function<bool()> m_interruption;
    std::atomic<bool> m_finished { false };
};

} // namespace corvalog
