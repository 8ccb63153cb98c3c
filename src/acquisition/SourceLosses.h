#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace corvalog {

class DataProvider;

// What a source sent that never reached the tables: packets the tables could not store (a Data
// Tag beyond them), packets dropped waiting (a full inbox while the GUI thread was busy, or a
// full waiting list while the pump was held), datagrams the system dropped before they could
// be read (a full receive buffer).
struct SourceLosses {
    std::uint64_t unstored = 0;
    std::uint64_t droppedWaiting = 0;
    std::uint64_t droppedBySystem = 0;
    // Lines that broke the source's format (a recording's, a datagram's, a serial line's), and
    // the reason of the first.
    std::uint64_t malformed = 0;
    std::string firstMalformed;

    std::uint64_t total() const { return unstored + droppedWaiting + droppedBySystem + malformed; }
};

// The losses of a driver object, with the handler's count of packets it could not store and
// the pump's count of packets it dropped while held.
SourceLosses sourceLosses(
    const DataProvider &driver, std::uint64_t unstored, std::uint64_t droppedHeld);

// One sentence for each kind of loss there was, for the user: "3 packets could not be stored,
// 0 were dropped waiting", "12 datagrams were dropped by the system before they could be
// read (its receive buffer was full)" and "2 lines could not be read and were skipped (the
// first: ...)".
std::vector<std::string> lossSentences(const SourceLosses &losses);

// The program's one warning of an activation's losses: every sentence, and that no more are
// told until the next activation.
std::string lossWarning(const SourceLosses &losses);

} // namespace corvalog
