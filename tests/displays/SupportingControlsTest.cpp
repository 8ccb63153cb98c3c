#include "displays/FlatButton.h"
#include "displays/TableContainer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

// What a widget shows at a point, as 0xBBGGRR.
OleColor pixelAt(const QImage &image, int x, int y)
{
    const QRgb rgb = image.pixel(x, y);
    return static_cast<OleColor>(qRed(rgb) | qGreen(rgb) << 8 | qBlue(rgb) << 16);
}

int countPixels(const QImage &image, OleColor colour)
{
    int count = 0;
    for (int i = 0; i < image.width() * image.height(); ++i)
        count += pixelAt(image, i % image.width(), i / image.width()) == colour ? 1 : 0;
    return count;
}

void sendMouse(QWidget &widget, QEvent::Type type, QPoint at)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
    QMouseEvent event(type, at, widget.mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

// Panels flow into rows as wide as the container; the design template (Index 0) is neither
// moved nor shown. Sizes are in pixels, so each converts exactly to twips.
TEST(SupportingTableContainer, FlowsPanelsIntoRowsOnResize)
{
    struct Panel {
        QSize size;
        int index; // -1: no Index property
        QPoint expected; // for the template, where it was put beforehand
    };
    std::vector<Panel> rowsOfThree; // 2010-twip panels in a 7005-twip container
    for (int i = 0; i < 7; ++i)
        rowsOfThree.push_back({ { 134, 90 }, i + 1, { (i % 3) * 134, (i / 3) * 90 } });
    // The container's width, its panels, and the extent they take in twips.
    const std::tuple<int, std::vector<Panel>, QSize> cases[] = {
        { 300, {}, { 2000, 920 } },
        { 467, rowsOfThree, { 3 * 134 * 15, 3 * 90 * 15 + 920 } },
        { 300,
            { { { 50, 20 }, 0, { 77, 33 } }, { { 100, 40 }, 1, { 0, 0 } },
                { { 100, 30 }, -1, { 100, 0 } } },
            { 3000, 40 * 15 + 920 } },
        // A panel wider than the container sits alone; as the first of its row it does not
        // widen the extent.
        { 200,
            { { { 100, 50 }, 1, { 0, 0 } }, { { 300, 60 }, 2, { 0, 50 } },
                { { 150, 40 }, 3, { 0, 110 } }, { { 50, 10 }, 4, { 150, 110 } } },
            { 3000, 150 * 15 + 920 } },
    };
    for (const auto &[width, panels, extent] : cases) {
        SCOPED_TRACE(panels.size());
        TableContainer container;
        std::vector<QWidget *> children;
        for (const Panel &p : panels) {
            children.push_back(new QWidget(&container));
            children.back()->resize(p.size);
            if (p.index >= 0)
                children.back()->setProperty("Index", p.index);
            if (p.index == 0) {
                children.back()->move(p.expected);
                children.back()->hide();
            }
        }
        container.resize(width, 100);
        container.show(); // delivers the resize, which lays out
        EXPECT_EQ(container.scaleExtentTwips(), extent);
        EXPECT_EQ(container.minimumHeight(), (extent.height() - 920) / 15);
        for (std::size_t i = 0; i < children.size(); ++i) {
            EXPECT_EQ(children[i]->pos(), panels[i].expected) << i;
            EXPECT_EQ(children[i]->isVisible(), panels[i].index != 0) << i;
        }
    }
}

// The pointer lights the button, whether it entered or the button appeared under it, and
// leaving restores it, whichever way it goes: moved off, the button hidden, or disabled (the
// caption then greyed). The pointer is never captured.
TEST(SupportingFlatButton, LeavingRestoresBackColorAndArrow)
{
    constexpr OleColor back = 0x202020, hover = 0x00C000, fore = 0xFFFFFF, grey = 0x00FFFF;
    enum class Exit { Leave, Hidden, Disabled };
    for (const Exit exit : { Exit::Leave, Exit::Hidden, Exit::Disabled }) {
        SCOPED_TRACE(static_cast<int>(exit));
        FlatButton button;
        button.resize(120, 60);
        QFont font;
        font.setPixelSize(40);
        button.setFont(font);
        button.setCaption("Zero");
        button.setBackColor(back);
        button.setHoverColor(hover);
        button.setForeColor(fore);
        button.setDisabledColor(grey);
        button.show();
        if (exit == Exit::Disabled) {
            sendMouse(button, QEvent::MouseMove, { 10, 10 }); // no Enter came first
        } else {
            QEnterEvent enter(
                QPointF(10, 10), QPointF(10, 10), button.mapToGlobal(QPointF(10, 10)));
            QApplication::sendEvent(&button, &enter);
        }
        sendMouse(button, QEvent::MouseMove, { 119, 59 });
        EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
        EXPECT_EQ(button.cursor().shape(), Qt::PointingHandCursor);
        EXPECT_EQ(pixelAt(button.grab().toImage(), 1, 1), hover);

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
        const QImage image = button.grab().toImage();
        EXPECT_EQ(pixelAt(image, 1, 1), back);
        EXPECT_EQ(countPixels(image, grey) > 20, exit == Exit::Disabled);
        EXPECT_EQ(countPixels(image, fore) > 0, exit != Exit::Disabled);
    }
}

// A box opened from the button takes its click at once: nothing holds the pointer, and the
// button is not left lit behind the box.
TEST(SupportingFlatButton, ABoxOpenedFromTheButtonTakesItsClick)
{
    QWidget window;
    window.resize(300, 200);
    auto *button = new FlatButton(&window);
    button->setGeometry(10, 10, 100, 30);
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

TEST(SupportingFlatButton, ClickNeedsPressAndReleaseInside)
{
    // Whether it is pressed first, where it is let go, and the clicks that makes.
    for (const auto &[press, release, clicks] : { std::tuple(true, QPoint(50, 15), 1),
             { true, QPoint(150, 15), 0 }, { false, QPoint(50, 15), 0 } }) {
        FlatButton button;
        button.resize(100, 30);
        int count = 0;
        QObject::connect(&button, &FlatButton::clicked, [&count] { ++count; });
        if (press)
            sendMouse(button, QEvent::MouseButtonPress, { 50, 15 });
        sendMouse(button, QEvent::MouseButtonRelease, release);
        EXPECT_EQ(count, clicks);
    }
}

} // namespace
