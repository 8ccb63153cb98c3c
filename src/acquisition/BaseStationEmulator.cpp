#include "BaseStationEmulator.h"

#include "runtime/NumberLocale.h"
#include "runtime/ReadNumber.h"
#include "runtime/VbError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace corvalog {

namespace {

bool byteArgument(const std::string &text, std::uint8_t &out)
{
    unsigned value = 0;
    if (!readNumber(text, value) || value > 255)
        return false;
    out = static_cast<std::uint8_t>(value);
    return true;
}

std::string versionText(float version)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", static_cast<double>(version));
    return text;
}

// Thrown for a command this base station cannot read.
struct BadCommand {
    std::string why;
};

void requireArguments(const bsp::CommandLine &command, std::size_t count)
{
    if (command.arguments.size() != count)
        throw BadCommand { command.operation + " takes " + std::to_string(count)
            + (count == 1 ? " argument" : " arguments") };
}

std::uint8_t address(const std::string &text)
{
    std::uint8_t value = 0;
    if (!byteArgument(text, value))
        throw BadCommand { "a base-station address is 0 to 255, not '" + text + "'" };
    return value;
}

} // namespace

std::unique_ptr<BaseStationEmulator> BaseStationEmulator::create(
    const std::string &linkPath, const SimulationOptions &options, std::string &error)
{
    struct stat st {
    };
    if (::lstat(linkPath.c_str(), &st) == 0 && !S_ISLNK(st.st_mode)) {
        error = linkPath + " exists and is not a link; choose another path";
        return nullptr;
    }
    int master = -1;
    int slave = -1;
    char name[256] = {};
    if (::openpty(&master, &slave, name, nullptr, nullptr) != 0) {
        error = std::string("cannot open a pseudo-terminal: ") + std::strerror(errno);
        return nullptr;
    }
    termios raw {};
    ::tcgetattr(slave, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(slave, TCSANOW, &raw);
    ::fcntl(master, F_SETFL, ::fcntl(master, F_GETFL) | O_NONBLOCK);
    ::fcntl(master, F_SETFD, FD_CLOEXEC);
    ::fcntl(slave, F_SETFD, FD_CLOEXEC);
    ::unlink(linkPath.c_str());
    if (::symlink(name, linkPath.c_str()) != 0) {
        error = "cannot link " + linkPath + ": " + std::strerror(errno);
        ::close(master);
        ::close(slave);
        return nullptr;
    }
    return std::unique_ptr<BaseStationEmulator>(
        new BaseStationEmulator(master, slave, name, linkPath, options));
}

BaseStationEmulator::BaseStationEmulator(int master, int slave, std::string device,
    std::string linkPath, const SimulationOptions &options)
    : m_master(master)
    , m_slave(slave)
    , m_device(std::move(device))
    , m_linkPath(std::move(linkPath))
    , m_simulator(options)
    , m_readable(master, QSocketNotifier::Read)
    , m_writable(master, QSocketNotifier::Write)
{
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &BaseStationEmulator::readCommands);
    connect(&m_writable, &QSocketNotifier::activated, this, &BaseStationEmulator::flush);
    connect(&m_simulator, &DataProvider::packetsArrived, this, &BaseStationEmulator::send);
    // The modules are on the air from the start, as a powered base station's are.
    m_simulator.OpenInterface(0, 0);
}

BaseStationEmulator::~BaseStationEmulator()
{
    m_simulator.CloseInterface();
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    // Only our own link goes: another emulator may have taken the path since.
    char target[256] = {};
    const ssize_t n = ::readlink(m_linkPath.c_str(), target, sizeof target - 1);
    if (n > 0 && m_device == std::string(target, static_cast<std::size_t>(n)))
        ::unlink(m_linkPath.c_str());
    ::close(m_master);
    ::close(m_slave);
}

void BaseStationEmulator::readCommands()
{
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(m_master, buffer, sizeof buffer);
        if (n <= 0)
            return; // EAGAIN: all read
        m_assembler.feed(buffer, static_cast<std::size_t>(n),
            [this](std::string_view line, bool) { answer(line); });
    }
}

void BaseStationEmulator::answer(std::string_view line)
{
    if (line.empty() || line == "\r" || line[0] == '#')
        return;
    bsp::CommandLine command;
    std::string error;
    if (!bsp::parseCommandLine(line, command, error)) {
        ++m_refused;
        return;
    }
    queue(run(command));
    ++m_answered;
}

std::string BaseStationEmulator::run(const bsp::CommandLine &command)
{
    const std::string &op = command.operation;
    const std::vector<std::string> &a = command.arguments;
    try {
        if (op == bsp::kDetect) {
            requireArguments(command, 1);
            return bsp::answerText(
                command.seq, { std::to_string(m_simulator.DetectBaseStation(address(a[0]))) });
        }
        if (op == bsp::kSetChannel) {
            requireArguments(command, 2);
            std::uint8_t channel = 0;
            if (!byteArgument(a[1], channel))
                throw BadCommand { "a radio channel is 0 to 255, not '" + a[1] + "'" };
            m_simulator.SetRadioChannel(address(a[0]), channel);
        } else if (op == bsp::kWake) {
            requireArguments(command, 1);
            m_simulator.WakeAll(address(a[0]));
        } else if (op == bsp::kSleep) {
            requireArguments(command, 0);
            m_simulator.SleepAll();
        } else if (op == bsp::kKeepAwake) {
            requireArguments(command, 0);
            m_simulator.KeepAwakeAll();
        } else if (op == bsp::kSend) {
            requireArguments(command, 4);
            std::uint8_t station = address(a[0]);
            std::int32_t tag = 0;
            if (a[1].size() > 4 || !readNumber(a[1], tag, 16))
                throw BadCommand { "a Data Tag is 1 to 4 hexadecimal digits, not '" + a[1] + "'" };
            std::uint8_t code = 0;
            if (!byteArgument(a[2], code))
                throw BadCommand { "a command code is 0 to 255, not '" + a[2] + "'" };
            std::string data = a[3];
            return bsp::answerText(
                command.seq, { std::to_string(m_simulator.SendCommand(station, tag, code, data)) });
        } else if (op == bsp::kVersion) {
            requireArguments(command, 0);
            return bsp::answerText(command.seq,
                { versionText(m_simulator.ComVersion()), versionText(m_simulator.DllVersion()) });
        } else {
            throw BadCommand { "unknown operation '" + op + "'" };
        }
        return bsp::answerText(command.seq, { "0" });
    } catch (const VbError &e) {
        return bsp::failureText(command.seq, e.number(), e.description());
    } catch (const BadCommand &bad) {
        return bsp::failureText(command.seq, vberr::InvalidProcedureCall, bad.why);
    }
}

void BaseStationEmulator::send(const PacketBatch &packets)
{
    const NumberLocale &locale = numberLocale();
    for (const PacketNotification &p : packets) {
        if (m_pending.size() >= kMaxPending) {
            ++m_dropped;
            continue;
        }
        queue(bsp::packetText(p, locale));
        ++m_sent;
    }
}

void BaseStationEmulator::queue(const std::string &text)
{
    m_pending += text;
    flush();
}

void BaseStationEmulator::flush()
{
    while (!m_pending.empty()) {
        const ssize_t n = ::write(m_master, m_pending.data(), m_pending.size());
        if (n <= 0) {
            // Full: the notifier says when the reader has made room.
            m_writable.setEnabled(errno == EAGAIN || errno == EINTR);
            return;
        }
        m_pending.erase(0, static_cast<std::size_t>(n));
    }
    m_writable.setEnabled(false);
}

} // namespace corvalog
