#include "StatusFrm.h"

#include "displays/Twips.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>

namespace corvalog {

namespace {

constexpr int kWidthPx = 420;
constexpr int kMarginPx = 12;
constexpr int kLabelTopPx = 8;

} // namespace

StatusFrm::StatusFrm(QWidget *owner)
    : QDialog(owner)
    , m_label(new QLabel(this))
    , m_button(new QPushButton(QString::fromLatin1(kCloseCaption), this))
{
    setObjectName(QStringLiteral("StatusFrm"));
    setModal(false);
    setAttribute(Qt::WA_DeleteOnClose);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_button->setObjectName(QStringLiteral("btnClose"));
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_label->move(kMarginPx, kLabelTopPx);
    m_button->resize(96, m_button->sizeHint().height());
    m_button->setDefault(true);
    connect(m_button, &QPushButton::clicked, this, &QDialog::close);
    setFixedWidth(kWidthPx);
    setProperty("helpTopic", QStringLiteral("status-report"));
}

void StatusFrm::ShowMessage(const std::string &message, const std::string &title)
{
    setWindowTitle(QString::fromStdString(title));
    QString text = QString::fromStdString(message);
    const bool cancellable = text.startsWith(QLatin1Char('!'));
    if (cancellable) {
        text.remove(0, 1);
        m_button->setText(QStringLiteral("Cancel"));
    }
    // Lines end with CR LF; a trailing break would only add an empty line.
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    while (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    m_label->setText(text);

    // The label grows to its text; the button sits below it and the window around both.
    const int labelWidth = kWidthPx - 2 * kMarginPx;
    const int labelHeight = m_label->heightForWidth(labelWidth);
    m_label->resize(labelWidth, labelHeight);
    m_button->move(
        (kWidthPx - m_button->width()) / 2, kLabelTopPx + labelHeight + twipsToPixels(160));
    setFixedHeight(kLabelTopPx + labelHeight + m_button->height() + twipsToPixels(500));

    if (!isVisible())
        show();
    m_label->repaint();
    QApplication::processEvents();
}

void StatusFrm::closeEvent(QCloseEvent *event)
{
    emit closedByUser();
    QDialog::closeEvent(event);
}

StatusWindow::~StatusWindow()
{
    unload();
}

void StatusWindow::ShowMessage(const std::string &message, const std::string &title)
{
    if (!m_form) {
        m_form = new StatusFrm(m_owner);
        m_closed = false;
        QObject::connect(m_form, &StatusFrm::closedByUser, m_form, [this] { m_closed = true; });
    }
    m_form->ShowMessage(message, title);
}

void StatusWindow::unload()
{
    if (!m_form)
        return;
    // Unloading by the program is not the user's cancel.
    QObject::disconnect(m_form, &StatusFrm::closedByUser, nullptr, nullptr);
    delete m_form.data();
}

} // namespace corvalog
