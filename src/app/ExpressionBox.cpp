#include "ExpressionBox.h"

#include "values/ExpressionCheck.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>

namespace corvalog {

namespace {

const QColor kErrorText(255, 0, 0);

QPixmap markPixmap(bool tick)
{
    constexpr int kSide = 16;
    const qreal ratio = qApp->devicePixelRatio();
    QPixmap pixmap(QSize(kSide, kSide) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(tick ? QColor(0, 150, 0) : QColor(210, 0, 0), 2.5, Qt::SolidLine,
        Qt::RoundCap, Qt::RoundJoin));
    if (tick) {
        const QPointF stroke[] = { { 2.5, 8.5 }, { 6.5, 12.5 }, { 13.5, 3.5 } };
        painter.drawPolyline(stroke, 3);
    } else {
        painter.drawLine(QPointF(4, 4), QPointF(12, 12));
        painter.drawLine(QPointF(12, 4), QPointF(4, 12));
    }
    return pixmap;
}

} // namespace

ExpressionBox::ExpressionBox(ScriptEngine &engine, QWidget *parent)
    : QWidget(parent)
    , m_engine(engine)
    , m_edit(new QLineEdit(this))
    , m_tick(new QLabel(this))
    , m_cross(new QLabel(this))
    , m_normal(m_edit->palette())
{
    m_tick->setObjectName(QStringLiteral("Tick"));
    m_tick->setToolTip(tr("The expression is valid"));
    m_tick->setPixmap(markPixmap(true));
    m_cross->setObjectName(QStringLiteral("Cross"));
    m_cross->setPixmap(markPixmap(false));
    m_cross->hide();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_edit, 1);
    row->addWidget(m_tick);
    row->addWidget(m_cross);
}

void ExpressionBox::check(bool haveChannel)
{
    if (!haveChannel) {
        m_tick->hide();
        m_cross->hide();
        m_edit->setPalette(m_normal);
        return;
    }
    const ExpressionCheck outcome = checkExpression(m_engine, m_edit->text().toStdString());
    m_tick->setVisible(outcome.valid);
    m_cross->setVisible(!outcome.valid);
    QPalette palette = m_normal;
    if (outcome.valid) {
        m_cross->setToolTip(QString());
    } else {
        m_cross->setToolTip(
            QStringLiteral("Error in expression: ") + QString::fromStdString(outcome.description));
        palette.setColor(QPalette::Text, kErrorText);
    }
    m_edit->setPalette(palette);
}

} // namespace corvalog
