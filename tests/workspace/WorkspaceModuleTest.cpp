#include "workspace/WorkspaceModule.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "runtime/NumberLocale.h"
#include "workspace/INIFileModule.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

using namespace corvalog;

namespace {

using Message = RecordingPrompts::Message;

class WorkspaceModuleTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    RecordingPrompts prompts;
    WorkspaceClass ws;

    std::string path(const std::string &name) const
    {
        return dir.path().toStdString() + "/" + name;
    }
    std::string write(const std::string &name, const std::string &text) const
    {
        return writeFile(path(name), text);
    }
    // Loads a version 2 file of these lines.
    void load(const std::string &lines)
    {
        ASSERT_TRUE(LoadWorkspace(
            ws, write("w.lws", "[Workspace]\nType=CORVALOG\nVersion=2\n" + lines), prompts));
    }
};

// (The command-line tool's tests show the messages in full.)
TEST_F(WorkspaceModuleTest, RejectedFilesLeaveTheWorkspaceAsItWas)
{
    ws.Title = "Kept";
    const std::string settings = write("config.ini", "[WorkspaceFiles]\nInitFile=gone.lws\n");
    EXPECT_FALSE(LoadWorkspace(ws, path("gone.lws"), prompts, settings));
    // Another type, no section, and the type in another case.
    for (const char *text :
        { "[Workspace]\nType=OTHER\n", "Title=New\n", "[Workspace]\nType=corvalog\n" })
        EXPECT_FALSE(LoadWorkspace(ws, write("bad.lws", text), prompts, settings)) << text;
    EXPECT_EQ(ws.Title, "Kept");
    ASSERT_EQ(prompts.messages.size(), 4u);
    EXPECT_EQ(
        prompts.messages[3].text, "The selected workspace file is not valid for this program!");
    // The file that cannot be read is no longer offered as the last workspace.
    EXPECT_EQ(ReadINI(settings, "WorkspaceFiles", "InitFile", "(none)"), "(none)");
}

// Missing and empty keys take their defaults, "*NULL*" nothing; the channel count stays within
// the 24 displays and always matches the items.
TEST_F(WorkspaceModuleTest, KeysTakeTheirDefaultsAndTheChannelsFitTheDisplays)
{
    const std::tuple<const char *, const char *, const char *, std::size_t> cases[] = {
        { "Title=\nChannels=0\n", "Title Text", "", 0 },
        { "Title=*NULL*\nChannels=24\n", "", "", 24 },
        { "  title  =  Rig 4  \nChannels=25\n", "Rig 4", "", 24 },
        { "Notes=a|b||c\nChannels=-5\n", "Title Text", "a\r\nb\r\n\r\nc", 0 },
    };
    for (const auto &[lines, title, notes, items] : cases) {
        load(lines);
        EXPECT_EQ(std::tuple(ws.Title, ws.Notes, ws.Items.size(), std::size_t(ws.Channels)),
            std::tuple(title, notes, items, items))
            << lines;
    }
}

// A value that does not convert leaves the property as it was; a number with only one of the
// two decimal separators reads with it, whatever the locale.
TEST_F(WorkspaceModuleTest, NumbersConvertAsThePlatformDoesOrKeepTheValue)
{
    for (const NumberLocale &locale : { NumberLocale::point(), NumberLocale::comma() }) {
        ScopedNumberLocale scoped(locale);
        ws.Port = 7;
        ws.LogInterval = 250;
        load("Port=abc\nlogInterval=99999999999\nRFChannel=2.5\nChannels=4\nTimeout1=x\n"
             "TareValue1=1e39\nDefault1=\nTareValue2=1.5\nTareValue3=1,5\nTareValue4=-2.5E+3\n");
        // Not numbers or out of range: kept, a new item's at zero; 2.5 rounds half to even; an
        // empty Default takes the default.
        EXPECT_EQ(std::tuple(ws.Port, ws.LogInterval, ws.RFChannel, ws.item(1).Timeout),
            std::tuple(7, 250, 2, 0));
        EXPECT_EQ(
            std::tuple(ws.item(1).TareValue, *ws.item(1).Default), std::tuple(0.0f, -9999999.0f));
        EXPECT_EQ(std::tuple(ws.item(2).TareValue, ws.item(3).TareValue, ws.item(4).TareValue),
            std::tuple(1.5f, 1.5f, -2500.0f));
    }
}

// (A save that fails is reported; the command-line tool's tests show the message.)
TEST_F(WorkspaceModuleTest, ASaveReplacesTheWholeFile)
{
    const std::string file
        = write("big.lws", "[Workspace]\nType=CORVALOG\nChannels=9\nCaption9=Old\n[Other]\nx=1\n");
    ws.Notes = "line 1\r\nline 2";
    ws.item(2).Caption = "Two\nlines";
    ws.item(1).TareValue = 1.25f;
    {
        ScopedNumberLocale comma(NumberLocale::comma());
        ASSERT_TRUE(SaveWorkspace(ws, file, prompts));
    }
    const std::string text = fileText(file);
    EXPECT_EQ(text.find("Caption9"), std::string::npos);
    EXPECT_EQ(text.find("[Other]"), std::string::npos);
    EXPECT_NE(text.find("\nNotes=line 1|line 2\n"), std::string::npos);
    EXPECT_NE(text.find("\nCaption2=Two lines\n"), std::string::npos);
    EXPECT_NE(text.find("\nTareValue1=1,25\n"), std::string::npos); // the locale's separator
    WorkspaceClass back;
    ASSERT_TRUE(LoadWorkspace(back, file, prompts));
    EXPECT_EQ(back.item(1).TareValue, 1.25f);
}

// Each channel as "expression:function", joined with " | ".
TEST_F(WorkspaceModuleTest, Version1DefinitionsAreConverted)
{
    const std::pair<const char *, const char *> cases[] = {
        { "Channels=2\nDataTag1=255\nDataTag2=0\n", "<00FF>:0 | <0000>:0" },
        { "Channels=1\nDataTag1=-1\nFunction1=3\n", "<FFFF>:2" },
        { "Channels=1\nDataTagList1=ff12+3\nFunction1=7\n", "<FF12>+<0003>:0" },
        { "Channels=1\nDataTagList1=12345+\nFunction1=7\n", "<2345>+<0000>:0" },
        { "Channels=1\nFunction1=1\n", ":0" }, // a sum channel in position 1 sums nothing
        { "Channels=4\nFunction3=1\nFunction4=1\n", "<0001>:0 | <0002>:0 | <1>+<2>:0 | :0" },
        { "Channels=5\nFunction2=1\nFunction5=1\n",
            "<0001>:0 | <1>:0 | <0003>:0 | <0004>:0 | <3>+<4>:0" },
    };
    for (const auto &[lines, expected] : cases) {
        ASSERT_TRUE(LoadWorkspace(
            ws, write("v1.lws", std::string("[Workspace]\nType=CORVALOG\n") + lines), prompts));
        std::string channels;
        for (const ItemClass &item : ws.Items)
            channels += (channels.empty() ? "" : " | ") + item.DataTagList + ":"
                + std::to_string(functionCode(item.Functionality));
        EXPECT_EQ(channels, expected) << lines;
    }
}

TEST_F(WorkspaceModuleTest, EveryExampleRoundTripsToWhatASaveWrites)
{
    const std::pair<const char *, std::string> cases[] = {
        { "demo.lws", "" }, // the saved form is the example itself
        { "every-feature.lws", "" },
        { "version1.lws", CORVALOG_TEST_DATA "/version1-upgraded.lws" },
    };
    for (const auto &[example, expected] : cases) {
        const std::string source = std::string(CORVALOG_EXAMPLES) + "/" + example;
        ASSERT_TRUE(LoadWorkspace(ws, source, prompts)) << example;
        ASSERT_TRUE(SaveWorkspace(ws, path("out.lws"), prompts)) << example;
        EXPECT_EQ(fileText(path("out.lws")), fileText(expected.empty() ? source : expected))
            << example;
    }
    EXPECT_TRUE(prompts.messages.empty());
}

// A value longer than a read gives back is cut, and the load says which keys, so an expression
// never changes its meaning unseen.
TEST_F(WorkspaceModuleTest, ValuesCutOnLoadAreNamed)
{
    const std::string expression = "<0001>+" + std::string(300, '1');
    load("Channels=2\nTitle=" + std::string(254, 't') + "\nDataTagList2=" + expression
        + "\nCaption1=" + std::string(255, 'c') + "\n");
    EXPECT_EQ(ws.item(2).DataTagList, expression.substr(0, 254));
    EXPECT_EQ(prompts.messages,
        (std::vector<Message> { { "Warning",
            "These values of the workspace file " + path("w.lws")
                + " are longer than 254 characters and were cut to 254: Caption1, DataTagList2.",
            PromptIcon::Exclamation, PromptButtons::Ok } }));
}

} // namespace
