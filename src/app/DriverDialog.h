#pragma once

#include <QDialog>
#include <string>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace corvalog {

class UserPrompts;

// "Base Station Driver": the packet source the program opens, as a kind and its source text.
// Choosing a kind writes its template into the text; typing a text chooses its kind. OK is
// available only while the text names a source.
class DriverDialog : public QDialog
{
public:
    // `source` is the setting as it stands; a non-empty `sourceOverride` is the environment's
    // source, which wins over the setting while it is set.
    DriverDialog(const QString &source, const QString &sourceOverride, QWidget *parent = nullptr);

    // The source text as it would be written.
    QString source() const;

private:
    void kindChosen(int index);
    void sourceEdited(const QString &text);

    QComboBox *m_kind = nullptr;
    QLineEdit *m_source = nullptr;
    QLabel *m_error = nullptr;
    QPushButton *m_ok = nullptr;
    bool m_following = false; // the kind is being set to match the text
};

// Shows the dialog over the settings file's source and writes the text chosen with OK (a
// write that fails is reported). True when a source was written: the driver has to be made
// again for it to take effect.
bool editDriverSource(const std::string &settingsFile, const std::string &sourceOverride,
    UserPrompts &prompts, QWidget *parent);

} // namespace corvalog
