#pragma once

#include "runtime/OleColor.h"

#include <string>

namespace corvalog {

class ChannelValues;
class ScriptEngine;
struct ItemClass;

// What a channel's panel shows after a refresh tick, decided here so the panel only writes it.
struct PanelState {
    std::string text; // as the display draws it (see panelText), or kNoValue in error
    bool flash = false; // the value lies strictly beyond a limit
    OleColor ground = kSystem3DLight; // pure red while the channel is in error
    float linkQuality = 0; // percent; the panel draws it in fifths
    bool lowBattery = false;
    bool tared = false; // "Zeroed (Net)" shows
};

// What a channel in error shows.
inline constexpr const char *kNoValue = "-------";

// The state of channel `n`'s panel: in error, "-------" on red with no bar and no battery mark;
// otherwise its output value in its format, flashing beyond its limits, with the link quality
// and battery state its scripts give (a script that fails reads as 0, so one bad script never
// stops the refresh of the others). `commaDecimal`: numbers carry decimal commas.
PanelState panelState(const ItemClass &item, int n, const ChannelValues &values,
    ScriptEngine &engine, bool commaDecimal);

// A formatted value as the seven-segment display shows it. The display's only decimal mark is
// its point, so where the locale writes decimal commas the comma and the point change places
// ("1.234,50" shows as "1,234.50"): a comma would be a blank cell and turn 12,5 into 12 5.
std::string panelText(const std::string &formatted, bool commaDecimal);

} // namespace corvalog
