#include "displays/FlatButton.h"
#include "displays/TableContainer.h"
#include "displays/eLCDContainer.h"
#include "displays/eLCDText.h"

#include <QAbstractButton>
#include <QApplication>
#include <QImage>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <vector>

using namespace corvalog;

namespace {

QImage render(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

OleColor pixelAt(const QImage &image, int x, int y)
{
    const QRgb rgb = image.pixel(x, y);
    return static_cast<OleColor>(qRed(rgb) | qGreen(rgb) << 8 | qBlue(rgb) << 16);
}

int countPixels(const QImage &image, OleColor colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            count += pixelAt(image, x, y) == colour ? 1 : 0;
        }
    }
    return count;
}

QFont bigFont()
{
    QFont font;
    font.setPixelSize(40);
    font.setBold(true);
    return font;
}

void sendMouse(QWidget &widget, QEvent::Type type, QPoint at)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
    QMouseEvent event(type, at, widget.mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

struct CursorChanges : QObject {
    int count = 0;
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::CursorChange ? 1 : 0;
        return false;
    }
};

// Sizes in pixels, so each converts exactly to twips.
struct Panel {
    QSize size;
    int index; // -1: no Index property
    QPoint expected; // for an Index 0 template, where it was put beforehand
};

std::vector<Panel> rowsOfThree()
{
    std::vector<Panel> panels;
    for (int i = 0; i < 24; ++i) {
        panels.push_back({ { 134, 90 }, i + 1, { (i % 3) * 134, (i / 3) * 90 } });
    }
    return panels;
}

} // namespace

TEST(SupportingTableContainer, FlowsPanelsIntoRowsOnResize)
{
    const struct {
        const char *name;
        int width;
        std::vector<Panel> panels;
        QSize extentTwips;
    } cases[] = {
        { "empty", 300, {}, { 2000, 920 } },
        // 2010-twip panels in a 7005-twip container.
        { "rows of three", 467, rowsOfThree(), { 3 * 134 * 15, 8 * 90 * 15 + 920 } },
        { "template untouched", 300,
            { { { 50, 20 }, 0, { 77, 33 } }, { { 100, 40 }, 1, { 0, 0 } },
                { { 100, 30 }, -1, { 100, 0 } } },
            { 3000, 40 * 15 + 920 } },
        // The 300-pixel panel sits alone, and as the first of its row does not widen the extent.
        { "wide panel alone", 200,
            { { { 100, 50 }, 1, { 0, 0 } }, { { 300, 60 }, 2, { 0, 50 } },
                { { 150, 40 }, 3, { 0, 110 } }, { { 50, 10 }, 4, { 150, 110 } } },
            { 3000, 150 * 15 + 920 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        TableContainer container;
        std::vector<QWidget *> children;
        for (const Panel &p : c.panels) {
            children.push_back(new QWidget(&container));
            children.back()->resize(p.size);
            if (p.index >= 0) {
                children.back()->setProperty("Index", p.index);
            }
            if (p.index == 0) {
                children.back()->move(p.expected);
                children.back()->hide();
            }
        }
        container.resize(c.width, 100);
        container.show(); // delivers the resize, which lays out

        EXPECT_EQ(container.scaleExtentTwips(), c.extentTwips);
        EXPECT_EQ(container.minimumHeight(),
            (c.extentTwips.height() - TableContainer::kBottomMarginTwips) / 15);
        for (std::size_t i = 0; i < children.size(); ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(children[i]->pos(), c.panels[i].expected);
            EXPECT_EQ(children[i]->isVisible(), c.panels[i].index != 0);
        }
    }
}

TEST(SupportingLcdContainer, SchemesPaintTheRoundedFrame)
{
    const struct {
        std::vector<int> schemes;
        OleColor back;
    } cases[] = {
        { {}, 0xA0B696 },
        { { 1 }, 0xE0CA87 },
        { { 2 }, 0xC0C0C0 },
        { { 3 }, 0x010015 },
        { { 4, 0 }, 0xA0B696 },
        { { 4, 5 }, 0x0C250C },
        { { 3, -1 }, 0x010015 },
    };
    for (const auto &c : cases) {
        eLCDContainer frame;
        frame.resize(80, 40);
        frame.setCornerDiameter(20);
        for (int scheme : c.schemes) {
            frame.setScheme(scheme);
        }
        const QImage image = render(frame);
        EXPECT_EQ(pixelAt(image, 40, 20), c.back);
        EXPECT_NE(pixelAt(image, 0, 0), c.back) << "corners are rounded";
    }
}

// Scheme 3 handed down by the frame: red lit text over a dark red ghost on near-black.
TEST(SupportingLcdText, StateAndInverseDecideWhatIsSeen)
{
    constexpr OleColor back = 0x010015, off = 0x000080, on = 0x0000FF;
    const struct {
        bool state, inverse;
        OleColor ground; // at a corner, clear of the text
        OleColor text;
    } cases[] = {
        { true, false, back, on },
        { false, false, back, off },
        { true, true, on, back },
        { false, true, off, back },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "state " << c.state << " inverse " << c.inverse);
        eLCDContainer frame;
        auto *text = new eLCDText(&frame);
        text->resize(200, 60);
        text->setCaptionFont(bigFont());
        text->setCaption("888");
        text->setInverse(c.inverse);
        text->setState(c.state);
        frame.setScheme(3);
        frame.ColorChildren();

        const QImage image = render(*text);
        EXPECT_EQ(pixelAt(image, 199, 1), c.ground);
        EXPECT_GT(countPixels(image, c.text), 50);
        EXPECT_EQ(countPixels(image, on) > 0, c.state) << "the lit colour shows only when lit";
    }
}

// The pointer entering lights the button and leaving restores it once, whichever way it goes:
// moved off, the button hidden, or a window opened over it. The pointer is never captured.
TEST(SupportingFlatButton, LeavingRestoresBackColorAndArrowOnce)
{
    constexpr OleColor back = 0x202020, hover = 0x00C000;
    enum class Exit { Leave, Hidden, Disabled };
    for (const Exit exit : { Exit::Leave, Exit::Hidden, Exit::Disabled }) {
        SCOPED_TRACE(static_cast<int>(exit));
        FlatButton button;
        button.resize(100, 30);
        button.setBackColor(back);
        button.setHoverColor(hover);
        button.show();
        CursorChanges cursor;
        button.installEventFilter(&cursor);

        QEnterEvent enter(QPointF(10, 10), QPointF(10, 10), button.mapToGlobal(QPointF(10, 10)));
        QApplication::sendEvent(&button, &enter);
        const int perSet = cursor.count; // Qt may announce one setCursor more than once
        sendMouse(button, QEvent::MouseMove, { 99, 29 });
        EXPECT_EQ(cursor.count, perSet);
        EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
        EXPECT_EQ(button.cursor().shape(), Qt::PointingHandCursor);
        EXPECT_EQ(pixelAt(render(button), 1, 1), hover);

        if (exit == Exit::Leave) {
            QEvent leave(QEvent::Leave);
            QApplication::sendEvent(&button, &leave);
        } else if (exit == Exit::Hidden) {
            button.hide();
        } else {
            button.setEnabled(false);
        }
        EXPECT_FALSE(button.isHovered());
        EXPECT_EQ(button.cursor().shape(), Qt::ArrowCursor);
        EXPECT_EQ(pixelAt(render(button), 1, 1), back);
        EXPECT_EQ(cursor.count, 2 * perSet);
    }
}

// A box opened from the button takes its click at once: nothing holds the pointer.
TEST(SupportingFlatButton, ABoxOpenedFromTheButtonTakesItsClick)
{
    QWidget window;
    window.resize(300, 200);
    auto *button = new FlatButton(&window);
    button->setGeometry(10, 10, 100, 30);
    button->setCaption("Zero");
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    int answer = -1;
    bool litBehindTheBox = true;
    QWidget *grabber = button;
    QObject::connect(button, &FlatButton::clicked, [&] {
        QMessageBox box(QMessageBox::Information, "Tare", "Cannot tare.", QMessageBox::Ok, &window);
        QTimer::singleShot(0, &box, [&] {
            grabber = QWidget::mouseGrabber();
            litBehindTheBox = button->isHovered();
            QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton);
        });
        QTimer::singleShot(3000, &box, [&box] { box.done(QMessageBox::Cancel); }); // never hang
        answer = box.exec();
    });
    QTest::mouseMove(button, QPoint(20, 15));
    EXPECT_TRUE(button->isHovered());
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(20, 15));
    EXPECT_EQ(answer, QMessageBox::Ok);
    EXPECT_EQ(grabber, nullptr);
    EXPECT_FALSE(litBehindTheBox);
}

TEST(SupportingFlatButton, DisablingWhileHoveredLeavesAndGreysCaption)
{
    constexpr OleColor back = 0x202020, fore = 0xFFFFFF, disabled = 0x00FFFF;
    FlatButton button;
    button.resize(120, 60);
    button.setFont(bigFont());
    button.setCaption("Zero");
    button.setBackColor(back);
    button.setForeColor(fore);
    button.setDisabledColor(disabled);
    button.show();
    sendMouse(button, QEvent::MouseMove, { 10, 10 });
    ASSERT_TRUE(button.isHovered());

    button.setEnabled(false);
    EXPECT_FALSE(button.isHovered());
    const QImage image = render(button);
    EXPECT_EQ(pixelAt(image, 1, 1), back);
    EXPECT_GT(countPixels(image, disabled), 20);
    EXPECT_EQ(countPixels(image, fore), 0);
}

TEST(SupportingFlatButton, ClickNeedsPressAndReleaseInside)
{
    const struct {
        bool press;
        QPoint release;
        int clicks;
    } cases[] = { { true, { 50, 15 }, 1 }, { true, { 150, 15 }, 0 }, { false, { 50, 15 }, 0 } };
    for (const auto &c : cases) {
        FlatButton button;
        button.resize(100, 30);
        int clicks = 0;
        QObject::connect(&button, &FlatButton::clicked, [&clicks] { ++clicks; });
        if (c.press) {
            sendMouse(button, QEvent::MouseButtonPress, { 50, 15 });
        }
        sendMouse(button, QEvent::MouseButtonRelease, c.release);
        EXPECT_EQ(clicks, c.clicks);
    }
}
