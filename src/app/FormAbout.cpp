#include "FormAbout.h"

#include "AppStyle.h"
#include "runtime/Format.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace corvalog {

std::string versionLine(int major, int minor, int revision, std::optional<float> comVersion,
    std::optional<float> dllVersion)
{
    const auto driver = [](std::optional<float> v) {
        return v ? Format(Variant::single(*v), "0.0") : std::string("none");
    };
    return "App: " + std::to_string(major) + "." + std::to_string(minor) + "."
        + std::to_string(revision) + " | Drv COM: " + driver(comVersion)
        + " | Drv DLL: " + driver(dllVersion);
}

FormAbout::FormAbout(const QString &versionText, QWidget *parent)
    : QDialog(parent)
    , m_version(new QLabel(versionText))
{
    setObjectName(QStringLiteral("FormAbout"));
    setWindowTitle(QStringLiteral("About ") + QApplication::applicationName());
    setProperty("helpTopic", QStringLiteral("about"));

    auto *image = new QLabel;
    image->setObjectName(QStringLiteral("Image1"));
    image->setPixmap(AppIcon().pixmap(96, 96));
    auto *title = new QLabel(QApplication::applicationName());
    title->setObjectName(QStringLiteral("lblTitle"));
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    title->setFont(big);
    auto *description = new QLabel(QString::fromLatin1(kDescription));
    description->setObjectName(QStringLiteral("lblDescription"));
    m_version->setObjectName(QStringLiteral("lblVersion"));

    auto *texts = new QVBoxLayout;
    texts->addWidget(title);
    texts->addWidget(description);
    texts->addSpacing(12);
    texts->addWidget(m_version);
    texts->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(20, 20, 28, 20);
    row->setSpacing(20);
    row->addWidget(image, 0, Qt::AlignTop);
    row->addLayout(texts);

    // A click on any element closes the box, as one on the box itself does.
    for (QLabel *label : { image, title, description, m_version })
        label->installEventFilter(this);
    setFixedSize(sizeHint());
}

bool FormAbout::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        accept();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void FormAbout::mousePressEvent(QMouseEvent *)
{
    accept();
}

void FormAbout::keyPressEvent(QKeyEvent *)
{
    accept();
}

} // namespace corvalog
