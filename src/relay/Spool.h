#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvalog {

// The messages a relay has not yet seen acknowledged, one file each in a folder of their own,
// so neither a broker outage nor a relay that is killed loses them: the next run sends what it
// finds. The folder's size is bounded; when a message does not fit, the oldest are dropped and
// counted. Sequence numbers are handed out from blocks written down ahead, so a restarted relay
// never reuses a number a reader has seen (which it would drop as a repeat).
class Spool
{
public:
    static constexpr std::uint64_t kDefaultLimitBytes = 256ull << 20;
    // How many sequence numbers are written down ahead at a time.
    static constexpr std::uint64_t kSeqBlock = 1024;

    struct Item {
        std::uint32_t packets = 0;
        std::uint64_t bytes = 0;
    };

    // Opens the folder (creating it), taking over what a previous run left in it; nothing,
    // with the reason in `error`, when it cannot be made or written.
    static std::unique_ptr<Spool> open(
        const std::string &folder, std::uint64_t limitBytes, std::string &error);

    // The next sequence number (from 1); nothing, with the reason, when the block cannot be
    // written down.
    std::optional<std::uint64_t> nextSeq(std::string &error);
    // Keeps a message, dropping the oldest ones while the folder would hold more than its
    // limit; false, with the reason, when the file cannot be written (a full disk).
    bool store(
        std::uint64_t seq, std::uint32_t packets, const std::string &payload, std::string &error);
    // An acknowledged message goes.
    void remove(std::uint64_t seq);
    std::optional<std::string> read(std::uint64_t seq) const;

    // Oldest first.
    const std::map<std::uint64_t, Item> &items() const { return m_items; }
    std::uint64_t bytes() const { return m_bytes; }
    std::uint64_t packets() const { return m_packets; }
    std::uint64_t droppedMessages() const { return m_droppedMessages; }
    std::uint64_t droppedPackets() const { return m_droppedPackets; }
    const std::string &folder() const { return m_folder; }
    std::uint64_t limitBytes() const { return m_limit; }

private:
    Spool(std::string folder, std::uint64_t limit);
    std::string pathOf(std::uint64_t seq, std::uint32_t packets) const;
    bool writeSeqBlock(std::uint64_t end, std::string &error);
    void drop(std::map<std::uint64_t, Item>::iterator it);

    std::string m_folder;
    std::uint64_t m_limit;
    std::map<std::uint64_t, Item> m_items;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_packets = 0;
    std::uint64_t m_next = 1;
    std::uint64_t m_blockEnd = 0; // numbers below this are written down
    std::uint64_t m_droppedMessages = 0;
    std::uint64_t m_droppedPackets = 0;
};

} // namespace corvalog
