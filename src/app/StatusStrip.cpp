#include "StatusStrip.h"

#include "HelpTopics.h"
#include "displays/TableContainer.h"
#include "displays/Twips.h"
#include "workspace/SystemFolders.h"

#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>

namespace corvalog {

namespace {

// The grid's bottom margin less the height the window gives up when it is fitted around the
// grid.
constexpr int kStripTwips = TableContainer::kBottomMarginTwips - 300;

} // namespace

StatusStrip::StatusStrip(QWidget *parent)
    : QWidget(parent)
    , m_logLabel(new QLabel(this))
    , m_version(new QLabel(this))
    , m_logo(new QLabel(this))
{
    setObjectName(QStringLiteral("StatusStrip"));
    setFixedHeight(twipsToPixels(kStripTwips));
    m_logLabel->setObjectName(QStringLiteral("LogLabel"));
    m_logLabel->setProperty(kHelpTopicProperty, QStringLiteral("logging"));
    // A long log path must not make the window wider; the tooltip has it whole.
    m_logLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_version->setObjectName(QStringLiteral("Vers"));
    m_version->setEnabled(false);
    m_logo->setObjectName(QStringLiteral("ImageLogo"));
    m_logo->setCursor(Qt::PointingHandCursor);
    m_logo->installEventFilter(this);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 0, 6, 2);
    row->addWidget(m_logLabel, 1);
    row->addWidget(m_version);
    row->addWidget(m_logo);
}

void StatusStrip::loadLogo(const QString &programFolder)
{
    const QDir programDir(programFolder);
    for (const char *ext : { ".gif", ".jpg" }) {
        const QString file
            = programDir.filePath(QString::fromLatin1(kProgramName) + QLatin1String(ext));
        QPixmap picture;
        if (QFileInfo::exists(file) && picture.load(file))
            m_logo->setPixmap(picture.scaledToHeight(
                qMin(picture.height(), height() - 4), Qt::SmoothTransformation));
    }
}

bool StatusStrip::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_logo && event->type() == QEvent::MouseButtonRelease) {
        emit logoClicked();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace corvalog
