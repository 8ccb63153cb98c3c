#include "relay/Spool.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

std::vector<std::uint64_t> seqsOf(const Spool &spool)
{
    std::vector<std::uint64_t> seqs;
    for (const auto &[seq, item] : spool.items())
        seqs.push_back(seq);
    return seqs;
}

// What a run leaves (it may be killed at any point) the next run takes over, and its numbers
// never come again.
TEST(Spool, ANewRunTakesOverTheMessagesAndNeverReusesANumber)
{
    QTemporaryDir dir;
    const std::string folder = dir.filePath("spool").toStdString();
    std::string error;
    std::uint64_t last = 0;
    {
        auto spool = Spool::open(folder, 1 << 20, error);
        ASSERT_TRUE(spool) << error;
        for (int i = 0; i < 5; ++i) {
            const std::optional<std::uint64_t> seq = spool->nextSeq(error);
            ASSERT_TRUE(seq) << error;
            ASSERT_TRUE(spool->store(*seq, 10 + i, "message " + std::to_string(*seq), error));
            last = *seq;
        }
        spool->remove(2);
        spool->remove(5); // every message acknowledged but the last numbers
        EXPECT_EQ(spool->packets(), 10u + 12 + 13);
    }
    auto again = Spool::open(folder, 1 << 20, error);
    ASSERT_TRUE(again) << error;
    EXPECT_EQ(seqsOf(*again), (std::vector<std::uint64_t> { 1, 3, 4 }));
    EXPECT_EQ(again->packets(), 10u + 12 + 13);
    EXPECT_EQ(again->read(3), "message 3");
    const std::optional<std::uint64_t> next = again->nextSeq(error);
    ASSERT_TRUE(next);
    EXPECT_GT(*next, last);

    // Even with every message gone, the written-down block keeps the numbers moving on.
    for (const std::uint64_t seq : seqsOf(*again))
        again->remove(seq);
    again.reset();
    auto third = Spool::open(folder, 1 << 20, error);
    EXPECT_GT(*third->nextSeq(error), *next);
}

TEST(Spool, AFullSpoolDropsTheOldestAndCountsThem)
{
    QTemporaryDir dir;
    std::string error;
    auto spool = Spool::open(dir.path().toStdString(), 1000, error);
    ASSERT_TRUE(spool);
    const std::string payload(300, 'x');
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(spool->store(*spool->nextSeq(error), 7, payload, error));
    EXPECT_EQ(seqsOf(*spool), (std::vector<std::uint64_t> { 3, 4, 5 }));
    EXPECT_LE(spool->bytes(), 1000u);
    EXPECT_EQ(spool->droppedMessages(), 2u);
    EXPECT_EQ(spool->droppedPackets(), 14u);
    EXPECT_EQ(QDir(dir.path()).entryList({ "*.msg" }).size(), 3);
    EXPECT_FALSE(spool->store(*spool->nextSeq(error), 1, std::string(2000, 'y'), error));
    EXPECT_NE(error.find("larger than the spool's limit"), std::string::npos);
}

} // namespace
} // namespace corvalog
