#include "TrendExport.h"

#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QSaveFile>

namespace corvalog {

bool saveText(const QString &path, const std::string &text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(text.data(), static_cast<qint64>(text.size()));
    return file.commit();
}

void exportAsked(QWidget *parent, const QString &title, const QString &name, const QString &filter,
    const std::function<bool(const QString &path)> &write)
{
    const QString path = QFileDialog::getSaveFileName(parent, title, name, filter);
    if (path.isEmpty())
        return;
    if (!write(path))
        QMessageBox::warning(parent, title,
            QStringLiteral("Could not write %1.").arg(QDir::toNativeSeparators(path)));
}

void widenZoom(double &fromMs, double &toMs)
{
    if (toMs - fromMs >= kNarrowestZoomMs)
        return;
    const double middle = (fromMs + toMs) / 2.0;
    fromMs = middle - kNarrowestZoomMs / 2.0;
    toMs = middle + kNarrowestZoomMs / 2.0;
}

} // namespace corvalog
