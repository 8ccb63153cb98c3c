#pragma once

#include <QDialog>
#include <optional>
#include <string>

class QLabel;

namespace corvalog {

// "App: 0.1.0 | Drv COM: 1.0 | Drv DLL: 1.0": the program's version and the driver's two, each
// driver version with one decimal ("none" while there is no driver object).
std::string versionLine(int major, int minor, int revision, std::optional<float> comVersion,
    std::optional<float> dllVersion);

// The about box: program name, description and versions. Any click or key closes it.
class FormAbout final : public QDialog
{
    Q_OBJECT

public:
    static constexpr const char *kDescription
        = "Live display and logging of wireless sensor modules";

    explicit FormAbout(const QString &versionText, QWidget *parent = nullptr);

    QLabel *versionLabel() const { return m_version; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QLabel *m_version;
};

} // namespace corvalog
