#pragma once

#include <QString>
#include <functional>
#include <string>

class QWidget;

namespace corvalog {

// Writes text to a file whole or not at all.
bool saveText(const QString &path, const std::string &text);

// Asks where to export (suggesting `name`), writes there with `write`, and says so when that
// failed.
void exportAsked(QWidget *parent, const QString &title, const QString &name, const QString &filter,
    const std::function<bool(const QString &path)> &write);

// A zoom narrower than a few samples shows nothing more: it is widened about its middle.
inline constexpr double kNarrowestZoomMs = 50.0;
void widenZoom(double &fromMs, double &toMs);

} // namespace corvalog
