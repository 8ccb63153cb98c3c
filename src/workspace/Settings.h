#pragma once

#include <QSettings>
#include <memory>
#include <string>
#include <string_view>

namespace corvalog {

// Every setting the program keeps. The settings file (config.ini in the settings folder) holds
// the last workspace and log file and the tare values; the per-user store holds the window size.
namespace settings {
inline constexpr std::string_view kWorkspaceFiles = "WorkspaceFiles"; // last workspace file
inline constexpr std::string_view kLogFiles = "LogFiles"; // last log file
inline constexpr std::string_view kSettings = "Settings"; // tare values
inline constexpr std::string_view kInitFile = "InitFile"; // file name, without folder
inline constexpr std::string_view kInitDir = "InitDir"; // folder of that file

inline constexpr const char *kSizeGroup = "Size";
inline constexpr const char *kWidth = "Width";
inline constexpr const char *kHeight = "Height";
inline constexpr int kDefaultWidth = 16000;
inline constexpr int kDefaultHeight = 4000;
} // namespace settings

// A remembered file as the dialogs keep it: its folder and its name.
struct RecentFile {
    std::string folder;
    std::string file;
};

// InitDir and InitFile of a section, each its default when missing or empty.
RecentFile readRecentFile(const std::string &settingsFile, std::string_view section,
    std::string_view defaultFolder, std::string_view defaultFile);
// Writes InitFile and then InitDir of a section; true when both were written.
bool writeRecentFile(
    const std::string &settingsFile, std::string_view section, const RecentFile &recent);

// The key a channel's tare value is written under: "Tare" + the channel number.
std::string tareKey(int channel);
// Records a zeroed channel's tare value in section "Settings" (never read back).
bool writeTare(const std::string &settingsFile, int channel, std::string_view text);

// The main window size, in the window system's units as the per-user store keeps them.
struct WindowSize {
    int width = settings::kDefaultWidth;
    int height = settings::kDefaultHeight;
};

// The program's per-user store: native format, organisation and application "Corvalog".
std::unique_ptr<QSettings> userSettings();
// Size/Width and Size/Height; a missing or non-numeric value reads as its default.
WindowSize readWindowSize(QSettings &store);
// Stores both values as decimal text.
void writeWindowSize(QSettings &store, const WindowSize &size);

} // namespace corvalog
