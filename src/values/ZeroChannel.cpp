#include "values/ZeroChannel.h"

#include "runtime/NumberText.h"
#include "runtime/UserPrompts.h"
#include "values/ChannelValues.h"
#include "workspace/Settings.h"
#include "workspace/WorkspaceClass.h"

namespace corvalog {

ZeroResult ZeroChannel(int n, bool shiftHeld, WorkspaceClass &workspace, ChannelValues &values,
    UserPrompts &prompts, const std::string &settingsFile)
{
    if (values.error(n) != 0) {
        prompts.message(
            "Tare", "Cannot zero while communications errors exist!", PromptIcon::Exclamation);
        return { true, std::nullopt };
    }

    ItemClass &item = workspace.item(n);
    // Capture channels restart: the seed makes the next reading the new extreme.
    if (item.Functionality == ChannelFunction::PeakCapture) {
        values.working(n) = ChannelValues::kPeakSeed;
        return {};
    }
    if (item.Functionality == ChannelFunction::TroughCapture) {
        values.working(n) = ChannelValues::kTroughSeed;
        return {};
    }

    bool tared = !shiftHeld;
    if (shiftHeld) {
        item.TareValue = 0;
        values.working(n) = 0;
    } else {
        item.TareValue = values.working(n);
    }
    // Untared on purpose: the next cycle subtracts the new tare, and filters settle from here.
    values.output(n) = values.working(n);
    // A failed write is not reported: the tare is only a record, never read back.
    (void)writeTare(settingsFile, n, singleText(item.TareValue));
    return { false, tared };
}

std::string zeroButtonCaption(ChannelFunction function)
{
    return isCapture(function) ? "Reset" : "Zero";
}

} // namespace corvalog
