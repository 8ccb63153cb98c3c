#pragma once

#include "runtime/UserPrompts.h"

#include <QComboBox>
#include <string>

namespace corvalog {

// The editor's COM port list: the serial devices present and those the settings map to COM
// port numbers, in number order, each named ("3 — /dev/ttyUSB0, FTDI"); item data is the
// port number.
class PortComboBox final : public QComboBox
{
    Q_OBJECT

public:
    // Ports offered when no device is present and none is mapped, so a number can be chosen.
    static constexpr int kFallbackPorts = 16;

    explicit PortComboBox(QWidget *parent = nullptr);

    // Lists the ports of the settings file ("" for none).
    void fill(const std::string &settingsFile);
    // Chooses the port, adding it when it is not listed, so a workspace's value is kept.
    void selectPort(int port);
    int port() const { return currentData().toInt(); }
    // A device present but not mapped is listed under a free number, which opens it only once
    // the settings say so: writes that mapping when the chosen entry needs it (read now, as the
    // settings may have changed meanwhile); a failed write is told through the prompts.
    void mapChosenPort(UserPrompts &prompts) const;

private:
    int addPort(int port, const std::string &device, const std::string &caption);

    std::string m_settingsFile;
};

} // namespace corvalog
