#pragma once

#include "ItemClass.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvalog {

// The whole user-editable configuration of one logging set-up: base-station connection, radio
// settings, log interval and up to 24 channels. After a load `Items` holds exactly `Channels`
// entries in channel order; the editor keeps the two in step.
struct WorkspaceClass {
    static constexpr int kMaxChannels = 24;

    std::int16_t Version = 1;
    std::string Title = "Title Text";
    std::string Notes; // lines joined by CR LF
    std::int16_t Interface = 0; // 0 USB, otherwise a serial port
    std::int16_t Port = 1;
    std::int32_t Baudrate = 115200;
    std::int16_t Channels = 4;
    std::int32_t LogInterval = 1000; // milliseconds
    std::int16_t RFChannel = 1;
    std::int16_t BSAddress = 1;
    std::int16_t KeepAwake = 0;
    std::vector<ItemClass> Items; // Items[0] is channel 1

    // The workspace an empty file name loads: four default channels.
    WorkspaceClass();

    // Channel n (1-based); raises Subscript out of range (9) outside 1..Items.size().
    ItemClass &item(int n);
    const ItemClass &item(int n) const;
};

// A channel the editor adds: "Channel " and its number, format "00.000", Timeout 3, the widest
// limits and no function (the defaults a load gives).
ItemClass newChannel(int channel);

// True when two workspaces would be saved differently: a general setting or a channel's saved
// property differs (the scripts made at activation do not count).
bool workspacesDiffer(const WorkspaceClass &a, const WorkspaceClass &b);

} // namespace corvalog
