#pragma once

#include "OleColor.h"
#include "Twips.h"

#include <QWidget>

namespace corvalog {

// A borderless button: its ground turns HoverColor while the pointer is over it, with a hand
// cursor; the caption is centred. The pointer is never captured, so a window it opens takes
// clicks at once.
class FlatButton : public QWidget
{
    Q_OBJECT

public:
    explicit FlatButton(QWidget *parent = nullptr);

    OleColor BackColor() const { return m_back; }
    void setBackColor(OleColor colour);
    void setHoverColor(OleColor colour);
    OleColor ForeColor() const { return m_fore; }
    void setForeColor(OleColor colour);
    void setDisabledColor(OleColor colour);
    QString Caption() const { return m_caption; }
    void setCaption(const QString &caption);

    bool isHovered() const { return m_inside; }
    QSize sizeHint() const override;

signals:
    void clicked();

protected:
    void mouseMoveEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    // Paints the ground in the colour and redraws the caption.
    void SetColor(OleColor colour);
    // Clears the surface to the current ground and prints the caption centred (in
    // DisabledColor when disabled).
    void DrawCaption();

    void enter();
    void leave();

    OleColor m_back = 0x808080;
    OleColor m_hover = 0xA0A0A0;
    OleColor m_fore = kBlack;
    OleColor m_disabled = 0x808080;
    OleColor m_ground = 0x808080;
    QString m_caption;
    bool m_inside = false;
    bool m_pressed = false;
};

} // namespace corvalog
