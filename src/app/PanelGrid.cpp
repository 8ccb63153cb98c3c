#include "PanelGrid.h"

#include "HelpTopics.h"
#include "displays/LCDModule.h"
#include "displays/TableContainer.h"
#include "runtime/Format.h"
#include "runtime/TimerPeriods.h"
#include "values/PanelState.h"
#include "values/ZeroChannel.h"
#include "workspace/WorkspaceClass.h"

namespace corvalog {

PanelGrid::PanelGrid(QWidget *parent)
    : QScrollArea(parent)
    , m_grid(new TableContainer)
{
    setObjectName(QStringLiteral("GridScroll"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_grid->setObjectName(QStringLiteral("TableContainer1"));
    m_grid->setProperty(kHelpTopicProperty, QStringLiteral("panels"));
    setWidget(m_grid);

    auto *templ = new LCDModule(m_grid);
    templ->setProperty("Index", 0);
    templ->hide();
    m_panels.push_back(templ);

    m_blink.setInterval(kFlashIntervalMs);
    connect(&m_blink, &QTimer::timeout, &m_phase, &FlashPhase::toggle);
    m_blink.start();
}

LCDModule *PanelGrid::panel(int n) const
{
    return n >= 1 && n < static_cast<int>(m_panels.size()) ? m_panels[static_cast<std::size_t>(n)]
                                                           : nullptr;
}

void PanelGrid::showChannels(const WorkspaceClass &workspace, bool commaDecimal)
{
    for (std::size_t i = m_panels.size() - 1; i >= 1; --i)
        delete m_panels[i];
    m_panels.resize(1);

    for (int i = 1; i <= workspace.Channels; ++i) {
        const ItemClass &item = workspace.item(i);
        auto *panel = new LCDModule(m_grid);
        panel->setObjectName(QStringLiteral("Disp%1").arg(i));
        panel->setProperty("Index", i);
        panel->setProperty(kHelpTopicProperty, QStringLiteral("panels"));
        panel->setForeColor(kBlack);
        panel->InitFlashLabel(&m_phase);
        panel->setVisible(true);
        panel->setTitle(QString::fromStdString(item.Caption));
        panel->setValue(QString::fromStdString(
            panelText(Format(Variant::integer(0), item.Format), commaDecimal)));
        panel->setBtnCaption(QString::fromStdString(zeroButtonCaption(item.Functionality)));
        connect(panel, &LCDModule::Zero, this, [this, i] { emit zeroClicked(i); });
        connect(panel, &LCDModule::Click, this, [this, i] { emit panelClicked(i); });
        m_panels.push_back(panel);
    }
}

} // namespace corvalog
