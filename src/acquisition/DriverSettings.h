#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corvalog {

// The program's driver settings, section "Driver" of the settings file: which source the
// program opens ("Source", as CORVALOG_SOURCE names it; the simulator when missing), and which
// device stands for USB ("USB") and for each COM port number ("COM1", "COM2", ...), and for a
// broker source the CA file of mqtts:// ("MqttCaFile") and the file holding the user name and
// password ("MqttCredentials").
namespace driverkeys {
inline constexpr const char *kSection = "Driver";
inline constexpr const char *kSource = "Source";
inline constexpr const char *kUsb = "USB";
inline constexpr const char *kMqttCaFile = "MqttCaFile";
inline constexpr const char *kMqttCredentials = "MqttCredentials";
inline constexpr const char *kDefaultSource = "sim";
// The highest COM port number a workspace can name.
inline constexpr int kMaxComPort = 255;
} // namespace driverkeys

struct DriverSettings {
    std::string source = driverkeys::kDefaultSource;
    std::string usbDevice; // "" for the first USB serial device present
    std::map<int, std::string> comDevices; // COM port number -> device
    std::string mqttCaFile;
    std::string mqttCredentialsFile;

    // The device COM port `port` opens: its "COM<N>" entry, else /dev/ttyS<N-1>; "" for a port
    // number below 1.
    std::string comDevice(int port) const;
};

// Reads the section from the settings file; a missing file or key reads as its default.
DriverSettings readDriverSettings(const std::string &settingsFile);
// Writes "Source"; true when written.
bool writeDriverSource(const std::string &settingsFile, const std::string &source);
// Writes "COM<N>" (removing nothing else); true when written.
bool writeComDevice(const std::string &settingsFile, int port, const std::string &device);

// A serial device as the workspace editor offers it: the COM port number that opens it, the
// device, and what the system says it is ("FTDI FT232R USB UART"), or "" when it is not present.
struct SerialPortEntry {
    int port = 0;
    std::string device;
    std::string description;
    bool present = false;

    // "3 — /dev/ttyUSB0, FTDI FT232R USB UART" ("3 — /dev/ttyS2" for a port not present).
    std::string caption() const;
};

// The serial devices present on this machine (from the system's serial port list) and the
// devices the settings map to COM ports: every mapped port and every /dev/ttyS port present
// under its own number; a device present but not mapped under the next free number from 1 up.
// Such an entry opens its device only once it is mapped: choosing it writes its COM<N> key.
std::vector<SerialPortEntry> serialPortEntries(const DriverSettings &settings);

// The device USB opens: the "USB" entry, else the first USB serial device present ("" when
// there is none).
std::string usbDevice(const DriverSettings &settings);

} // namespace corvalog
