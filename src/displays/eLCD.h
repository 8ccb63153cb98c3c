#pragma once

#include "LcdColours.h"
#include "SegmentCode.h"
#include "Twips.h"

#include <QWidget>

namespace corvalog {

// A row of seven-segment digits. Every cell paints all seven segments and its point, lit ones in
// OnColor and unlit ones in OffColor, on a BackColor ground, so changing the text needs no
// erasing. The segment shapes are fixed strokes in twips, scaled to fit the element; the stroke
// width follows the element's height.
class eLCD : public QWidget, public LcdColours
{
    Q_OBJECT

public:
    // Digit cells follow each other every 540 twips: a cell's point (480..600) ends just short
    // of the next cell's lower left segment (at 90). Strokes stay inside 0..480 twips of height.
    static constexpr int kCellTwips = 540;

    explicit eLCD(QWidget *parent = nullptr);

    QString Caption() const { return m_caption; }
    void setCaption(const QString &caption);
    int Digits() const { return m_digits; }
    void setDigits(int digits);

    // The stroke width, in twips of the segment templates, for a reference size: a 32nd of
    // it, whole (ties to even), at least 1.
    static int strokeWidth(double referenceTwips);
    // The reference size every element draws with. The templates leave gaps of 30 to 60 twips
    // between segments, made for strokes of about 50 twips (a tenth of a digit's height); the
    // strokes scale with the cells, so digits keep that weight at every size.
    static constexpr double kReferenceTwips = 1600;

    QSize sizeHint() const override;

signals:
    void Click();

protected:
    void coloursChanged() override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QString m_caption = QStringLiteral("12345678");
    int m_digits = 8;
    bool m_pressed = false;
};

} // namespace corvalog
