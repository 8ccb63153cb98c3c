#include "app/QtPrompts.h"

#include <QDesktopServices>
#include <QObject>
#include <QUrl>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

// Stands in for the desktop: records what it was asked to open.
class Desktop : public QObject
{
    Q_OBJECT

public:
    std::vector<QUrl> asked;
    Q_INVOKABLE void open(const QUrl &url) { asked.push_back(url); }
};

// A file is always opened as a local file, even where its path reads like an address; the
// logo's address goes to the browser.
TEST(QtPrompts, FilesOpenAsLocalFilesAndAddressesAsAddresses)
{
    Desktop desktop;
    const QString schemes[] = { "file", "http", "https", "run" };
    for (const QString &scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, &desktop, "open");
    QtPrompts prompts;
    EXPECT_TRUE(prompts.openWithSystem("/data/run://x.csv"));
    EXPECT_TRUE(prompts.openWithSystem("run://x.csv"));
    EXPECT_TRUE(prompts.openAddress("https://corvalog.example.com"));
    for (const QString &scheme : schemes)
        QDesktopServices::unsetUrlHandler(scheme);

    ASSERT_EQ(desktop.asked.size(), 3u);
    EXPECT_EQ(desktop.asked[0].toLocalFile(), QStringLiteral("/data/run://x.csv"));
    EXPECT_TRUE(desktop.asked[1].isLocalFile());
    EXPECT_EQ(desktop.asked[2], QUrl("https://corvalog.example.com"));
}

} // namespace
} // namespace corvalog

#include "QtPromptsTest.moc"
