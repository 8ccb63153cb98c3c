#include "Settings.h"

#include "INIFileModule.h"
#include "SystemFolders.h"

#include <climits>
#include <cmath>

namespace corvalog {

RecentFile readRecentFile(const std::string &settingsFile, std::string_view section,
    std::string_view defaultFolder, std::string_view defaultFile)
{
    RecentFile recent;
    recent.folder = ReadINI(settingsFile, section, settings::kInitDir, defaultFolder);
    recent.file = ReadINI(settingsFile, section, settings::kInitFile, defaultFile);
    return recent;
}

bool writeRecentFile(
    const std::string &settingsFile, std::string_view section, const RecentFile &recent)
{
    const bool fileWritten = WriteINI(settingsFile, section, settings::kInitFile, recent.file);
    const bool folderWritten = WriteINI(settingsFile, section, settings::kInitDir, recent.folder);
    return fileWritten && folderWritten;
}

std::string tareKey(int channel)
{
    return "Tare" + std::to_string(channel);
}

bool writeTare(const std::string &settingsFile, int channel, std::string_view text)
{
    return WriteINI(settingsFile, settings::kSettings, tareKey(channel), text);
}

std::unique_ptr<QSettings> userSettings()
{
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
        QString::fromLatin1(kProgramName), QString::fromLatin1(kProgramName));
}

namespace {

// The store holds text that anyone may have edited; what is not a usable number is ignored.
int readSize(QSettings &store, const char *key, int defaultValue)
{
    const QVariant stored = store.value(QLatin1String(key));
    if (!stored.isValid())
        return defaultValue;
    bool ok = false;
    const double value = stored.toString().trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value) || value < INT_MIN || value > INT_MAX)
        return defaultValue;
    return static_cast<int>(std::lround(value));
}

} // namespace

WindowSize readWindowSize(QSettings &store)
{
    store.beginGroup(QLatin1String(settings::kSizeGroup));
    WindowSize size;
    size.width = readSize(store, settings::kWidth, settings::kDefaultWidth);
    size.height = readSize(store, settings::kHeight, settings::kDefaultHeight);
    store.endGroup();
    return size;
}

void writeWindowSize(QSettings &store, const WindowSize &size)
{
    store.beginGroup(QLatin1String(settings::kSizeGroup));
    store.setValue(QLatin1String(settings::kWidth), QString::number(size.width));
    store.setValue(QLatin1String(settings::kHeight), QString::number(size.height));
    store.endGroup();
}

} // namespace corvalog
