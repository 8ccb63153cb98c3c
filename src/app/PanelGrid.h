#pragma once

#include "displays/FlashPhase.h"

#include <QScrollArea>
#include <QTimer>
#include <string>
#include <vector>

namespace corvalog {

struct WorkspaceClass;
class LCDModule;
class TableContainer;

// The channel panels in a grid that flows with the window's width and scrolls when the window
// cannot grow to show them all, with the blink every flashing panel follows.
class PanelGrid : public QScrollArea
{
    Q_OBJECT

public:
    explicit PanelGrid(QWidget *parent = nullptr);

    TableContainer *grid() const { return m_grid; }
    // Panels by channel number; [0] is the template, never shown.
    const std::vector<LCDModule *> &panels() const { return m_panels; }
    // The panel of channel n, or null when there is none.
    LCDModule *panel(int n) const;

    // One panel per channel of `workspace`, each titled and showing zero in its channel's
    // format, in place of the panels there were.
    void showChannels(const WorkspaceClass &workspace, bool commaDecimal);

    void stopBlinking() { m_blink.stop(); }

signals:
    void zeroClicked(int channel);
    void panelClicked(int channel);

private:
    TableContainer *m_grid;
    std::vector<LCDModule *> m_panels;
    FlashPhase m_phase;
    QTimer m_blink;
};

} // namespace corvalog
