#include "HelpWindow.h"

#include "HelpTopics.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QShortcut>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace corvalog {

QString helpTopicOf(const QWidget *widget)
{
    for (const QWidget *w = widget; w; w = w->parentWidget()) {
        const QString topic = w->property(kHelpTopicProperty).toString();
        if (!topic.isEmpty())
            return topic;
    }
    return QString::fromLatin1(kHelpContents);
}

void sendHelpKey()
{
    QWidget *target = QApplication::focusWidget();
    if (!target)
        target = QApplication::activeWindow();
    if (!target)
        return;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
    QApplication::sendEvent(target, &press);
}

QString manualPath(const QString &programFolder)
{
    const QDir dir(programFolder);
    for (const QString &candidate : { dir.filePath(QStringLiteral("manual.html")),
             dir.filePath(QStringLiteral("../share/corvalog/manual.html")) }) {
        if (QFileInfo::exists(candidate))
            return QFileInfo(candidate).canonicalFilePath();
    }
    return {};
}

HelpWindow::HelpWindow(QString manual, QWidget *mainWindow)
    : m_manual(std::move(manual))
    , m_mainWindow(mainWindow)
{
    qApp->installEventFilter(this);
}

HelpWindow::~HelpWindow()
{
    delete m_window.data();
}

void HelpWindow::showTopic(const QString &topic)
{
    // A window owned by the open modal dialog, if any, so that it is not blocked by it.
    QWidget *owner = QApplication::activeModalWidget();
    if (!owner)
        owner = m_mainWindow;
    if (!m_window) {
        m_window = new QWidget(owner, Qt::Window);
        m_window->setAttribute(Qt::WA_DeleteOnClose);
        m_window->setObjectName(QStringLiteral("HelpWindow"));
        m_window->setWindowTitle(QApplication::applicationName() + QStringLiteral(" Help"));
        m_browser = new QTextBrowser(m_window);
        m_browser->setObjectName(QStringLiteral("HelpBrowser"));
        m_browser->setOpenExternalLinks(true);
        auto *layout = new QVBoxLayout(m_window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(m_browser);
        m_window->resize(820, 680);
        // Esc closes it, as it closes every dialog of the program.
        auto *close = new QShortcut(QKeySequence(Qt::Key_Escape), m_window);
        connect(close, &QShortcut::activated, m_window, &QWidget::close);
        connect(m_window, &QObject::destroyed, this, [this] { m_browser = nullptr; });
    } else if (m_window->parentWidget() != owner) {
        const QRect where = m_window->geometry();
        m_window->setParent(owner, Qt::Window);
        m_window->setGeometry(where);
    }
    if (m_manual.isEmpty()) {
        m_browser->setHtml(QStringLiteral("<h1>Help</h1><p>The user manual (manual.html) is not "
                                          "installed beside the program.</p>"));
    } else {
        QUrl url = QUrl::fromLocalFile(m_manual);
        url.setFragment(topic);
        if (m_browser->source().path() == url.path())
            m_browser->scrollToAnchor(topic);
        else
            m_browser->setSource(url);
    }
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

bool HelpWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_F1 && key->modifiers() == Qt::NoModifier) {
            QWidget *focus = QApplication::focusWidget();
            if (!focus)
                focus = qobject_cast<QWidget *>(watched);
            showTopic(helpTopicOf(focus));
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace corvalog
