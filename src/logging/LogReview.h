#pragma once

#include "values/TrendHistory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvalog {

// An event read back from NAME.events.csv.
struct ReviewEvent {
    double timeMs = 0; // the log's Elapsed mS
    int channel = 0;
    std::string caption;
    std::string kind; // over, under, in range, error, recovered
    std::string value;
    std::string limit;
};

// A log (or a packet recording) read back for review: a series for each column over the log's
// elapsed time, the events and limits from its companions when they are there.
struct ReviewData {
    std::string path;
    bool recording = false; // a packet recording: one series per Data Tag
    std::vector<std::string> captions; // one a series
    std::vector<std::optional<float>> underload; // from the metadata, when it has them
    std::vector<std::optional<float>> overload;
    TrendHistory history { 1 };
    std::vector<ReviewEvent> events;
    std::string started; // from the metadata ("" without it)
    // The time of day at elapsed 0, in ms since midnight, from the first row's Time (a log only).
    std::optional<double> clockAtStartMs;
    std::uint64_t rows = 0;
    std::vector<std::string> warnings; // lines that could not be read, and the first reasons
};

// Reads a Corvalog log (either separator, with or without NAME.events.csv and NAME.meta.json
// beside it) or a packet recording; nothing, with the reason in `error`, for a file that is
// neither. A value that is not a number (a channel's own text format) is a gap.
std::optional<ReviewData> readForReview(const std::string &path, std::string &error);

// A value as a log writes it, in the log's decimal mark: "12.5", "-1,234.50" (groups), "1E+20",
// "7,5" with decimal commas; nothing for text that holds no number.
std::optional<float> logNumber(std::string_view text, char decimal);
// The same at full precision, for times.
std::optional<double> logDouble(std::string_view text, char decimal);

} // namespace corvalog
