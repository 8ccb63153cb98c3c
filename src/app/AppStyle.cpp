#include "AppStyle.h"

#include <QApplication>
#include <QIcon>
#include <QPalette>
#include <QStyle>

namespace corvalog {

QIcon AppIcon()
{
    QIcon icon(QStringLiteral(":/icons/corvalog.svg"));
    icon.addFile(QStringLiteral(":/icons/corvalog.png"));
    return icon;
}

void applyAppStyle(QApplication &app)
{
    QApplication::setStyle(QStringLiteral("Fusion"));
    QPalette palette = QApplication::style()->standardPalette();
    // The LCD ground: light enough for dark segments, soft enough to look lit from behind.
    palette.setColor(QPalette::Light, QColor(0xD6, 0xDB, 0xD2));
    QApplication::setPalette(palette);
    app.setWindowIcon(AppIcon());
}

} // namespace corvalog
