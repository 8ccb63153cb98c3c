#include "app/DriverDialog.h"

#include "AppFixture.h"
#include "acquisition/DriverSettings.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QTimer>
#include <algorithm>
#include <tuple>

namespace corvalog {

namespace {

template <typename T = QLineEdit> T *child(const QWidget &dialog, const char *name)
{
    return dialog.findChild<T *>(QString::fromLatin1(name));
}

// The kinds, in the order the dialog lists them.
enum Kind { None = -1, Simulated, Serial, Replay, Udp };

TEST(DriverDialog, OkOnlyWhileTheTextNamesASource)
{
    // The source text, whether OK is available, and the kind the text chooses.
    const std::tuple<const char *, bool, int> cases[] = {
        { "sim", true, Simulated },
        { "sim:x", false, Simulated },
        { "serial", true, Serial },
        { "serial:/dev/ttyUSB0:921600", true, Serial },
        { "udp:0", false, Udp },
        { "", false, None },
        { "bogus", false, None },
    };
    for (const auto &[text, ok, kind] : cases) {
        SCOPED_TRACE(text);
        DriverDialog dialog(QString::fromLatin1(text), {});
        EXPECT_EQ(child<QPushButton>(dialog, "btnOK")->isEnabled(), ok);
        EXPECT_EQ(child<QComboBox>(dialog, "cbKind")->currentIndex(), kind);
        QLabel *error = child<QLabel>(dialog, "lblError");
        EXPECT_EQ(error->isHidden(), ok);
        EXPECT_EQ(error->text().isEmpty(), ok);
    }
}

// A kind chosen writes its sample text; text typed chooses its kind and stays as typed.
TEST(DriverDialog, KindAndTextFollowEachOther)
{
    DriverDialog dialog(QStringLiteral("sim:7"), {});
    QComboBox *kind = child<QComboBox>(dialog, "cbKind");
    QLineEdit *source = child(dialog, "tbSource");
    const std::tuple<int, const char *, bool> cases[] = {
        { Udp, "udp:5000", true },
        { Replay, "replay:", false }, // a file still has to be named
        { Serial, "serial", true },
        { Simulated, "sim", true },
    };
    for (const auto &[chosen, sample, ok] : cases) {
        kind->setCurrentIndex(chosen);
        EXPECT_EQ(source->text(), QString::fromLatin1(sample));
        EXPECT_EQ(child<QPushButton>(dialog, "btnOK")->isEnabled(), ok) << sample;
    }
    source->clear();
    QTest::keyClicks(source, QStringLiteral("udp:9"));
    EXPECT_EQ(kind->currentIndex(), Udp);
    EXPECT_EQ(dialog.source(), QStringLiteral("udp:9"));
}

using DriverMenu = AppFixture;

// OK writes the source and makes the driver again; Cancel leaves both alone. The entry waits,
// like the workspace editor, while logging.
TEST_F(DriverMenu, OkWritesTheSourceAndMakesTheDriverAgain)
{
    ASSERT_TRUE(start());
    QAction *entry = window->action("mnuDriver");
    ASSERT_NE(entry, nullptr);

    // Whether OK is clicked, the source the dialog opens with, and the source afterwards.
    const std::tuple<bool, const char *, const char *> cases[] = {
        { true, "sim", "sim:5" },
        { false, "sim:5", "sim:5" },
    };
    for (const auto &[ok, shown, stored] : cases) {
        QString opened;
        QTimer::singleShot(0, window.get(), [this, ok = ok, &opened] {
            auto *dialog = window->findChild<DriverDialog *>();
            ASSERT_NE(dialog, nullptr);
            opened = dialog->source();
            child(*dialog, "tbSource")->setText(QStringLiteral("sim:5"));
            QTest::mouseClick(
                child<QPushButton>(*dialog, ok ? "btnOK" : "btnCancel"), Qt::LeftButton);
        });
        calls.clear();
        entry->trigger();
        EXPECT_EQ(opened, QString::fromLatin1(shown));
        EXPECT_EQ(readDriverSettings(window->paths().settingsFile).source, stored);
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "create"), ok ? 1 : 0);
    }

    window->startLoggingTo(path("log.csv"));
    ASSERT_TRUE(window->logger().isLogging());
    EXPECT_FALSE(entry->isEnabled());
    window->mnuStartStopLog_Click();
    EXPECT_TRUE(entry->isEnabled());
    EXPECT_TRUE(prompts.messages.empty());
}

} // namespace

} // namespace corvalog
