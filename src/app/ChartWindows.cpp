#include "ChartWindows.h"

#include "HelpTopics.h"
#include "logging/LogReview.h"
#include "trends/ReviewWindow.h"
#include "trends/TrendsWindow.h"

#include <QFileDialog>
#include <QMessageBox>

namespace corvalog {

namespace {

void bringUp(QWidget &window)
{
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

ReviewWindow *openReviewWindow(const QString &path, QWidget *parent, QString &error)
{
    std::string why;
    std::optional<ReviewData> data = readForReview(path.toStdString(), why);
    if (!data) {
        error = QString::fromStdString(why);
        return nullptr;
    }
    auto *window = new ReviewWindow(std::move(*data), parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setProperty(kHelpTopicProperty, QStringLiteral("review"));
    bringUp(*window);
    return window;
}

ChartWindows::ChartWindows(QWidget &owner, const TrendHistory &history,
    const WorkspaceClass &workspace, const Clock &clock, std::function<std::string()> logFolder)
    : m_owner(owner)
    , m_history(history)
    , m_workspace(workspace)
    , m_clock(clock)
    , m_logFolder(std::move(logFolder))
{
}

ChartWindows::~ChartWindows() = default;

void ChartWindows::showTrends()
{
    if (!m_trends) {
        m_trends = std::make_unique<TrendsWindow>(m_history, m_workspace, m_clock);
        m_trends->setProperty(kHelpTopicProperty, QStringLiteral("trends"));
    }
    bringUp(*m_trends);
}

void ChartWindows::askAndReview()
{
    const QString path = QFileDialog::getOpenFileName(&m_owner, QStringLiteral("Review Log"),
        QString::fromStdString(m_logFolder()), QStringLiteral("CSV logs (*.csv);;All files (*)"));
    if (!path.isEmpty())
        review(path);
}

ReviewWindow *ChartWindows::review(const QString &path)
{
    QString error;
    ReviewWindow *window = openReviewWindow(path, &m_owner, error);
    if (!window)
        QMessageBox::warning(&m_owner, QStringLiteral("Review Log"), error);
    return window;
}

} // namespace corvalog
