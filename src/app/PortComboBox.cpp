#include "PortComboBox.h"

#include "acquisition/DriverSettings.h"

namespace corvalog {

namespace {

constexpr int kDeviceRole = Qt::UserRole + 1;

} // namespace

PortComboBox::PortComboBox(QWidget *parent)
    : QComboBox(parent)
{
}

void PortComboBox::fill(const std::string &settingsFile)
{
    m_settingsFile = settingsFile;
    clear();
    const DriverSettings driver = readDriverSettings(settingsFile);
    std::vector<SerialPortEntry> ports = serialPortEntries(driver);
    if (ports.empty()) {
        for (int port = 1; port <= kFallbackPorts; ++port)
            ports.push_back({ port, driver.comDevice(port), "", false });
    }
    for (const SerialPortEntry &entry : ports)
        addPort(entry.port, entry.device, entry.caption());
}

void PortComboBox::selectPort(int port)
{
    int index = findData(port);
    if (index < 0) {
        const SerialPortEntry entry { port, readDriverSettings(m_settingsFile).comDevice(port), "",
            false };
        index = addPort(port, entry.device, entry.caption());
    }
    setCurrentIndex(index);
}

void PortComboBox::mapChosenPort(UserPrompts &prompts) const
{
    const int chosen = port();
    const std::string device = currentData(kDeviceRole).toString().toStdString();
    if (m_settingsFile.empty() || device.empty()
        || device == readDriverSettings(m_settingsFile).comDevice(chosen))
        return;
    if (!writeComDevice(m_settingsFile, chosen, device))
        prompts.message("Warning",
            "COM port " + std::to_string(chosen) + " could not be set to open " + device + " in "
                + m_settingsFile + ".",
            PromptIcon::Exclamation, PromptButtons::Ok);
}

int PortComboBox::addPort(int port, const std::string &device, const std::string &caption)
{
    int index = 0;
    while (index < count() && itemData(index).toInt() < port)
        ++index;
    insertItem(
        index, device.empty() ? QString::number(port) : QString::fromStdString(caption), port);
    setItemData(index, QString::fromStdString(device), kDeviceRole);
    return index;
}

} // namespace corvalog
