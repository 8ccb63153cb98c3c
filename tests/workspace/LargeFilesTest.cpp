// Settings and workspace files as big as anyone might hand the program, read by the tool as a
// user runs it, so what it costs is measured on its own process.
#include "ChildProcess.h"

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace corvalog;

namespace {

// 24 million one-byte lines: were each line to cost even four bytes, the tool would pass the
// limit; holding the file's bytes (once or twice, for a rewrite) stays well below it.
constexpr std::size_t kFileBytes = 24u << 20;
constexpr long kMemoryLimitKb = 100 * 1024;

std::string bigFile(const QTemporaryDir &dir, const char *name, char fill, const std::string &tail)
{
    const std::string path = dir.filePath(QString::fromLatin1(name)).toStdString();
    std::ofstream out(path, std::ios::binary);
    const std::string block(1 << 20, fill);
    for (std::size_t written = 0; written < kFileBytes; written += block.size())
        out << block;
    out << tail;
    return path;
}

TEST(LargeFiles, MemoryFollowsWhatAFileHoldsNotItsLines)
{
    QTemporaryDir dir;
    const std::string cli = CORVALOG_CLI_PATH;
    const std::string blank = bigFile(dir, "blank.lws", '\n', "");
    const std::string workspace
        = bigFile(dir, "ws.lws", '\n', "[Workspace]\nType=CORVALOG\nTitle=Far down\n");
    const std::string comments = bigFile(dir, "c.ini", ';', "\n[S]\nK=1\n");

    const ChildResult refused = runChild({ cli, "workspace", "show", blank });
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.err, "Warning: The selected workspace file is not valid for this program!\n");
    EXPECT_LT(refused.maxRssKb, kMemoryLimitKb);

    const ChildResult shown = runChild({ cli, "workspace", "show", workspace });
    EXPECT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_NE(shown.out.find("\"Title\": \"Far down\""), std::string::npos);
    EXPECT_LT(shown.maxRssKb, kMemoryLimitKb);

    const auto before = std::filesystem::file_size(blank);
    const ChildResult set = runChild({ cli, "ini", "set", blank, "S", "K", "V" });
    EXPECT_EQ(set.exitCode, 0) << set.err;
    EXPECT_EQ(std::filesystem::file_size(blank), before + 8); // "[S]\nK=V\n"
    EXPECT_LT(set.maxRssKb, kMemoryLimitKb);

    const ChildResult read = runChild({ cli, "ini", "get", comments, "S", "K", "none" });
    EXPECT_EQ(read.out, "1\n");
    EXPECT_LT(read.maxRssKb, kMemoryLimitKb);
}

} // namespace
