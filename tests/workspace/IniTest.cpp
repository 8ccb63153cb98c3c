#include "FileText.h"
#include "workspace/INIFileModule.h"
#include "workspace/IniDocument.h"
#include "workspace/IniFile.h"

#include <QTemporaryDir>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace corvalog;
using namespace std::string_literals;

namespace {

// In order: CR LF, LF and lone CR breaks; names match in any case and with blanks trimmed; one
// pair of matching quotes is removed; a repeated section is never read; nothing before the
// first section is a key, nor a line without "="; a "[" line without "]" stays in its section;
// the first "=" splits; the first key wins, empty or not; a NUL ends a value; bytes are bytes.
// Each document also comes back byte for byte when nothing is edited.
TEST(IniDocument, ReadsValuesAsThePlatformDoes)
{
    const struct {
        std::string bytes;
        const char *section, *key;
        std::string expected;
    } cases[] = {
        { "a\r\n\r\r\n[b]\n\nk=\"\"\rj=w", "b", "j", "w" },
        { "[Sec]\nKey=v", "sEC", "kEY", "v" },
        { " \t[ Sec ] \n  my key\t=  v w \t\n", " Sec", "my key ", "v w" },
        { "[a]\nk=\" x \"", "a", "k", " x " },
        { "[a]\nk=\"v'", "a", "k", "\"v'" },
        { "[a]\nk=1\n[A]\nk=2\nj=3", "a", "j", "" },
        { "k=0\n[a]\nk=1", "", "k", "" },
        { "[a]\nk\nk=2", "a", "k", "2" },
        { "[a]\nk=1\n[b\nk=2\nj=3", "a", "j", "3" },
        { "[a]\nk = b = c", "a", "k", "b = c" },
        { "[a]\nk=\nK=2", "a", "k", "" },
        { "[a]\nk=ab\0cd"s, "a", "k", "ab" },
        { "\xff\0\n[\x01]\n\x80=\x81"s, "\x01", "\x80", "\x81" },
    };
    for (const auto &c : cases) {
        const IniDocument doc = IniDocument::parse(c.bytes);
        EXPECT_EQ(doc.value(c.section, c.key), c.expected) << c.bytes;
        EXPECT_EQ(doc.bytes(), c.bytes) << c.bytes;
    }
    EXPECT_EQ(IniDocument::parse("[a]\nk=abc").value("a", "k", 3), "ab");
    EXPECT_EQ(IniDocument::parse("[a]\nk=abc").value("a", "k", 0), "");
}

// In order: a value is replaced in place; each line keeps its own break; a new key goes after
// the section's last line that is neither blank nor a comment, a new section at the very end;
// a last line without a break gets one before a new key but not when replaced; a new file ends
// its lines with LF; a repeated section is never written; a line without "=" counts as the
// section's; text before the first section stays.
TEST(IniDocument, EditsInPlaceAndAddsWhereThePlatformDoes)
{
    const struct {
        std::string before;
        const char *section, *key, *value;
        std::string after;
    } cases[] = {
        { "; top\r\n[a]\r\n; c\r\nK = 1\r\n", "A", "k", "2", "; top\r\n[a]\r\n; c\r\nK =2\r\n" },
        { "[a]\r\nk=1\nj=2\r\n", "a", "k", "3", "[a]\r\nk=3\nj=2\r\n" },
        { "[a]\nk=1\n\n; b\n[b]\nx=1\n", "a", "j", "2", "[a]\nk=1\nj=2\n\n; b\n[b]\nx=1\n" },
        { "[a]\r\nk=1\r\n\r\n", "b", "k", "2", "[a]\r\nk=1\r\n\r\n[b]\r\nk=2\r\n" },
        { "[a]\nk=1", "a", "j", "2", "[a]\nk=1\nj=2\n" },
        { "[a]\nk=1", "a", "k", "2", "[a]\nk=2" },
        { "", "App", "key", "string", "[App]\nkey=string\n" },
        { "[a]\nk=1\n[A]\nj=1\n", "a", "j", "2", "[a]\nk=1\nj=2\n[A]\nj=1\n" },
        { "[a]\nk=1\nfree\n\n; c\n[b]\n", "a", "j", "2", "[a]\nk=1\nfree\nj=2\n\n; c\n[b]\n" },
        { "free\r\n\r\n[a]\r\n", "a", "j", "2", "free\r\n\r\n[a]\r\nj=2\r\n" },
    };
    for (const auto &c : cases) {
        IniDocument doc = IniDocument::parse(c.before);
        doc.setValue(c.section, c.key, c.value);
        EXPECT_EQ(doc.bytes(), c.after) << c.before;
        EXPECT_EQ(doc.value(c.section, c.key), c.value) << c.before;
    }
}

// Rewriting one key over and over leaves its old text behind until it is reclaimed.
TEST(IniDocument, ManyEditsStayConsistent)
{
    IniDocument doc = IniDocument::parse("[s]\r\nfirst=1\r\n\r\n[t]\r\n");
    for (int i = 0; i < 10000; ++i)
        doc.setValue(i % 2 ? "s" : "T", "key" + std::to_string(i), std::to_string(i));
    for (int i = 0; i < 20000; ++i)
        doc.setValue("s", "key1", std::string(200, 'f') + std::to_string(i));
    const IniDocument reread = IniDocument::parse(doc.bytes());
    for (int i = 0; i < 10000; i += 97)
        EXPECT_EQ(reread.value(i % 2 ? "S" : "t", "KEY" + std::to_string(i)), std::to_string(i));
    EXPECT_EQ(doc.value("s", "key1"), std::string(200, 'f') + "19999");
    EXPECT_NE(doc.bytes().find("key9999=9999\r\n\r\n[t]\r\nkey0=0\r\n"), std::string::npos);
}

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

// A failed load or save names the cause with the script error the program reports, and a
// failed save leaves every file as it was.
TEST_F(IniFileTest, FailuresNameTheCauseAndChangeNothing)
{
    writeFile(path("file"), "");
    fs::create_directory(path("folder"));
    ::mkfifo(path("fifo.ini").c_str(), 0600); // refused, not waited on
    const std::string readOnly = writeFile(path("ro.ini"), "[a]\nk=0\n");
    ::chmod(readOnly.c_str(), 0444);
    const bool root = ::geteuid() == 0; // root may write anything
    const std::tuple<bool, std::string, int> cases[] = {
        { false, path("missing.ini"), 53 },
        { false, path("nofolder/x.ini"), 76 },
        { false, path("fifo.ini"), 75 },
        { true, path("folder"), 75 },
        { true, path("file/x.ini"), 76 },
        { true, "", 75 },
        { true, root ? "" : readOnly, root ? 75 : 70 },
    };
    const IniDocument doc = IniDocument::parse("[a]\nk=1\n");
    for (const auto &[save, file, number] : cases) {
        FileError error;
        EXPECT_FALSE(save ? saveIniFile(file, doc, &error) : bool(loadIniFile(file, &error)))
            << file;
        EXPECT_EQ(error.number, number) << file;
    }
    EXPECT_EQ(fileText(readOnly), "[a]\nk=0\n");
    EXPECT_EQ(entries(), 4u);
}

// A save killed before its rename leaves its temporary file; the next save of the same file
// removes it, but never one of a save still running.
TEST_F(IniFileTest, SaveReplacesTheFileKeepingItsModeAndClearsKilledSavesTemporaries)
{
    const std::string file = writeFile(path("s.ini"), "[a]\nk=1\n");
    ::chmod(file.c_str(), 0640);
    const std::string running = path(".s.ini." + std::to_string(::getppid()) + ".1.tmp");
    const std::string other = path(".u.ini.2147483646.1.tmp");
    writeFile(path(".s.ini.2147483646.3.tmp"), "[a]\nk="); // no such process
    writeFile(running, "[a]\nk=");
    writeFile(other, "[a]\nk=");
    IniDocument doc = *loadIniFile(file);
    doc.setValue("a", "k", "2");
    ASSERT_TRUE(saveIniFile(file, doc));
    EXPECT_EQ(fileText(file), "[a]\nk=2\n");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    // The file, the running save's temporary and another file's: nothing of this save's.
    EXPECT_EQ(entries(), 3u);
    EXPECT_TRUE(fs::exists(running) && fs::exists(other));

    // Through a link the linked file is replaced and the link stays.
    fs::create_symlink(file, path("link.ini"));
    doc.setValue("a", "k", "3");
    ASSERT_TRUE(saveIniFile(path("link.ini"), doc));
    EXPECT_TRUE(fs::is_symlink(path("link.ini")));
    EXPECT_EQ(fileText(file), "[a]\nk=3\n");
}

TEST_F(IniFileTest, ReadIniFollowsTheBufferRules)
{
    const std::string file
        = writeFile(path("r.ini"), "[S]\nempty=\nnull=*NULL*\nlower=*null*\nq=\"*NULL*\"\n");
    const std::tuple<const char *, std::string, std::string> cases[] = {
        { "empty", "dflt ", "dflt " }, // count 0: the Default itself
        { "null", "d", "" },
        { "lower", "d", "*null*" },
        { "q", "d", "" },
        { "missing", "dflt  ", "dflt" }, // the reader copies the Default without trailing spaces
        { "missing", "*NULL*", "" },
        { "missing", std::string(300, 'v'), std::string(254, 'v') },
    };
    for (const auto &[key, fallback, expected] : cases)
        EXPECT_EQ(ReadINI(file, "s", key, fallback), expected) << key;
}

TEST_F(IniFileTest, WriteIniEditsWhatReadIniThenSees)
{
    const std::string file = path("w.ini");
    EXPECT_TRUE(WriteINI(file, "App", "key", "one"));
    EXPECT_TRUE(WriteINI(file, "app", "KEY", "three"));
    EXPECT_EQ(fileText(file), "[App]\nkey=three\n");
    EXPECT_EQ(ReadINI(file, "APP", "key", "d"), "three");

    // Rewritten behind the cache's back with the same size (and at the end removed).
    writeFile(file, "[App]\nkey=THREE\n");
    EXPECT_EQ(ReadINI(file, "App", "key", "d"), "THREE");

    // A line break would end the line and let the rest read as keys of its own.
    for (const auto &[section, key, value] : { std::tuple("Workspace", "Title", "Hi\nChannels=24"),
             std::tuple("Workspace", "Ti\ntle", "x"), std::tuple("Work\r\nspace", "Title", "x") })
        EXPECT_FALSE(WriteINI(file, section, key, value)) << value;
    EXPECT_EQ(fileText(file), "[App]\nkey=THREE\n");
    fs::remove(file);
    EXPECT_EQ(ReadINI(file, "App", "key", "d"), "d");
}

} // namespace
