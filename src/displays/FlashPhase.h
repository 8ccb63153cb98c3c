#pragma once

#include <QObject>

namespace corvalog {

// The shared blink phase that every flashing panel follows, so all of them blink in step: on
// (the red half of the cycle) or off. Each change is announced to every observer.
class FlashPhase : public QObject
{
    Q_OBJECT

public:
    explicit FlashPhase(QObject *parent = nullptr)
        : QObject(parent)
    {
    }

    bool isOn() const { return m_on; }
    void setOn(bool on)
    {
        if (on == m_on)
            return;
        m_on = on;
        emit changed();
    }
    // The flash timer's tick.
    void toggle() { setOn(!m_on); }

signals:
    void changed();

private:
    bool m_on = false;
};

} // namespace corvalog
