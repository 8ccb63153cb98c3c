#pragma once

#include "runtime/Clock.h"
#include "values/TrendHistory.h"
#include "workspace/WorkspaceClass.h"

#include <QPointer>
#include <QString>
#include <functional>
#include <memory>
#include <string>

class QWidget;

namespace corvalog {

class ReviewWindow;
class TrendsWindow;

// Opens a review window on a log or a packet recording (closing it frees what it read); none,
// with the reason in `error`, for a file that cannot be read as either.
ReviewWindow *openReviewWindow(const QString &path, QWidget *parent, QString &error);

// The windows of the main window that draw values over time: the live trends (one, made when
// first asked for) and a review window for each log opened.
class ChartWindows
{
public:
    // `logFolder` gives the folder the review's file dialog starts in.
    ChartWindows(QWidget &owner, const TrendHistory &history, const WorkspaceClass &workspace,
        const Clock &clock, std::function<std::string()> logFolder);
    ~ChartWindows();

    void showTrends();
    TrendsWindow *trends() const { return m_trends.get(); }
    // Asks for a file and opens it for review.
    void askAndReview();
    // Opens a file for review; says why in a message box when it cannot.
    ReviewWindow *review(const QString &path);

private:
    QWidget &m_owner;
    const TrendHistory &m_history;
    const WorkspaceClass &m_workspace;
    const Clock &m_clock;
    std::function<std::string()> m_logFolder;
    std::unique_ptr<TrendsWindow> m_trends;
};

} // namespace corvalog
