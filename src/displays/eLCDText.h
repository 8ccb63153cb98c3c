#pragma once

#include "LcdColours.h"
#include "Twips.h"

#include <QLabel>
#include <QWidget>

namespace corvalog {

// A line of text in the look of a segment display: the lit text (LabelFore) lies exactly over
// its unlit ghost (LabelBack). State shows or hides the lit text; Inverse turns both into
// opaque blocks with the text in the ground colour.
class eLCDText : public QWidget, public LcdColours
{
    Q_OBJECT

public:
    explicit eLCDText(QWidget *parent = nullptr);

    QString Caption() const;
    void setCaption(const QString &caption);
    // The font of both labels (QWidget::setFont on this control does the same).
    void setCaptionFont(const QFont &font);

    bool State() const { return m_state; }
    void setState(bool lit);
    void setInverse(bool inverse);

protected:
    void coloursChanged() override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void applyColours();
    void layOut();

    QLabel *m_labelBack;
    QLabel *m_labelFore;
    bool m_state = true;
    bool m_inverse = false;
};

} // namespace corvalog
