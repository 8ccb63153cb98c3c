#pragma once

#include "workspace/ChannelFunction.h"

#include <optional>
#include <string>

namespace corvalog {

class ChannelValues;
class UserPrompts;
struct WorkspaceClass;

// What a press of a panel's zero button did.
struct ZeroResult {
    bool refused = false; // the channel was in error; nothing changed
    // The state the panel's net indicator must take; empty when it stays as it is (refusals
    // and peak or trough restarts).
    std::optional<bool> netIndicator;
};

// The zero button of channel n: refuses with a "Tare" message while the channel is in error,
// restarts peak or trough capture, otherwise tares the channel at its working value (or removes
// the tare when shiftHeld) and records the new tare in the settings file. Channels outside
// 0..24 raise Subscript out of range (9).
ZeroResult ZeroChannel(int n, bool shiftHeld, WorkspaceClass &workspace, ChannelValues &values,
    UserPrompts &prompts, const std::string &settingsFile);

// The zero button's caption: "Reset" for peak and trough channels (it restarts the capture),
// "Zero" for the rest.
std::string zeroButtonCaption(ChannelFunction function);

} // namespace corvalog
