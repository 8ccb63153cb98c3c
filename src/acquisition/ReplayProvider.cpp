#include "ReplayProvider.h"

#include "runtime/FileError.h"
#include "runtime/VbError.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace corvalog {

// Lines of a file through one large buffer: no allocation per line, and a line is a view that
// stays valid until the next call.
class ReplayProvider::LineReader
{
public:
    enum class Result { Line, TooLong, End };

    // `stopRequested` is asked whenever the reader would wait for more bytes (a pipe or FIFO
    // whose writer is slow) and at every buffer of an endless file; true ends the reading.
    LineReader(int fd, std::function<bool()> stopRequested)
        : m_fd(fd)
        , m_buffer(4 * kMaxLineBytes)
        , m_stopRequested(std::move(stopRequested))
    {
    }
    ~LineReader() { ::close(m_fd); }
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    // The next line without its "\n"; TooLong for a line over kMaxLineBytes (the rest of it is
    // passed over); End at the end of the file or after a read error.
    Result next(std::string_view &line)
    {
        for (;;) {
            const char *begin = m_buffer.data() + m_begin;
            const std::size_t available = m_end - m_begin;
            const auto *newline = static_cast<const char *>(std::memchr(begin, '\n', available));
            if (m_skipping) {
                m_begin = newline ? m_begin + static_cast<std::size_t>(newline - begin) + 1 : m_end;
                m_skipping = !newline;
                if (m_skipping && m_atEnd)
                    return Result::End;
                if (!m_skipping)
                    continue;
            } else if (newline) {
                line = std::string_view(begin, static_cast<std::size_t>(newline - begin));
                m_begin += line.size() + 1;
                return line.size() > kMaxLineBytes ? Result::TooLong : Result::Line;
            } else if (available > kMaxLineBytes) {
                m_skipping = true;
                ++m_begin; // at least one byte is consumed so the skip makes progress
                return Result::TooLong;
            } else if (m_atEnd) {
                if (available == 0)
                    return Result::End;
                line = std::string_view(begin, available);
                m_begin = m_end;
                return Result::Line;
            }
            fill();
        }
    }

    // The errno of a failed read (once), 0 when the file ended normally.
    int takeReadError() { return std::exchange(m_readError, 0); }

private:
    void fill()
    {
        if (m_begin > 0) {
            std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
            m_end -= m_begin;
            m_begin = 0;
        }
        for (;;) {
            if (m_stopRequested()) {
                m_atEnd = true;
                return;
            }
            // A pipe may have nothing yet: wait a little at a time, so a stop is seen.
            pollfd ready { m_fd, POLLIN, 0 };
            if (::poll(&ready, 1, kWaitMs) <= 0)
                continue;
            const ssize_t n = ::read(m_fd, m_buffer.data() + m_end, m_buffer.size() - m_end);
            if (n < 0 && (errno == EINTR || errno == EAGAIN))
                continue;
            if (n < 0)
                m_readError = errno;
            if (n <= 0)
                m_atEnd = true;
            else
                m_end += static_cast<std::size_t>(n);
            return;
        }
    }

    static constexpr int kWaitMs = 100;

    const int m_fd;
    std::vector<char> m_buffer;
    std::function<bool()> m_stopRequested;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_atEnd = false;
    bool m_skipping = false;
    int m_readError = 0;
};

namespace {

[[noreturn]] void raiseFileError(const std::string &path, int errnoValue)
{
    const FileError e = fileErrorForPath(errnoValue, path);
    throw VbError(e.number, "Cannot open the recording " + path + ": " + e.description);
}

} // namespace

std::unique_ptr<ReplayProvider> ReplayProvider::create(
    const std::string &path, Pacing pacing, const NumberLocale &locale)
{
    if (path.empty())
        throw VbError(vberr::BadFileName);
    // Non-blocking, so a FIFO without a writer cannot hang the GUI thread here.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        const int e = errno;
        raiseFileError(path, e);
    }
    struct stat st;
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        ::close(fd);
        raiseFileError(path, EISDIR);
    }
    // Read forward only, so a pipe or FIFO plays as well as a file; reads wait on poll, so a
    // writer that goes quiet never holds a stop up.
    return std::unique_ptr<ReplayProvider>(new ReplayProvider(fd, pacing, locale));
}

ReplayProvider::ReplayProvider(int fd, Pacing pacing, const NumberLocale &locale)
    : m_pacing(pacing)
    , m_locale(locale)
    , m_reader(std::make_unique<LineReader>(
          fd, [this] { return m_stop.load() || (m_interruption && m_interruption()); }))
{
}

void ReplayProvider::setInterruption(std::function<bool()> interrupted)
{
    m_interruption = std::move(interrupted);
}

ReplayProvider::~ReplayProvider()
{
    CloseInterface();
}

std::int16_t ReplayProvider::OpenInterface(std::int16_t, std::int32_t)
{
    if (m_state == State::Closed)
        return 1;
    if (m_state == State::Open)
        return 0;
    m_state = State::Open;
    m_start = std::chrono::steady_clock::now();
    if (m_pacing == Pacing::RealTime)
        m_worker = std::thread([this] { run(); });
    return 0;
}

void ReplayProvider::CloseInterface()
{
    m_state = State::Closed;
    {
        std::lock_guard<std::mutex> lock(m_wakeMutex);
        m_stop = true;
    }
    m_wake.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

void ReplayProvider::keepMessage(std::uint64_t lineNumber, const std::string &reason)
{
    reportMalformed("line " + std::to_string(lineNumber) + ": " + reason);
}

bool ReplayProvider::peek()
{
    while (!m_hasNext) {
        std::string_view line;
        const LineReader::Result r = m_reader->next(line);
        if (r == LineReader::Result::End) {
            if (const int e = m_reader->takeReadError())
                keepMessage(m_lineNumber + 1, std::string("reading stopped: ") + std::strerror(e));
            return false;
        }
        ++m_lineNumber;
        if (r == LineReader::Result::TooLong) {
            keepMessage(m_lineNumber, "longer than " + std::to_string(kMaxLineBytes) + " bytes");
            continue;
        }
        switch (parseRecordingLine(line, true, m_next, m_error, m_locale)) {
        case LineKind::Skip:
            break;
        case LineKind::Malformed:
            keepMessage(m_lineNumber, m_error);
            break;
        case LineKind::Packet:
            if (m_next.timeMs < m_lastTime) {
                keepMessage(m_lineNumber,
                    "time_ms " + recordingTime(m_next.timeMs) + " goes back before "
                        + recordingTime(m_lastTime));
                break;
            }
            m_lastTime = m_next.timeMs;
            m_hasNext = true;
            break;
        }
    }
    return true;
}

void ReplayProvider::takeInto(PacketBatch &batch)
{
    batch.push_back(std::move(m_next.packet));
    m_hasNext = false;
}

std::optional<double> ReplayProvider::nextPacketTime()
{
    if (m_pacing != Pacing::Virtual || m_state == State::Closed || !peek())
        return std::nullopt;
    return m_next.timeMs;
}

void ReplayProvider::advanceTo(double timeMs)
{
    if (m_pacing != Pacing::Virtual || m_state != State::Open || m_finished)
        return;
    PacketBatch batch;
    bool more = false;
    while ((more = peek()) && m_next.timeMs <= timeMs) {
        takeInto(batch);
        if (batch.size() == kMaxBatch)
            deliver(std::exchange(batch, {}));
    }
    deliver(std::move(batch));
    if (!more) {
        m_finished = true;
        emit finished();
    }
}

void ReplayProvider::run()
{
    using Clock = std::chrono::steady_clock;
    PacketBatch batch;
    double batchStart = 0;
    try {
        while (!m_stop && peek()) {
            const Clock::time_point due = m_start
                + std::chrono::duration_cast<Clock::duration>(
                    std::chrono::duration<double, std::milli>(m_next.timeMs));
            if (due > Clock::now()) {
                // Everything due is gathered: hand it over before sleeping.
                deliver(std::exchange(batch, {}));
                std::unique_lock<std::mutex> lock(m_wakeMutex);
                m_wake.wait_until(lock, due, [this] { return m_stop.load(); });
                continue;
            }
            if (batch.empty())
                batchStart = m_next.timeMs;
            else if (batch.size() == kMaxBatch || m_next.timeMs - batchStart >= kMaxBatchSpanMs) {
                deliver(std::exchange(batch, {}));
                batchStart = m_next.timeMs;
            }
            takeInto(batch);
        }
    } catch (const std::exception &e) {
        // Out of memory, most likely: what played so far stands, the rest is reported.
        keepMessage(m_lineNumber, std::string("replay stopped: ") + e.what());
    }
    if (m_stop)
        return; // closed: nothing more reaches the GUI thread from here
    deliver(std::move(batch));
    m_finished = true;
    QMetaObject::invokeMethod(
        this, [this] { emit finished(); }, Qt::QueuedConnection);
}

} // namespace corvalog
