#pragma once

#include "ChannelValues.h"
#include "ScriptEngine.h"
#include "workspace/WorkspaceClass.h"

#include <string>

namespace corvalog {

// What the evaluation cycle needs of the main window (or of the headless logger).
class ReadValuesHost
{
public:
    virtual ~ReadValuesHost() = default;
    // True while the window wants no "Reading from: " label.
    virtual bool suppressReadingLabel() const = 0;
    virtual void setReadingLabel(const std::string &text) = 0;
    // Lets pending window events run once (packets, clicks, a workspace being opened).
    virtual void processEvents() = 0;
    // The title of channel n's panel.
    virtual std::string panelTitle(int n) const = 0;
};

// Prepares a workspace's channels for evaluation, as activation does: each item's expression
// is rewritten into its expression and four scripts, and peak and trough channels start from
// their seeds so that the first reading is the first extreme.
void prepareChannels(WorkspaceClass &workspace, ChannelValues &values);

// One evaluation cycle: every channel in order decides timeout and error from its scripts,
// shows its Default while in error, otherwise evaluates its expression and applies tare and
// its function (peak, trough or a filter), and publishes C, CE, CL and CB. Evaluation errors
// put the channel in error and never stop the cycle. A channel sees lower channels' values of
// this cycle and higher ones' of the last. The cycle ends early when the workspace's channels
// change while events run.
void ReadValues(
    WorkspaceClass &workspace, ChannelValues &values, ScriptEngine &engine, ReadValuesHost &host);

} // namespace corvalog
