#pragma once

#include <functional>
#include <string>

namespace corvalog {

class ScriptEngine;
class StatusDisplay;
struct WorkspaceClass;

// The title of display panel n (1..24), as the status report names referenced channels.
using PanelTitleFn = std::function<std::string(int)>;

// Why channel n shows no good reading, as CR LF terminated lines: the expression's error
// sentence alone, or the timeout, error, low-LQI and low-battery sections that apply, each with
// the references it concerns. Empty when there is nothing to report or n is no channel.
std::string StatusReport(
    int n, const WorkspaceClass &workspace, ScriptEngine &engine, const PanelTitleFn &panelTitle);

// One " Displayed Channel r (title)" or " Module Data Tag XXXX" line per <r> occurrence in the
// typed expression whose test cp(r) or tp(tag) is true ("< 50" for the link-quality pair).
std::string ReferenceListing(const std::string &expression, const std::string &channelPrefix,
    const std::string &tagPrefix, ScriptEngine &engine, const PanelTitleFn &panelTitle);

// Builds channel n's report and shows it titled "Status Report Channel n" unless it is empty.
void ShowStatusReport(int n, const WorkspaceClass &workspace, ScriptEngine &engine,
    const PanelTitleFn &panelTitle, StatusDisplay &display);

} // namespace corvalog
