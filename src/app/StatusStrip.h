#pragma once

#include <QWidget>

class QLabel;

namespace corvalog {

// The strip below the panels: the logging line (its tooltip has it whole), the program's
// version and the logo, which opens the web site when clicked.
class StatusStrip : public QWidget
{
    Q_OBJECT

public:
    explicit StatusStrip(QWidget *parent = nullptr);

    QLabel *logLabel() const { return m_logLabel; }
    QLabel *version() const { return m_version; }
    QLabel *logo() const { return m_logo; }

    // The logo beside the program: a .jpg replaces a .gif; unreadable pictures are ignored.
    void loadLogo(const QString &programFolder);

signals:
    void logoClicked();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLabel *m_logLabel;
    QLabel *m_version;
    QLabel *m_logo;
};

} // namespace corvalog
