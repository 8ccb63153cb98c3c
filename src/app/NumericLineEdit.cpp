#include "NumericLineEdit.h"

#include "values/ValidateModule.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>

namespace corvalog {

namespace {

const QColor kNotANumberText(255, 0, 0);

} // namespace

NumericLineEdit::NumericLineEdit(bool commaDecimal, std::string extra, QWidget *parent)
    : QLineEdit(parent)
    , m_commaDecimal(commaDecimal)
    , m_extra(std::move(extra))
{
    setAcceptDrops(false);
}

void NumericLineEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste)) {
        insertFiltered(QGuiApplication::clipboard()->text(QClipboard::Clipboard));
        event->accept();
        return;
    }
    const QString typed = event->text();
    const bool command = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    if (!command && typed.size() == 1 && typed.at(0).isPrint() && !isReadOnly()) {
        const QChar key = typed.at(0);
        int start = 0;
        int length = 0;
        replacedRange(start, length);
        if (key.unicode() > 0x7F
            || !NumericKeyAllowed(text().toLatin1().toStdString(), start, length,
                static_cast<char>(key.unicode()), m_commaDecimal, m_extra)) {
            event->accept(); // swallowed, as a refused key should be
            return;
        }
    }
    QLineEdit::keyPressEvent(event);
}

void NumericLineEdit::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    // The standard Paste entry is known by its own (translated) caption.
    const QString pasteCaption = QLineEdit::tr("&Paste");
    for (QAction *action : menu->actions()) {
        if (action->text().startsWith(pasteCaption)) {
            disconnect(action, nullptr, this, nullptr);
            connect(action, &QAction::triggered, this,
                [this] { insertFiltered(QGuiApplication::clipboard()->text()); });
        }
    }
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void NumericLineEdit::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::MiddleButton && !isReadOnly()
        && QGuiApplication::clipboard()->supportsSelection()) {
        deselect();
        insertFiltered(QGuiApplication::clipboard()->text(QClipboard::Selection));
        event->accept();
        return;
    }
    QLineEdit::mouseReleaseEvent(event);
}

void NumericLineEdit::inputMethodEvent(QInputMethodEvent *event)
{
    if (!event->commitString().isEmpty()) {
        event->setCommitString(
            filtered(event->commitString()), event->replacementStart(), event->replacementLength());
    }
    QLineEdit::inputMethodEvent(event);
}

void NumericLineEdit::replacedRange(int &start, int &length) const
{
    start = hasSelectedText() ? selectionStart() : cursorPosition();
    length = hasSelectedText() ? static_cast<int>(selectedText().size()) : 0;
}

QString NumericLineEdit::filtered(const QString &pasted) const
{
    int start = 0;
    int length = 0;
    replacedRange(start, length);
    return QString::fromLatin1(NumericPasteFilter(text().toLatin1().toStdString(), start, length,
        pasted.toLatin1().toStdString(), m_commaDecimal, m_extra));
}

void NumericLineEdit::insertFiltered(const QString &pasted)
{
    if (isReadOnly())
        return;
    const QString kept = filtered(pasted);
    if (!kept.isEmpty())
        insert(kept);
}

// Shows whether a number box holds a number: its text turns red and its tooltip says that the
// setting keeps its value, until the box reads as a number again.
void showNumberState(QLineEdit &box, bool isNumber)
{
    if (!box.property("plainToolTip").isValid())
        box.setProperty("plainToolTip", box.toolTip());
    const QString plain = box.property("plainToolTip").toString();
    QPalette palette = box.palette();
    palette.setColor(QPalette::Text,
        isNumber ? QApplication::palette(&box).color(QPalette::Text) : kNotANumberText);
    box.setPalette(palette);
    box.setProperty("notANumber", !isNumber);
    box.setToolTip(isNumber
            ? plain
            : QStringLiteral("This is not a number: the setting keeps its value.\n\n") + plain);
}

} // namespace corvalog
