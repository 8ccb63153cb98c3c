#pragma once

#include <QObject>
#include <QString>

namespace corvalog {

// The shared blink phase ("0" or "1") that every flashing panel follows, so all of them blink
// in step. Each change is announced to every observer.
class FlashPhase : public QObject
{
    Q_OBJECT

public:
    explicit FlashPhase(QObject *parent = nullptr)
        : QObject(parent)
    {
    }

    const QString &caption() const { return m_caption; }
    void setCaption(const QString &caption)
    {
        if (caption == m_caption)
            return;
        m_caption = caption;
        emit changed();
    }
    // The flash timer's tick: a non-zero phase becomes "0", any other "1".
    void toggle();
    // True in the red half of the cycle (the caption's numeric value is not zero).
    bool isOn() const;

signals:
    void changed();

private:
    QString m_caption = QStringLiteral("0");
};

} // namespace corvalog
