#pragma once

#include "FileText.h"

#include <QTemporaryDir>
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace corvalog {

// Runs in a temporary folder of its own, so files are named relative to it.
class Cli : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    const std::filesystem::path before = std::filesystem::current_path();
    Cli() { std::filesystem::current_path(dir.path().toStdString()); }
    ~Cli() override { std::filesystem::current_path(before); }
};

// corvalog-cli with the words given, split at spaces ("~" is a space inside a word).
inline std::vector<std::string> cli(const std::string &words)
{
    std::vector<std::string> argv { CORVALOG_CLI_PATH };
    std::istringstream in(words);
    for (std::string word; std::getline(in, word, ' ');) {
        std::replace(word.begin(), word.end(), '~', ' ');
        argv.push_back(word);
    }
    return argv;
}

// corvalog-cli log of two constant channels every `intervalMs`, then the words given.
inline std::vector<std::string> logRun(int intervalMs, const std::string &words)
{
    const std::string ms = std::to_string(intervalMs);
    writeFile("w" + ms + ".lws",
        "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=2\nlogInterval=" + ms
            + "\nDataTagList1=5/4\nFormat1=0.00\nDataTagList2=7\nFormat2=0\n");
    return cli("log --workspace w" + ms + ".lws " + words);
}

inline std::size_t lines(const std::string &text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace corvalog
