#pragma once

#include "values/StatusDisplay.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QPushButton;

namespace corvalog {

// The small status window: one message under a title, and one button. A message beginning
// with "!" is progress of a cancellable procedure, shown without the "!" with a Cancel button.
class StatusFrm final : public QDialog
{
    Q_OBJECT

public:
    // The designed caption of the button.
    static constexpr const char *kCloseCaption = "Close";

    explicit StatusFrm(QWidget *owner);

    void ShowMessage(const std::string &message, const std::string &title);

    QLabel *label() const { return m_label; }
    QPushButton *button() const { return m_button; }

signals:
    // The button (or the close box) was pressed: the window unloads.
    void closedByUser();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QLabel *m_label;
    QPushButton *m_button;
};

// The program's one status window, loaded when a message comes and unloaded by its button.
// StatusClosed is false from each load until the user closes the window, which is how a
// retrying procedure learns it was cancelled.
class StatusWindow final : public StatusDisplay
{
public:
    explicit StatusWindow(QWidget *owner)
        : m_owner(owner)
    {
    }
    ~StatusWindow() override;

    void ShowMessage(const std::string &message, const std::string &title) override;
    bool StatusClosed() const override { return m_closed; }

    // Unloads the window if it is loaded (the flag stays as it is).
    void unload();
    // The loaded window, or null.
    StatusFrm *form() const { return m_form; }

private:
    QWidget *m_owner;
    QPointer<StatusFrm> m_form;
    bool m_closed = false;
};

} // namespace corvalog
