#include "workspace/WorkspaceModule.h"

#include "FileText.h"
#include "RecordingPrompts.h"
#include "runtime/NumberLocale.h"
#include "workspace/INIFileModule.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <string>

using namespace corvalog;

namespace {

class WorkspaceModuleTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    RecordingPrompts prompts;
    WorkspaceClass ws;

    std::string path(const std::string &name) const
    {
        return dir.filePath(QString::fromStdString(name)).toStdString();
    }

    std::string write(const std::string &name, const std::string &text) const
    {
        return writeFile(path(name), text);
    }

    // Loads "[Workspace]\nType=CORVALOG\n" + lines.
    void load(const std::string &lines)
    {
        ASSERT_TRUE(LoadWorkspace(
            ws, write("w.lws", "[Workspace]\nType=CORVALOG\nVersion=2\n" + lines), prompts));
    }
};

TEST_F(WorkspaceModuleTest, AnEmptyNameGivesTheDefaultsWithoutAMessage)
{
    ws.Title = "x";
    ws.Channels = 9;
    ASSERT_TRUE(LoadWorkspace(ws, "", prompts));
    EXPECT_TRUE(prompts.messages.empty());
    EXPECT_EQ(ws.Title, "Title Text");
    EXPECT_EQ(ws.Version, 1);
    ASSERT_EQ(ws.Items.size(), 4u);
    for (int n = 1; n <= 4; ++n) {
        EXPECT_EQ(ws.item(n).Caption, "Channel " + std::to_string(n));
        // Version 1 rebuilds the expression from DataTag n.
        EXPECT_EQ(ws.item(n).DataTagList, "<000" + std::to_string(n) + ">");
    }
}

TEST_F(WorkspaceModuleTest, RejectedFilesLeaveTheWorkspaceAsItWas)
{
    ws.Title = "Kept";
    const std::string settings = write("config.ini", "[WorkspaceFiles]\nInitFile=gone.lws\n");
    const std::string missing = path("gone.lws");
    EXPECT_FALSE(LoadWorkspace(ws, missing, prompts, settings));
    // Another type, no section, and the type in another case.
    for (const char *text :
        { "[Workspace]\nType=OTHER\n", "Title=New\n", "[Workspace]\nType=corvalog\n" })
        EXPECT_FALSE(LoadWorkspace(ws, write("bad.lws", text), prompts, settings)) << text;
    EXPECT_EQ(ws.Title, "Kept");
    ASSERT_EQ(prompts.messages.size(), 4u);
    EXPECT_EQ(prompts.messages[0].title, "Warning");
    EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Exclamation);
    EXPECT_EQ(prompts.messages[0].text,
        "An error occurred while trying to load workspace from " + missing
            + "\r\nError: File not found");
    for (std::size_t i = 1; i < 4; ++i)
        EXPECT_EQ(
            prompts.messages[i].text, "The selected workspace file is not valid for this program!");
    // Only the unreadable file clears the remembered workspace.
    EXPECT_EQ(ReadINI(settings, "WorkspaceFiles", "InitFile", "(none)"), "(none)");
}

TEST_F(WorkspaceModuleTest, KeysMissingEmptyOrNullTakeTheirDefaultsOrNothing)
{
    const struct {
        const char *lines;
        const char *title;
        const char *notes;
    } cases[] = {
        { "", "Title Text", "" },
        { "Title=\n", "Title Text", "" },
        { "Title=*NULL*\n", "", "" },
        { "  title  =  Rig 4  \n", "Rig 4", "" },
        { "Notes=a|b||c\n", "Title Text", "a\r\nb\r\n\r\nc" },
    };
    for (const auto &c : cases) {
        load(c.lines);
        EXPECT_EQ(ws.Title, c.title) << c.lines;
        EXPECT_EQ(ws.Notes, c.notes) << c.lines;
    }
}

TEST_F(WorkspaceModuleTest, ValuesThatDoNotConvertKeepWhatTheyWere)
{
    ws.Port = 7;
    ws.LogInterval = 250;
    load("Port=abc\nlogInterval=99999999999\nBaudrate=9600.4\nRFChannel=2.5\nChannels=2\n"
         "Timeout1=x\nTareValue1=1e39\nDefault1=\nFunction2=3.5\n");
    EXPECT_EQ(ws.Port, 7);
    EXPECT_EQ(ws.LogInterval, 250);
    EXPECT_EQ(ws.Baudrate, 9600);
    EXPECT_EQ(ws.RFChannel, 2); // half to even
    EXPECT_EQ(ws.item(1).Timeout, 0); // a new item starts at zero
    EXPECT_EQ(ws.item(1).TareValue, 0.0f); // beyond the Single range
    EXPECT_EQ(ws.item(1).Default, -9999999.0f);
    EXPECT_EQ(ws.item(2).Functionality, ChannelFunction::FilterMedium);
}

TEST_F(WorkspaceModuleTest, TheChannelCountStaysWithinTheDisplays)
{
    const struct {
        const char *channels;
        std::size_t items;
    } cases[]
        = { { "0", 0 }, { "3", 3 }, { "24", 24 }, { "25", 24 }, { "30000", 24 }, { "-5", 0 } };
    for (const auto &c : cases) {
        load(std::string("Channels=") + c.channels + "\n");
        EXPECT_EQ(ws.Items.size(), c.items) << c.channels;
        EXPECT_EQ(static_cast<std::size_t>(ws.Channels), c.items) << c.channels;
    }
}

TEST_F(WorkspaceModuleTest, NumbersReadWithEitherDecimalSeparator)
{
    for (const NumberLocale &locale : { NumberLocale::point(), NumberLocale::comma() }) {
        ScopedNumberLocale scoped(locale);
        load("Channels=3\nTareValue1=1.5\nTareValue2=1,5\nTareValue3=-2.5E+3\n");
        EXPECT_EQ(ws.item(1).TareValue, 1.5f);
        EXPECT_EQ(ws.item(2).TareValue, 1.5f);
        EXPECT_EQ(ws.item(3).TareValue, -2500.0f);
    }
}

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
    EXPECT_EQ(ws.Version, 1); // a save leaves the workspace in memory as it was...
    EXPECT_EQ(back.Version, 2); // ...and files are always written as version 2
}

TEST_F(WorkspaceModuleTest, AFailedSaveIsReportedAndChangesNothing)
{
    const std::string file = path("missing/folder/w.lws");
    EXPECT_FALSE(SaveWorkspace(ws, file, prompts));
    ASSERT_EQ(prompts.messages.size(), 1u);
    EXPECT_EQ(prompts.messages[0].title, "Warning");
    EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Exclamation);
    EXPECT_EQ(prompts.messages[0].text.rfind(
                  "An error occurred while trying to save workspace to " + file + "\r\nError: ", 0),
        0u);
}

TEST_F(WorkspaceModuleTest, Version1DefinitionsAreConverted)
{
    const struct {
        const char *lines;
        const char *expressions; // joined with " | "
        const char *functions;
    } cases[] = {
        { "Channels=2\nDataTag1=255\nDataTag2=0\n", "<00FF> | <0000>", "0 0" },
        { "Channels=1\nDataTag1=-1\nFunction1=3\n", "<FFFF>", "2" },
        { "Channels=1\nDataTagList1=ff12+3\nFunction1=7\n", "<FF12>+<0003>", "0" },
        { "Channels=1\nDataTagList1=12345+\nFunction1=7\n", "<2345>+<0000>", "0" },
        { "Channels=1\nFunction1=1\n", "", "0" }, // a sum channel in position 1 sums nothing
        { "Channels=4\nFunction3=1\nFunction4=1\n", "<0001> | <0002> | <1>+<2> | ", "0 0 0 0" },
        { "Channels=5\nFunction2=1\nFunction5=1\n", "<0001> | <1> | <0003> | <0004> | <3>+<4>",
            "0 0 0 0 0" },
    };
    for (const auto &c : cases) {
        ASSERT_TRUE(LoadWorkspace(
            ws, write("v1.lws", std::string("[Workspace]\nType=CORVALOG\n") + c.lines), prompts));
        std::string expressions, functions;
        for (std::size_t i = 0; i < ws.Items.size(); ++i) {
            expressions += (i ? " | " : "") + ws.Items[i].DataTagList;
            functions += (i ? " " : "") + std::to_string(functionCode(ws.Items[i].Functionality));
        }
        EXPECT_EQ(expressions, c.expressions) << c.lines;
        EXPECT_EQ(functions, c.functions) << c.lines;
        EXPECT_EQ(ws.Version, 1);
    }
}

TEST_F(WorkspaceModuleTest, EveryExampleRoundTripsToWhatASaveWrites)
{
    const struct {
        const char *example;
        const char *expected; // the saved form; "" when it is the example itself
    } cases[] = {
        { "demo.lws", "" },
        { "every-feature.lws", "" },
        { "version1.lws", CORVALOG_TEST_DATA "/version1-upgraded.lws" },
    };
    for (const auto &c : cases) {
        const std::string source = std::string(CORVALOG_EXAMPLES) + "/" + c.example;
        const std::string out = path(std::string("out-") + c.example);
        ASSERT_TRUE(LoadWorkspace(ws, source, prompts)) << c.example;
        ASSERT_TRUE(SaveWorkspace(ws, out, prompts)) << c.example;
        EXPECT_EQ(fileText(out), fileText(*c.expected ? c.expected : source)) << c.example;
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
    ASSERT_EQ(prompts.messages.size(), 1u);
    const std::string file = path("w.lws");
    EXPECT_EQ(prompts.messages[0],
        (RecordingPrompts::Message { "Warning",
            "These values of the workspace file " + file
                + " are longer than 254 characters and were cut to 254: Caption1, "
                  "DataTagList2.",
            PromptIcon::Exclamation, PromptButtons::Ok }));

    prompts.messages.clear();
    load("Channels=1\nDataTagList1=" + std::string(254, '1') + "\n");
    EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(WorkspaceModuleTest, HostileFilesLoadWithinBounds)
{
    std::string keys = "[Workspace]\nType=CORVALOG\nChannels=24\n";
    for (int i = 0; i < 10000; ++i)
        keys += "Key" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    keys += "Caption1=" + std::string(1 << 20, 'x') + "\n";
    keys += std::string("\0\xff\xfe binary \x01\n", 14);
    ASSERT_TRUE(LoadWorkspace(ws, write("hostile.lws", keys), prompts));
    EXPECT_EQ(ws.Items.size(), 24u);
    EXPECT_EQ(ws.item(1).Caption, std::string(254, 'x'));
}

} // namespace
