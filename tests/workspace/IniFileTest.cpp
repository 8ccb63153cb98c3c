#include "workspace/IniFile.h"

#include "FileText.h"
#include "workspace/INIFileModule.h"

#include <QTemporaryDir>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace corvalog;

namespace {

class IniFileTest : public ::testing::Test
{
protected:
    std::string path(const std::string &name) const { return (m_dir / name).string(); }
    std::size_t entries() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(m_dir), {}));
    }

    QTemporaryDir m_tmp;
    fs::path m_dir = m_tmp.path().toStdString();
};

TEST(FileErrors, MapErrnoToScriptErrors)
{
    struct Case {
        int errnoValue;
        bool folder;
        int number;
        const char *description;
    };
    const Case cases[] = {
        { ENOENT, false, 53, "File not found" },
        { ENOENT, true, 76, "Path not found" },
        { ENOTDIR, false, 76, "Path not found" },
        { EACCES, false, 70, "Permission denied" },
        { EISDIR, false, 75, "Path/File access error" },
        { EEXIST, true, 75, "Path/File access error" },
        { EEXIST, false, 58, "File already exists" },
    };
    for (const Case &c : cases) {
        const FileError e = fileErrorFromErrno(c.errnoValue, c.folder);
        EXPECT_EQ(e.number, c.number) << c.errnoValue;
        EXPECT_EQ(e.description, c.description) << c.errnoValue;
    }
}

TEST_F(IniFileTest, LoadFailuresNameTheCause)
{
    fs::create_directory(path("folder"));
    const std::pair<std::string, int> cases[] = {
        { path("missing.ini"), 53 },
        { path("nofolder/x.ini"), 76 },
        { path("folder"), 75 },
    };
    for (const auto &[file, number] : cases) {
        FileError error;
        EXPECT_FALSE(loadIniFile(file, &error)) << file;
        EXPECT_EQ(error.number, number) << file;
    }
}

TEST_F(IniFileTest, SaveReplacesTheFileAndKeepsItsMode)
{
    const std::string file = writeFile(path("s.ini"), "[a]\nk=1\n");
    ::chmod(file.c_str(), 0640);
    IniDocument doc = *loadIniFile(file);
    doc.setValue("a", "k", "2");
    ASSERT_TRUE(saveIniFile(file, doc));
    EXPECT_EQ(fileText(file), "[a]\nk=2\n");
    struct stat st;
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_EQ(entries(), 1u); // no temporary file left

    // Through a link the linked file is replaced and the link stays.
    fs::create_symlink(file, path("link.ini"));
    doc.setValue("a", "k", "3");
    ASSERT_TRUE(saveIniFile(path("link.ini"), doc));
    EXPECT_TRUE(fs::is_symlink(path("link.ini")));
    EXPECT_EQ(fileText(file), "[a]\nk=3\n");
}

TEST_F(IniFileTest, FailedSaveLeavesEverythingAsItWas)
{
    writeFile(path("file"), "old");
    fs::create_directory(path("folder"));
    writeFile(path("folder/inside"), "kept");
    const IniDocument doc = IniDocument::parse("[a]\nk=1\n");
    const std::pair<std::string, int> cases[] = {
        { path("folder"), 75 },
        { path("nofolder/x.ini"), 76 },
        { path("file/x.ini"), 76 },
        { "", 75 },
    };
    for (const auto &[file, number] : cases) {
        FileError error;
        EXPECT_FALSE(saveIniFile(file, doc, &error)) << file;
        EXPECT_EQ(error.number, number) << file;
    }
    EXPECT_EQ(fileText(path("file")), "old");
    EXPECT_EQ(fileText(path("folder/inside")), "kept");
    EXPECT_EQ(entries(), 2u);

    if (::geteuid() != 0) { // root may write anything
        const std::string readOnly = writeFile(path("ro.ini"), "[a]\nk=0\n");
        ::chmod(readOnly.c_str(), 0444);
        FileError error;
        EXPECT_FALSE(saveIniFile(readOnly, doc, &error));
        EXPECT_EQ(error.number, 70);
        EXPECT_EQ(fileText(readOnly), "[a]\nk=0\n");
    }
}

TEST_F(IniFileTest, ReadIniFollowsTheBufferRules)
{
    const std::string long300(300, 'v');
    const std::string file = writeFile(path("r.ini"),
        "[S]\nempty=\nnull=*NULL*\nlower=*null*\nlong=" + long300 + "\nq=\"*NULL*\"\n");
    struct Case {
        const char *key;
        std::string fallback;
        std::string expected;
    };
    const Case cases[] = {
        { "empty", "dflt ", "dflt " }, // count 0: the Default itself
        { "null", "d", "" },
        { "lower", "d", "*null*" },
        { "q", "d", "" },
        { "long", "d", std::string(254, 'v') },
        { "missing", "dflt  ", "dflt" }, // the reader copies the Default without trailing spaces
        { "missing", "*NULL*", "" },
        { "missing", long300, std::string(254, 'v') },
    };
    for (const Case &c : cases)
        EXPECT_EQ(ReadINI(file, "s", c.key, c.fallback), c.expected) << c.key;
    EXPECT_EQ(ReadINI(path("none.ini"), "s", "k", "d"), "d");
}

TEST_F(IniFileTest, WriteIniCreatesEditsAndIsSeenByReadIni)
{
    const std::string file = path("w.ini");
    EXPECT_TRUE(WriteINI(file, "App", "key", "one"));
    EXPECT_TRUE(WriteINI(file, "App", "other", "two"));
    EXPECT_TRUE(WriteINI(file, "app", "KEY", "three"));
    EXPECT_EQ(fileText(file), "[App]\nkey=three\nother=two\n");
    EXPECT_EQ(ReadINI(file, "APP", "key", "d"), "three");

    // Rewritten behind the cache's back with the same size, then removed.
    writeFile(file, "[App]\nkey=THREE\nother=two\n");
    EXPECT_EQ(ReadINI(file, "App", "key", "d"), "THREE");
    fs::remove(file);
    EXPECT_EQ(ReadINI(file, "App", "key", "d"), "d");

    EXPECT_FALSE(WriteINI(path("nofolder/w.ini"), "a", "k", "v"));
    EXPECT_FALSE(fs::exists(path("nofolder")));
    fs::create_directory(path("dir.ini"));
    EXPECT_FALSE(WriteINI(path("dir.ini"), "a", "k", "v"));
}

// Every byte the edit does not touch stays, those before the first section too.
TEST_F(IniFileTest, WriteIniKeepsWhatItDoesNotChange)
{
    const struct {
        std::string before;
        std::string after; // App.k set to "v"
    } cases[] = {
        { "\xEF\xBB\xBFjunk\n[App]\nk=1\n", "\xEF\xBB\xBFjunk\n[App]\nk=v\n" },
        { "free text\r\n; note\r\n\r\n[App]\r\nk=1\r\n",
            "free text\r\n; note\r\n\r\n[App]\r\nk=v\r\n" },
        { "k=0\nj\n[App]\n", "k=0\nj\n[App]\nk=v\n" },
        { std::string("\0\x01"
                      "bin\r[App]",
              11),
            std::string("\0\x01"
                        "bin\r[App]\rk=v\r",
                16) },
        { "only text", "only text\n[App]\nk=v\n" },
    };
    const std::string file = path("keep.ini");
    for (const auto &c : cases) {
        writeFile(file, c.before);
        EXPECT_TRUE(WriteINI(file, "App", "k", "v"));
        EXPECT_EQ(fileText(file), c.after);
    }
}

// A line break would end the line and let the rest read as keys of its own.
TEST_F(IniFileTest, WriteIniRefusesLineBreaks)
{
    const std::string file = writeFile(path("lf.ini"), "[Workspace]\nChannels=4\n");
    const struct {
        const char *section;
        const char *key;
        const char *value;
    } cases[] = {
        { "Workspace", "Title", "Hello\nChannels=24" },
        { "Workspace", "Title", "a\rb" },
        { "Workspace", "Ti\ntle", "x" },
        { "Work\r\nspace", "Title", "x" },
    };
    for (const auto &c : cases)
        EXPECT_FALSE(WriteINI(file, c.section, c.key, c.value)) << c.value;
    EXPECT_EQ(fileText(file), "[Workspace]\nChannels=4\n");
}

// A save killed before its rename leaves its temporary file; the next save of the same file
// removes it, but never one of a save still running.
TEST_F(IniFileTest, TemporariesOfKilledSavesAreRemovedByTheNextSave)
{
    const std::string file = writeFile(path("t.ini"), "[a]\nk=1\n");
    const pid_t gone = ::fork();
    if (gone == 0)
        ::_exit(0);
    ::waitpid(gone, nullptr, 0);
    const std::string abandoned = path(".t.ini." + std::to_string(gone) + ".3.tmp");
    const std::string running = path(".t.ini." + std::to_string(::getppid()) + ".1.tmp");
    const std::string other = path(".u.ini." + std::to_string(gone) + ".1.tmp");
    for (const std::string &f : { abandoned, running, other })
        writeFile(f, "[a]\nk=");
    EXPECT_TRUE(WriteINI(file, "a", "k", "2"));
    EXPECT_FALSE(fs::exists(abandoned));
    EXPECT_TRUE(fs::exists(running));
    EXPECT_TRUE(fs::exists(other));
    EXPECT_EQ(fileText(file), "[a]\nk=2\n");
}

} // namespace
