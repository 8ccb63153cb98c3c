#include "QtPrompts.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QUrl>

namespace corvalog {

namespace {

QString q(const std::string &text)
{
    return QString::fromStdString(text);
}

// Message texts break lines with CR LF; a label wants one break, not two.
QString messageText(const std::string &text)
{
    QString s = q(text);
    s.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return s;
}

QMessageBox::Icon boxIcon(PromptIcon icon)
{
    switch (icon) {
    case PromptIcon::Critical:
        return QMessageBox::Critical;
    case PromptIcon::Question:
        return QMessageBox::Question;
    case PromptIcon::Exclamation:
        return QMessageBox::Warning;
    case PromptIcon::Information:
        return QMessageBox::Information;
    case PromptIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons boxButtons(PromptButtons buttons)
{
    switch (buttons) {
    case PromptButtons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case PromptButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case PromptButtons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case PromptButtons::Ok:
        break;
    }
    return QMessageBox::Ok;
}

} // namespace

PromptAnswer QtPrompts::message(
    const std::string &title, const std::string &text, PromptIcon icon, PromptButtons buttons)
{
    QMessageBox box(boxIcon(icon), q(title), messageText(text), boxButtons(buttons), m_owner);
    switch (box.exec()) {
    case QMessageBox::Yes:
        return PromptAnswer::Yes;
    case QMessageBox::No:
        return PromptAnswer::No;
    case QMessageBox::Cancel:
        return PromptAnswer::Cancel;
    case QMessageBox::Ok:
        return PromptAnswer::Ok;
    default:
        // Escape on a box without Cancel: the answer that changes nothing.
        return safeAnswer(buttons);
    }
}

std::optional<std::string> QtPrompts::input(
    const std::string &title, const std::string &prompt, const std::string &initialText)
{
    bool ok = false;
    const QString text = QInputDialog::getText(
        m_owner, q(title), messageText(prompt), QLineEdit::Normal, q(initialText), &ok);
    if (!ok)
        return std::nullopt;
    return text.toStdString();
}

QString dialogFilter(const FileDialogRequest &request)
{
    QStringList parts;
    for (const auto &[description, pattern] : request.filters) {
        QString p = q(pattern);
        p.replace(QStringLiteral("*.*"), QStringLiteral("*"));
        QString d = q(description);
        d.replace(QStringLiteral("(*.*)"), QStringLiteral("(*)"));
        // Qt reads the patterns from the parentheses; a description without them gets them.
        parts << (d.contains(QLatin1Char('(')) ? d
                                               : d + QStringLiteral(" (") + p + QLatin1Char(')'));
    }
    return parts.join(QStringLiteral(";;"));
}

std::string QtPrompts::chooseFile(const FileDialogRequest &request)
{
    QFileDialog dialog(m_owner, q(request.title), q(request.initialFolder), dialogFilter(request));
    dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(request.save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(q(request.defaultExtension));
    if (!request.confirmOverwrite)
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (!request.initialFile.empty())
        dialog.selectFile(q(request.initialFile));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return QDir::toNativeSeparators(dialog.selectedFiles().constFirst()).toStdString();
}

bool QtPrompts::openWithSystem(const std::string &path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(q(path)));
}

bool QtPrompts::openAddress(const std::string &address)
{
    return QDesktopServices::openUrl(QUrl(q(address)));
}

} // namespace corvalog
