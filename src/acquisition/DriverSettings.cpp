#include "DriverSettings.h"

#include "workspace/INIFileModule.h"
#include "workspace/IniFile.h"

#include <QSerialPortInfo>
#include <algorithm>
#include <set>

namespace corvalog {

namespace {

std::string comKey(int port)
{
    return "COM" + std::to_string(port);
}

// Linux names USB serial adapters ttyUSB<n> and USB modems (CDC-ACM) ttyACM<n>.
bool isUsbDevice(const QSerialPortInfo &info)
{
    const QString name = info.portName();
    return info.hasVendorIdentifier() || name.startsWith(QLatin1String("ttyUSB"))
        || name.startsWith(QLatin1String("ttyACM"));
}

std::vector<QSerialPortInfo> presentPorts()
{
    std::vector<QSerialPortInfo> ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts())
        ports.push_back(info);
    std::sort(ports.begin(), ports.end(), [](const QSerialPortInfo &a, const QSerialPortInfo &b) {
        return a.systemLocation() < b.systemLocation();
    });
    return ports;
}

std::string describe(const QSerialPortInfo &info)
{
    QString text = info.manufacturer();
    const QString what = info.description();
    if (!what.isEmpty() && what != text)
        text = text.isEmpty() ? what : text + QLatin1Char(' ') + what;
    return text.trimmed().toStdString();
}

} // namespace

std::string DriverSettings::comDevice(int port) const
{
    if (port < 1)
        return {};
    const auto mapped = comDevices.find(port);
    if (mapped != comDevices.end())
        return mapped->second;
    return "/dev/ttyS" + std::to_string(port - 1);
}

DriverSettings readDriverSettings(const std::string &settingsFile)
{
    DriverSettings settings;
    const std::optional<IniDocument> document = loadIniFile(settingsFile);
    if (!document)
        return settings;
    const std::string source
        = readIniValue(*document, driverkeys::kSection, driverkeys::kSource, "");
    if (!source.empty())
        settings.source = source;
    settings.usbDevice = readIniValue(*document, driverkeys::kSection, driverkeys::kUsb, "");
    settings.mqttCaFile
        = readIniValue(*document, driverkeys::kSection, driverkeys::kMqttCaFile, "");
    settings.mqttCredentialsFile
        = readIniValue(*document, driverkeys::kSection, driverkeys::kMqttCredentials, "");
    for (int port = 1; port <= driverkeys::kMaxComPort; ++port) {
        std::string device = readIniValue(*document, driverkeys::kSection, comKey(port), "");
        if (!device.empty())
            settings.comDevices.emplace(port, std::move(device));
    }
    return settings;
}

bool writeDriverSource(const std::string &settingsFile, const std::string &source)
{
    return WriteINI(settingsFile, driverkeys::kSection, driverkeys::kSource, source);
}

bool writeComDevice(const std::string &settingsFile, int port, const std::string &device)
{
    return WriteINI(settingsFile, driverkeys::kSection, comKey(port), device);
}

std::string SerialPortEntry::caption() const
{
    std::string text = std::to_string(port) + " \u2014 " + device;
    if (!description.empty())
        text += ", " + description;
    return text;
}

std::vector<SerialPortEntry> serialPortEntries(const DriverSettings &settings)
{
    const std::vector<QSerialPortInfo> present = presentPorts();
    std::map<std::string, const QSerialPortInfo *> byDevice;
    for (const QSerialPortInfo &info : present)
        byDevice.emplace(info.systemLocation().toStdString(), &info);

    std::map<int, SerialPortEntry> entries;
    std::set<std::string> listed;
    const auto add = [&](int port, const std::string &device) {
        SerialPortEntry e;
        e.port = port;
        e.device = device;
        const auto found = byDevice.find(device);
        if (found != byDevice.end()) {
            e.present = true;
            e.description = describe(*found->second);
        }
        entries[port] = e;
        listed.insert(device);
    };
    for (const auto &[port, device] : settings.comDevices)
        add(port, device);
    // /dev/ttyS<n> is COM n+1 unless that number is mapped elsewhere.
    for (const QSerialPortInfo &info : present) {
        const QString name = info.portName();
        bool ok = false;
        const int n = name.startsWith(QLatin1String("ttyS")) ? name.mid(4).toInt(&ok) : -1;
        const std::string device = info.systemLocation().toStdString();
        if (ok && n >= 0 && n < driverkeys::kMaxComPort && !entries.count(n + 1)
            && !listed.count(device))
            add(n + 1, device);
    }
    int next = 1;
    for (const QSerialPortInfo &info : present) {
        const std::string device = info.systemLocation().toStdString();
        if (listed.count(device))
            continue;
        while (entries.count(next))
            ++next;
        if (next > driverkeys::kMaxComPort)
            break;
        add(next, device);
    }
    std::vector<SerialPortEntry> list;
    for (auto &[port, entry] : entries)
        list.push_back(std::move(entry));
    return list;
}

std::string usbDevice(const DriverSettings &settings)
{
    if (!settings.usbDevice.empty())
        return settings.usbDevice;
    for (const QSerialPortInfo &info : presentPorts())
        if (isUsbDevice(info))
            return info.systemLocation().toStdString();
    return {};
}

} // namespace corvalog
