#include "SerialProvider.h"

#include "runtime/ReadNumber.h"
#include "runtime/VbError.h"

#include <QFileInfo>
#include <QSerialPort>
#include <QTimer>
#include <chrono>
#include <cstdio>

namespace corvalog {

namespace {

// A device named by a relative path that exists is opened there, not under /dev.
std::string absoluteDevice(const std::string &device)
{
    if (device.empty() || device[0] == '/')
        return device;
    const QFileInfo here(QString::fromStdString(device));
    return here.exists() ? here.absoluteFilePath().toStdString() : device;
}

std::string hexTag(std::int32_t tag)
{
    char text[8];
    std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(tag));
    return text;
}

} // namespace

// The line itself, on the provider's thread: opens and reads the device, writes commands, and
// reopens a line that went away.
class SerialProvider::Link final : public QObject
{
public:
    Link(SerialProvider &owner, const SerialOptions &options)
        : m_owner(owner)
        , m_options(options)
    {
        m_reopen.setInterval(options.reopenIntervalMs);
        m_reopen.setParent(this);
        connect(&m_reopen, &QTimer::timeout, this, &Link::reopen);
    }

    // Opens the device; the system's reason when it cannot.
    std::string open(const std::string &device, std::int32_t baudrate, bool usbAnyDevice)
    {
        close();
        m_device = device;
        m_baudrate = baudrate;
        m_usbAnyDevice = usbAnyDevice;
        m_wanted = true;
        m_lineNumber = 0;
        return tryOpen();
    }

    void close()
    {
        m_wanted = false;
        m_reopen.stop();
        // Commands nobody waits for (a last SLEEP) still reach the base station.
        if (m_port && m_port->bytesToWrite() > 0)
            m_port->waitForBytesWritten(kCloseFlushMs);
        dropPort();
        m_owner.linkChanged(false);
    }

    void write(const QByteArray &bytes)
    {
        if (!m_port)
            return;
        m_port->write(bytes);
        // On the line now, not at the next turn of this thread's loop.
        m_port->flush();
    }

    // Retunes a base station that comes back, as it was before it went away.
    void rememberChannel(std::uint8_t address, std::uint8_t channel)
    {
        m_channel = { address, channel };
    }

private:
    static constexpr int kCloseFlushMs = 200;

    std::string tryOpen()
    {
        auto port = std::make_unique<QSerialPort>();
        port->setPortName(QString::fromStdString(m_device));
        port->setBaudRate(m_baudrate);
        if (!port->open(QIODevice::ReadWrite))
            return port->errorString().toStdString();
        // Bytes from before the opening belong to nobody.
        port->clear();
        m_port = port.release();
        m_port->setParent(this);
        connect(m_port, &QSerialPort::readyRead, this, &Link::read);
        connect(m_port, &QSerialPort::errorOccurred, this, &Link::failed);
        m_assembler.reset();
        m_lineNumber = 0;
        m_owner.linkChanged(true);
        return {};
    }

    void dropPort()
    {
        if (!m_port)
            return;
        m_port->disconnect(this);
        m_port->close();
        delete m_port;
        m_port = nullptr;
    }

    void read()
    {
        if (!m_port)
            return;
        const QByteArray bytes = m_port->readAll();
        m_assembler.feed(bytes.constData(), static_cast<std::size_t>(bytes.size()),
            [this](std::string_view line, bool tooLong) { take(line, tooLong); });
        if (!m_batch.empty()) {
            m_owner.handOver(std::move(m_batch));
            m_batch = {};
        }
    }

    void take(std::string_view line, bool tooLong)
    {
        ++m_lineNumber;
        if (tooLong) {
            m_owner.lineMalformed(
                where() + "longer than " + std::to_string(bsp::kMaxLineBytes) + " bytes");
            return;
        }
        bsp::parseStationLine(line, m_options.locale, m_parsed);
        switch (m_parsed.kind) {
        case bsp::StationLine::Kind::Packet:
            m_batch.push_back(std::move(m_parsed.packet));
            break;
        case bsp::StationLine::Kind::Answer:
        case bsp::StationLine::Kind::Failure:
            m_owner.answerArrived(std::move(m_parsed));
            m_parsed = {};
            break;
        case bsp::StationLine::Kind::Comment:
            break;
        case bsp::StationLine::Kind::Malformed:
            // The first line after an opening may be the tail of one sent before it.
            if (m_lineNumber > 1)
                m_owner.lineMalformed(where() + m_parsed.text);
            break;
        }
    }

    std::string where() const { return m_device + " line " + std::to_string(m_lineNumber) + ": "; }

    void failed(QSerialPort::SerialPortError error)
    {
        // A read or write that fails, or a device that is gone, ends this opening of the line.
        if (!m_port
            || (error != QSerialPort::ResourceError && error != QSerialPort::ReadError
                && error != QSerialPort::WriteError))
            return;
        const std::string reason = m_port->errorString().toStdString();
        dropPort();
        m_owner.linkChanged(false);
        m_owner.tellUser("The base station on " + m_device + " was lost (" + reason
                + "). Corvalog opens it again every second.",
            true);
        m_reopen.start();
    }

    void reopen()
    {
        if (!m_wanted) {
            m_reopen.stop();
            return;
        }
        if (m_usbAnyDevice) {
            const std::string device = usbDevice(m_options.settings);
            if (device.empty())
                return;
            m_device = device;
        }
        if (!tryOpen().empty())
            return;
        m_reopen.stop();
        m_owner.tellUser("The base station on " + m_device + " is back.", false);
        if (m_channel) {
            const std::string address = std::to_string(m_channel->first);
            write(QByteArray::fromStdString(
                bsp::commandText(m_owner.nextSequence(), bsp::kDetect, { address })));
            write(QByteArray::fromStdString(bsp::commandText(m_owner.nextSequence(),
                bsp::kSetChannel, { address, std::to_string(m_channel->second) })));
        }
    }

    SerialProvider &m_owner;
    const SerialOptions m_options;
    QSerialPort *m_port = nullptr;
    QTimer m_reopen;
    std::string m_device;
    std::int32_t m_baudrate = 0;
    bool m_usbAnyDevice = false;
    bool m_wanted = false;
    std::uint64_t m_lineNumber = 0;
    bsp::LineAssembler m_assembler;
    bsp::StationLine m_parsed;
    PacketBatch m_batch;
    std::optional<std::pair<std::uint8_t, std::uint8_t>> m_channel;
};

SerialProvider::SerialProvider(SerialOptions options, QObject *parent)
    : DataProvider(parent)
    , m_options(std::move(options))
{
    m_options.device = absoluteDevice(m_options.device);
    m_link = new Link(*this, m_options);
    m_link->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_link, &QObject::deleteLater);
    m_thread.start();
}

SerialProvider::~SerialProvider()
{
    QMetaObject::invokeMethod(
        m_link, [link = m_link] { link->close(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

std::string SerialProvider::name() const
{
    return "Corvalog serial base station";
}

std::int16_t SerialProvider::OpenInterface(std::int16_t port, std::int32_t baudrate)
{
    std::string device = m_options.device;
    std::int32_t speed = m_options.baudrate;
    const bool usb = port == 0 && baudrate == 0;
    bool usbAnyDevice = false;
    if (!device.empty()) {
        if (speed <= 0)
            speed = baudrate > 0 ? baudrate : kUsbBaudrate;
    } else if (usb) {
        usbAnyDevice = m_options.settings.usbDevice.empty();
        device = usbDevice(m_options.settings);
        speed = kUsbBaudrate;
        if (device.empty())
            throw VbError(kErrorOpen, "No USB serial device is present");
    } else {
        if (port < 1)
            throw VbError(kErrorOpen, "There is no COM port " + std::to_string(port));
        if (baudrate <= 0)
            throw VbError(kErrorOpen, std::to_string(baudrate) + " is not a baud rate");
        device = m_options.settings.comDevice(port);
        speed = baudrate;
    }
    {
        std::lock_guard<std::mutex> lock(m_answerMutex);
        m_device = device;
    }
    forgetVersions();
    std::string error;
    QMetaObject::invokeMethod(
        m_link,
        [&error, link = m_link, device, speed, usbAnyDevice] {
            error = link->open(device, speed, usbAnyDevice);
        },
        Qt::BlockingQueuedConnection);
    if (!error.empty())
        throw VbError(kErrorOpen, "Cannot open " + device + ": " + error);
    return 0;
}

void SerialProvider::CloseInterface()
{
    QMetaObject::invokeMethod(
        m_link, [link = m_link] { link->close(); }, Qt::BlockingQueuedConnection);
    m_versions.reset();
}

void SerialProvider::WakeAll(std::uint8_t baseStationAddress)
{
    tell(bsp::kWake, { std::to_string(baseStationAddress) });
}

void SerialProvider::SleepAll()
{
    tell(bsp::kSleep);
}

void SerialProvider::KeepAwakeAll()
{
    tell(bsp::kKeepAwake);
}

float SerialProvider::ComVersion()
{
    readVersions();
    return m_versions->first;
}

float SerialProvider::DllVersion()
{
    readVersions();
    return m_versions->second;
}

void SerialProvider::SetRadioChannel(std::uint8_t baseStationAddress, std::uint8_t radioChannel)
{
    const bsp::StationLine answer = ask(
        bsp::kSetChannel, { std::to_string(baseStationAddress), std::to_string(radioChannel) });
    const std::int32_t result = integerResult(bsp::kSetChannel, answer);
    if (result != 0)
        throw VbError(kErrorBadAnswer,
            "The base station refused SETCHANNEL (result " + std::to_string(result) + ")");
    QMetaObject::invokeMethod(
        m_link,
        [link = m_link, baseStationAddress, radioChannel] {
            link->rememberChannel(baseStationAddress, radioChannel);
        },
        Qt::QueuedConnection);
}

std::int32_t SerialProvider::DetectBaseStation(std::uint8_t baseStationAddress)
{
    return integerResult(bsp::kDetect, ask(bsp::kDetect, { std::to_string(baseStationAddress) }));
}

std::int32_t SerialProvider::SendCommand(std::uint8_t &baseStationAddress, std::int32_t datatag,
    std::uint8_t &command, std::string &data)
{
    if (datatag < 0 || datatag > 0xFFFF)
        throw VbError(
            vberr::InvalidProcedureCall, "A Data Tag is 0 to FFFF, not " + std::to_string(datatag));
    return integerResult(bsp::kSend,
        ask(bsp::kSend,
            { std::to_string(baseStationAddress), hexTag(datatag), std::to_string(command),
                data }));
}

std::string SerialProvider::device() const
{
    std::lock_guard<std::mutex> lock(m_answerMutex);
    return m_device;
}

bsp::StationLine SerialProvider::ask(
    std::string_view operation, const std::vector<std::string> &arguments)
{
    requireConnected(operation);
    const std::uint16_t seq = nextSequence();
    {
        std::lock_guard<std::mutex> lock(m_answerMutex);
        m_awaited = seq;
        m_answer.reset();
    }
    const QByteArray text = QByteArray::fromStdString(bsp::commandText(seq, operation, arguments));
    QMetaObject::invokeMethod(
        m_link, [link = m_link, text] { link->write(text); }, Qt::QueuedConnection);

    std::unique_lock<std::mutex> lock(m_answerMutex);
    m_answerChanged.wait_for(lock, std::chrono::milliseconds(m_options.answerTimeoutMs),
        [this] { return m_answer.has_value() || !m_connected.load(); });
    m_awaited = 0;
    if (!m_answer) {
        if (!m_connected.load())
            throw VbError(kErrorNotOpen,
                "The base station on " + m_device + " was lost during " + std::string(operation));
        throw VbError(kErrorNoAnswer,
            "The base station did not answer " + std::string(operation) + " within "
                + std::to_string(m_options.answerTimeoutMs) + " ms");
    }
    bsp::StationLine answer = std::move(*m_answer);
    m_answer.reset();
    if (answer.kind == bsp::StationLine::Kind::Failure)
        throw VbError(answer.number, answer.text);
    return answer;
}

void SerialProvider::tell(std::string_view operation, const std::vector<std::string> &arguments)
{
    requireConnected(operation);
    const QByteArray text
        = QByteArray::fromStdString(bsp::commandText(nextSequence(), operation, arguments));
    QMetaObject::invokeMethod(
        m_link, [link = m_link, text] { link->write(text); }, Qt::QueuedConnection);
}

void SerialProvider::requireConnected(std::string_view operation) const
{
    if (m_connected.load())
        return;
    const std::string device = this->device();
    throw VbError(kErrorNotOpen,
        device.empty()
            ? std::string(operation) + ": the base station's line is not open"
            : std::string(operation) + ": the base station on " + device + " is not connected");
}

std::int32_t SerialProvider::integerResult(
    std::string_view operation, const bsp::StationLine &answer) const
{
    const std::string &text = answer.fields.front();
    std::int32_t value = 0;
    if (!readNumber(text, value))
        throw VbError(kErrorBadAnswer,
            "The base station answered " + std::string(operation) + " with '" + text
                + "', not a whole number");
    return value;
}

void SerialProvider::readVersions()
{
    if (m_versions)
        return;
    // The about box asks twice; a base station that failed once is not waited for again.
    if (m_versionFailure)
        throw *m_versionFailure;
    bsp::StationLine answer;
    try {
        answer = ask(bsp::kVersion, {});
    } catch (const VbError &e) {
        m_versionFailure = e;
        throw;
    }
    float versions[2] = { 0, 0 };
    for (std::size_t i = 0; i < 2; ++i) {
        const std::string text = i < answer.fields.size() ? answer.fields[i] : std::string();
        if (!readNumber(text, versions[i]))
            throw VbError(
                kErrorBadAnswer, "The base station answered VERSION without two version numbers");
    }
    m_versions = std::make_pair(versions[0], versions[1]);
}

void SerialProvider::forgetVersions()
{
    m_versions.reset();
    m_versionFailure.reset();
}

std::uint16_t SerialProvider::nextSequence()
{
    std::uint16_t seq = m_seq.load();
    while (!m_seq.compare_exchange_weak(seq, bsp::nextSequence(seq))) { }
    return bsp::nextSequence(seq);
}

void SerialProvider::answerArrived(bsp::StationLine &&line)
{
    std::lock_guard<std::mutex> lock(m_answerMutex);
    // Late answers (after a time-out) and answers nobody waits for are let go.
    if (m_awaited == 0 || line.seq != m_awaited || m_answer)
        return;
    m_answer = std::move(line);
    m_answerChanged.notify_all();
}

void SerialProvider::linkChanged(bool connected)
{
    std::lock_guard<std::mutex> lock(m_answerMutex);
    m_connected = connected;
    m_answerChanged.notify_all();
}

} // namespace corvalog
