// Shows every display control in every state, for screenshots and for looking at them:
//   corvalog-gallery [--screenshot FILE]   the gallery (QT_SCALE_FACTOR=2 for 200 %)
//   corvalog-gallery --live [SECONDS [FILE]]  24 panels refreshed from the simulated base
//                                          station (a screenshot to FILE at the end)
#include "acquisition/PacketPump.h"
#include "acquisition/SimulatedProvider.h"
#include "displays/DisplayRefresh.h"
#include "displays/FlatButton.h"
#include "displays/LCDModule.h"
#include "displays/TableContainer.h"
#include "displays/eLCD.h"
#include "displays/eLCDContainer.h"
#include "displays/eLCDText.h"
#include "runtime/Clock.h"
#include "runtime/TimerPeriods.h"
#include "session/Session.h"
#include "values/ScriptClass.h"

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <iostream>

using namespace corvalog;

namespace {

QLabel *heading(const QString &text)
{
    auto *label = new QLabel(text);
    QFont f = label->font();
    f.setBold(true);
    label->setFont(f);
    return label;
}

// The character table, lower case, unknown characters and points, on the plain element.
QWidget *characterRows()
{
    auto *box = new QWidget;
    auto *grid = new QVBoxLayout(box);
    const char *rows[] = { "0123456789", "-?ABCDEFGH", "IJKLNOPQRS", "TUVXYZ=^<>", "{[}] mw e",
        "-------", "-12.345", "1.2.3", ".5" };
    for (const char *text : rows) {
        auto *lcd = new eLCD;
        lcd->setDigits(10);
        lcd->setCaption(QString::fromLatin1(text));
        lcd->setBackColor(0x202020);
        lcd->setOffColor(0x383838);
        lcd->setOnColor(0x40E0FF);
        lcd->setFixedSize(300, 40);
        grid->addWidget(lcd);
    }
    return box;
}

// The five schemes, each with its marker lit, unlit and inverse.
QWidget *schemes()
{
    auto *box = new QWidget;
    auto *grid = new QGridLayout(box);
    for (int scheme = 0; scheme <= 4; ++scheme) {
        auto *frame = new eLCDContainer;
        frame->setCornerDiameter(12);
        frame->setFixedSize(240, 70);
        auto *lcd = new eLCD(frame);
        lcd->setGeometry(8, 18, 224, 46);
        lcd->setDigits(7);
        lcd->setCaption(QStringLiteral("-12.34"));
        auto *text = new eLCDText(frame);
        text->setGeometry(8, 3, 110, 14);
        text->setCaption(QStringLiteral("Zeroed (Net)"));
        text->setState(scheme % 2 == 0);
        text->setInverse(scheme == 4);
        frame->setScheme(scheme);
        frame->ColorChildren();
        grid->addWidget(new QLabel(QStringLiteral("Scheme %1").arg(scheme)), scheme, 0);
        grid->addWidget(frame, scheme, 1);
    }
    return box;
}

QWidget *buttons()
{
    auto *box = new QWidget;
    auto *row = new QHBoxLayout(box);
    const char *captions[] = { "Zero", "Hover", "Disabled" };
    for (int i = 0; i < 3; ++i) {
        auto *b = new FlatButton;
        b->setCaption(QString::fromLatin1(captions[i]));
        b->setBackColor(0xD8D2CC);
        b->setHoverColor(0xF0EBE6);
        b->setFixedSize(70, 25);
        b->setEnabled(i != 2);
        b->setObjectName(QString::fromLatin1(captions[i]));
        row->addWidget(b);
    }
    row->addStretch();
    return box;
}

struct PanelState {
    const char *title;
    const char *value;
    int digits;
    bool error;
    bool flash;
    float lqi;
    bool lowBattery;
    bool tared;
    const char *button;
};

QWidget *panels(FlashPhase &red, FlashPhase &normal)
{
    const PanelState states[] = {
        { "Load (kg)", "12.345", 7, false, false, 100, false, false, "Zero" },
        { "Temperature", "21.8", 7, false, false, 80, false, true, "Zero" },
        { "Faulty module", kNoValue, 7, true, false, 0, false, false, "Zero" },
        { "Over limit: red phase", "31.2", 7, false, true, 60, true, false, "Zero" },
        { "Over limit: normal phase", "31.2", 7, false, true, 40, true, false, "Zero" },
        { "Peak", "1013.46", 7, false, false, 20, false, false, "Reset" },
        { "Weak link", "3.04", 7, false, false, 0, true, false, "Zero" },
        { "Six fifths (LQI 120)", "-9999999", 8, false, false, 120, false, false, "Zero" },
    };
    auto *box = new QWidget;
    auto *grid = new QGridLayout(box);
    int i = 0;
    for (const PanelState &s : states) {
        auto *panel = new LCDModule;
        panel->setForeColor(kBlack);
        panel->InitFlashLabel(i == 4 ? &normal : &red);
        panel->setTitle(QString::fromLatin1(s.title));
        panel->setDigits(s.digits);
        panel->setValue(QString::fromLatin1(s.value));
        panel->setBtnCaption(QString::fromLatin1(s.button));
        panel->setFlashMode(s.flash);
        panel->setBackColor(s.error ? kPureRed : kSystem3DLight);
        panel->setLQI(s.lqi);
        panel->setLoBatt(s.lowBattery);
        panel->setNetInd(s.tared);
        grid->addWidget(panel, i / 4, i % 4);
        ++i;
    }
    return box;
}

int gallery(QApplication &app, const QString &screenshot)
{
    FlashPhase red, normal;
    QWidget window;
    window.setWindowTitle(QStringLiteral("Corvalog display gallery"));
    auto *layout = new QGridLayout(&window);
    layout->addWidget(heading(QStringLiteral("Panels")), 0, 0, 1, 2);
    layout->addWidget(panels(red, normal), 1, 0, 1, 2);
    layout->addWidget(heading(QStringLiteral("Segment table")), 2, 0);
    layout->addWidget(characterRows(), 3, 0, 2, 1);
    layout->addWidget(heading(QStringLiteral("Schemes and markers")), 2, 1);
    layout->addWidget(schemes(), 3, 1);
    layout->addWidget(buttons(), 4, 1, Qt::AlignTop);
    window.show();
    red.setOn(true);
    normal.setOn(true);
    normal.setOn(false);
    // Hover the middle button, as a pointer would.
    if (auto *hover = window.findChild<FlatButton *>(QStringLiteral("Hover"))) {
        QMouseEvent move(QEvent::MouseMove, QPointF(10, 10), hover->mapToGlobal(QPointF(10, 10)),
            Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(hover, &move);
    }
    if (screenshot.isEmpty())
        return app.exec();
    QApplication::processEvents();
    if (!window.grab().save(screenshot)) {
        std::cerr << "cannot write " << screenshot.toStdString() << "\n";
        return 1;
    }
    return 0;
}

// 24 panels over the simulated modules, refreshed as the main window does, for measuring the
// cost of a live display.
class LiveHost final : public ReadValuesHost
{
public:
    bool suppressReadingLabel() const override { return true; }
    void setReadingLabel(const std::string &) override { }
    void processEvents() override { }
    std::string panelTitle(int) const override { return {}; }
};

int live(QApplication &app, int seconds, const QString &screenshot)
{
    LiveHost host;
    SilentPrompts prompts;
    struct NoView final : LoggingView, TickTimer {
        void enableMenu(LogMenu, bool) override { }
        void setLogLabel(const std::string &) override { }
        void setLogLabelToolTip(const std::string &) override { }
        void start(std::int32_t) override { }
        void stop() override { }
    } view;
    Session session(SessionOptions { [] { return std::make_unique<SimulatedProvider>(); }, nullptr,
                        numberLocale(), false, {} },
        SessionHost { host, view, view, prompts });

    WorkspaceClass &ws = session.workspace();
    ws.Channels = 24;
    ws.Items.assign(24, ItemClass {});
    const char *tags[] = { "FF12", "0012", "0C01", "0A1E", "0BA7", "5111", "0E44", "B117" };
    for (int n = 1; n <= 24; ++n) {
        ItemClass &item = ws.item(n);
        item.DataTagList = std::string("<") + tags[(n - 1) % 8] + ">";
        item.Caption = "Channel " + std::to_string(n);
        item.Format = "0.000";
        item.Overload = 20;
        item.Underload = -9999999;
        item.Timeout = 3;
    }
    session.activate({ [] {}, [](std::int32_t) {} });

    QScrollArea window;
    auto *grid = new TableContainer;
    window.setWidget(grid);
    window.setWidgetResizable(true);
    std::vector<LCDModule *> panels { nullptr };
    FlashPhase phase;
    for (int n = 1; n <= 24; ++n) {
        auto *panel = new LCDModule(grid);
        panel->setProperty("Index", n);
        panel->setForeColor(kBlack);
        panel->InitFlashLabel(&phase);
        panel->setTitle(QString::fromStdString(ws.item(n).Caption));
        panels.push_back(panel);
    }
    window.resize(960, 700);
    window.show();
    DisplayRefresh refresh({ session, window, panels, [](auto &) {} });
    QTimer screen, flash;
    QObject::connect(&screen, &QTimer::timeout, [&] { refresh.ScreenTimer_Timer(); });
    QObject::connect(&flash, &QTimer::timeout, [&] { phase.toggle(); });
    screen.start(kScreenIntervalMs);
    flash.start(kFlashIntervalMs);
    if (seconds > 0)
        QTimer::singleShot(seconds * 1000, &app, [&] {
            if (!screenshot.isEmpty())
                window.grab().save(screenshot);
            app.quit();
        });
    return app.exec();
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    const QStringList args = app.arguments();
    if (args.size() >= 2 && args[1] == QStringLiteral("--live"))
        return live(app, args.size() > 2 ? args[2].toInt() : 0, args.value(3));
    if (args.size() == 3 && args[1] == QStringLiteral("--screenshot"))
        return gallery(app, args[2]);
    if (args.size() == 1)
        return gallery(app, {});
    std::cerr << "usage: corvalog-gallery [--screenshot FILE | --live [SECONDS [FILE]]]\n";
    return 2;
}
