#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QTextBrowser;
class QWidget;

namespace corvalog {

// The user manual beside the program (or where it is installed); "" when there is none.
QString manualPath(const QString &programFolder);

// The manual, in a window of its own, opened by F1 anywhere in the program at the topic of the
// focused control. Installed as an application-wide event filter so that every window and
// dialog has the same F1.
class HelpWindow final : public QObject
{
    Q_OBJECT

public:
    HelpWindow(QString manual, QWidget *mainWindow);
    ~HelpWindow() override;

    void setManual(const QString &manual) { m_manual = manual; }
    // Opens (or raises) the manual at a topic.
    void showTopic(const QString &topic);
    // The browser of the open manual, or null before the first F1.
    QTextBrowser *browser() const { return m_browser; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QString m_manual;
    QPointer<QWidget> m_mainWindow;
    QPointer<QWidget> m_window;
    QTextBrowser *m_browser = nullptr;
};

} // namespace corvalog
