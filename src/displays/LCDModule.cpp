#include "LCDModule.h"

#include "FlatButton.h"
#include "eLCD.h"
#include "eLCDContainer.h"
#include "eLCDText.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace corvalog {

namespace {

// The designer's layout, in pixels: the panel is 220 x 124, its parts keep a 6-pixel gutter
// to the right and below, so panels laid side by side stand apart.
constexpr QRect kTitleFrame(0, 0, 214, 24);
constexpr QRect kTitleText(8, 0, 198, 24);
constexpr QRect kNumberFrame(0, 27, 214, 63);
constexpr QRect kNetMarker(8, 3, 110, 13);
constexpr QRect kNumber(6, 15, 202, 45);
constexpr QRect kLqiBar(2, 96, 60, 7);
constexpr QRect kLowBattery(2, 106, 60, 12);
constexpr QRect kButton(146, 94, 68, 24);

constexpr OleColor kTitleColour = 0x4A3F36; // slate, 0xBBGGRR
constexpr OleColor kButtonColour = 0xD8D2CC;
constexpr OleColor kButtonHover = 0xF0EBE6;

// The low-battery mark: a battery outline with a short red charge and "LOW". Its width is the
// full scale of the link-quality bar.
QPixmap lowBatteryImage(QSize size, qreal ratio)
{
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor red(200, 30, 30);
    const QRectF body(0.5, 1.5, size.width() - 4.0, size.height() - 3.0);
    p.setPen(QPen(red, 1.2));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(body, 2, 2);
    p.fillRect(QRectF(body.right() + 0.5, size.height() / 2.0 - 2, 2.5, 4), red);
    p.fillRect(QRectF(body.left() + 2, body.top() + 2, 6, body.height() - 4), red);
    QFont font = p.font();
    font.setPixelSize(std::max(7, size.height() - 4));
    font.setBold(true);
    p.setFont(font);
    p.drawText(body.adjusted(8, 0, 0, 0), Qt::AlignCenter, QStringLiteral("LOW"));
    return pixmap;
}

// The link-quality bar: a green gauge stretched to the width the level gives.
QPixmap lqiImage(QSize size)
{
    QPixmap pixmap(size);
    QPainter p(&pixmap);
    QLinearGradient g(0, 0, 0, size.height());
    g.setColorAt(0, QColor(110, 200, 90));
    g.setColorAt(1, QColor(40, 140, 40));
    p.fillRect(pixmap.rect(), g);
    return pixmap;
}

} // namespace

LCDModule::LCDModule(QWidget *parent)
    : QWidget(parent)
    , m_net(nullptr)
{
    setFixedSize(twipsToPixels(kWidthTwips), twipsToPixels(kHeightTwips));

    m_frame = new eLCDContainer(this);
    m_frame->setGeometry(kNumberFrame);
    m_frame->setCornerDiameter(12);
    m_net = new eLCDText(m_frame);
    m_net->setGeometry(kNetMarker);
    m_net->setCaption(QStringLiteral("Zeroed (Net)"));
    QFont small = font();
    small.setPixelSize(10);
    small.setBold(true);
    m_net->setCaptionFont(small);
    m_lcd = new eLCD(m_frame);
    m_lcd->setGeometry(kNumber);

    m_titleFrame = new eLCDContainer(this);
    m_titleFrame->setGeometry(kTitleFrame);
    m_titleFrame->setCornerDiameter(9);
    m_titleFrame->setBackColor(kTitleColour);
    m_title = new QLabel(m_titleFrame);
    m_title->setGeometry(kTitleText);
    QFont titleFont = font();
    titleFont.setPixelSize(13);
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_title->setStyleSheet(QStringLiteral("color: white; background: transparent;"));

    m_button = new FlatButton(this);
    m_button->setGeometry(kButton);
    m_button->setBackColor(kButtonColour);
    m_button->setHoverColor(kButtonHover);
    m_button->setToolTip(QStringLiteral("Zero the display"));

    m_lqi = new QLabel(this);
    m_lqi->setGeometry(kLqiBar.x(), kLqiBar.y(), 0, kLqiBar.height());
    m_lqi->setPixmap(lqiImage(kLqiBar.size()));
    m_lqi->setScaledContents(true);
    m_lqi->setToolTip(QStringLiteral("Link Quality Indicator"));

    m_battLow = new QLabel(this);
    m_battLow->setGeometry(kLowBattery);
    m_battLow->setPixmap(lowBatteryImage(kLowBattery.size(), 2.0));
    m_battLow->setToolTip(QStringLiteral("Low Battery"));
    m_battLow->hide();

    connect(m_button, &FlatButton::clicked, this, &LCDModule::Zero);
    connect(m_lcd, &eLCD::Click, this, &LCDModule::Click);
    // The designer's starting state; the refresh writes the real one on its first tick.
    setBackColor(0);
    setForeColor(kWhite);
    m_title->setText(QStringLiteral("Label1"));
    m_lcd->setCaption(QStringLiteral("12345678"));
    m_lcd->setDigits(8);
    m_button->setCaption(QStringLiteral("Zero"));
}

void LCDModule::InitFlashLabel(FlashPhase *phase)
{
    if (m_phase)
        disconnect(m_phase, nullptr, this, nullptr);
    m_phase = phase;
    if (phase)
        connect(phase, &FlashPhase::changed, this, &LCDModule::phaseChanged);
}

void LCDModule::setNumberColours(OleColor colour, bool withTextOffColour)
{
    m_lcd->setBackColor(colour);
    m_lcd->setOffColor(colour);
    m_frame->setBackColor(colour);
    m_net->setBackColor(colour);
    if (withTextOffColour)
        m_net->setOffColor(colour);
}

void LCDModule::setBackColor(OleColor colour)
{
    m_backColour = colour;
    if (!m_flashMode && m_lcd->BackColor() != m_backColour)
        setNumberColours(m_backColour, true);
}

void LCDModule::phaseChanged()
{
    // The marker's unlit colour stays: only the ground blinks.
    if (m_flashMode)
        setNumberColours(m_phase && m_phase->isOn() ? kPureRed : m_backColour, false);
}

OleColor LCDModule::ForeColor() const
{
    return m_lcd->OnColor();
}

void LCDModule::setForeColor(OleColor colour)
{
    m_lcd->setOnColor(colour);
    m_net->setOnColor(colour);
}

QString LCDModule::Title() const
{
    return m_title->text();
}

void LCDModule::setTitle(const QString &title)
{
    m_title->setText(title);
}

QString LCDModule::Value() const
{
    return m_lcd->Caption();
}

void LCDModule::setValue(const QString &value)
{
    m_lcd->setCaption(value);
}

int LCDModule::Digits() const
{
    return m_lcd->Digits();
}

void LCDModule::setDigits(int digits)
{
    m_lcd->setDigits(digits);
}

void LCDModule::setFlashMode(bool flash)
{
    m_flashMode = flash; // the next phase or BackColor write shows it
}

QString LCDModule::BtnCaption() const
{
    return m_button->Caption();
}

void LCDModule::setBtnCaption(const QString &caption)
{
    m_button->setCaption(caption);
}

bool LCDModule::NetInd() const
{
    return m_net->isVisibleTo(this);
}

void LCDModule::setNetInd(bool tared)
{
    m_net->setVisible(tared);
    m_net->setState(true);
}

void LCDModule::setLQI(float percent)
{
    const double level = std::floor((static_cast<double>(percent) - 1.0) / 20.0) + 1.0;
    if (!std::isfinite(level))
        return; // a value no bar can show leaves the bar as it is
    m_level = static_cast<float>(level);
    const double unit = m_battLow->width() / 5.0;
    const double width = unit * level;
    if (width < 0 || width > 1e6)
        return;
    if (static_cast<int>(width) != m_lqi->width())
        m_lqi->resize(static_cast<int>(width), m_lqi->height());
}

void LCDModule::setLoBatt(bool low)
{
    m_lowBattery = low;
    if (low && m_battLow->isHidden())
        m_battLow->show();
    else if (!low && !m_battLow->isHidden())
        m_battLow->hide();
}

void LCDModule::show(const PanelState &state)
{
    setFlashMode(state.flash);
    setValue(QString::fromStdString(state.text));
    setBackColor(state.ground);
    setLQI(state.linkQuality);
    setLoBatt(state.lowBattery);
    setNetInd(state.tared);
}

void LCDModule::paintEvent(QPaintEvent *)
{
    // The bar's empty track, so a short bar reads as a level out of five: a shade darker than
    // the ground it lies on, with an edge, whatever that ground is.
    QPainter p(this);
    const QColor ground = palette().color(backgroundRole()).toHsl();
    const int towards = ground.lightness() > 127 ? -1 : 1;
    const auto shade = [&](int amount) {
        return QColor::fromHsl(ground.hslHue(), ground.hslSaturation(),
            std::clamp(ground.lightness() + towards * amount, 0, 255));
    };
    p.setPen(shade(80));
    p.setBrush(shade(35));
    p.drawRect(kLqiBar.adjusted(0, 0, -1, -1));
}

} // namespace corvalog
