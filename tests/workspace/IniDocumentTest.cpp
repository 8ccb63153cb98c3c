#include "workspace/IniDocument.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>

using corvalog::IniDocument;
using namespace std::string_literals;

namespace {

struct ReadCase {
    const char *name;
    std::string bytes;
    const char *section;
    const char *key;
    std::string expected;
};

TEST(IniDocument, ReadsValuesAsThePlatformDoes)
{
    const ReadCase cases[] = {
        { "CR LF", "[a]\r\nk=v\r\n", "a", "k", "v" },
        { "lone CR", "[a]\rk=v\rj=w", "a", "j", "w" },
        { "case", "[Sec]\nKey=v", "sEC", "kEY", "v" },
        { "blanks trimmed", " \t[ Sec ] \n  my key\t=  v w \t\n", " Sec", "my key ", "v w" },
        { "double quotes", "[a]\nk=\"v2\"", "a", "k", "v2" },
        { "quotes keep inner blanks", "[a]\nk=\" x \"", "a", "k", " x " },
        { "unmatched quote", "[a]\nk=\"v", "a", "k", "\"v" },
        { "first section wins", "[a]\nk=1\n[A]\nk=2\nj=3", "a", "k", "1" },
        { "repeated section is never read", "[a]\nk=1\n[A]\nj=3", "a", "j", "" },
        { "first key wins", "[a]\nk=1\nK=2", "a", "k", "1" },
        { "before any section", "k=0\n[a]\nk=1", "", "k", "" },
        { "line without =", "[a]\nk\nk=2", "a", "k", "2" },
        { "[ without ] stays in its section", "[a]\nk=1\n[b\nk=2\nj=3", "a", "j", "3" },
        { "first = splits", "[a]\nk = b = c", "a", "k", "b = c" },
        { "empty value", "[a]\nk=\nk=2", "a", "k", "" },
        { "NUL ends the value", "[a]\nk=ab\0cd"s, "a", "k", "ab" },
        { "binary", "\xff\0\n[\x01]\n\x80=\x81"s, "\x01", "\x80", "\x81" },
    };
    for (const ReadCase &c : cases)
        EXPECT_EQ(IniDocument::parse(c.bytes).value(c.section, c.key), c.expected) << c.name;
}

TEST(IniDocument, CutsValuesToTheBuffer)
{
    const std::string long300(300, 'x');
    const IniDocument doc
        = IniDocument::parse("[a]\nk=" + long300 + "\nq=\"" + long300 + "\"\ns=abc");
    EXPECT_EQ(doc.value("a", "k"), std::string(254, 'x'));
    EXPECT_EQ(doc.value("a", "q"), std::string(254, 'x'));
    EXPECT_EQ(doc.value("a", "s", 3), "ab");
    EXPECT_EQ(doc.value("a", "s", 0), "");
}

struct WriteCase {
    const char *name;
    std::string before;
    const char *section;
    const char *key;
    const char *value;
    std::string after;
};

TEST(IniDocument, EditsInPlaceAndAddsWhereThePlatformDoes)
{
    const WriteCase cases[] = {
        { "replace keeps the rest", "; top\r\n[a]\r\n; c\r\nK = 1\r\n", "A", "k", "2",
            "; top\r\n[a]\r\n; c\r\nK =2\r\n" },
        { "each line keeps its end", "[a]\r\nk=1\nj=2\r\n", "a", "k", "3", "[a]\r\nk=3\nj=2\r\n" },
        { "new key before blank lines", "[a]\nk=1\n\n[b]\nx=1\n", "a", "j", "2",
            "[a]\nk=1\nj=2\n\n[b]\nx=1\n" },
        { "new key before trailing comment", "[a]\nk=1\n; b follows\n[b]\n", "a", "j", "2",
            "[a]\nk=1\nj=2\n; b follows\n[b]\n" },
        { "new key in empty section", "[a]\n[b]\n", "a", "k", "1", "[a]\nk=1\n[b]\n" },
        { "new section at end", "[a]\r\nk=1\r\n", "b", "k", "2", "[a]\r\nk=1\r\n[b]\r\nk=2\r\n" },
        { "new section after blank lines", "[a]\nk=1\n\n", "b", "k", "2",
            "[a]\nk=1\n\n[b]\nk=2\n" },
        { "append to last line without break", "[a]\nk=1", "a", "j", "2", "[a]\nk=1\nj=2\n" },
        { "replace last line without break", "[a]\nk=1", "a", "k", "2", "[a]\nk=2" },
        { "empty document", "", "App", "key", "string", "[App]\nkey=string\n" },
        { "repeated section", "[a]\nk=1\n[A]\nj=1\n", "a", "j", "2", "[a]\nk=1\nj=2\n[A]\nj=1\n" },
        { "after a line without =", "[a]\nk=1\nfree\n\n; c\n[b]\n", "a", "j", "2",
            "[a]\nk=1\nfree\nj=2\n\n; c\n[b]\n" },
        { "after a repeated key", "[a]\nk=1\n; c\nK=2\n\n", "a", "j", "3",
            "[a]\nk=1\n; c\nK=2\nj=3\n\n" },
        { "last line of a section ends the file", "x\n[a]\nk=1\nfree", "a", "j", "2",
            "x\n[a]\nk=1\nfree\nj=2\n" },
        { "text before the first section stays", "free\r\n\r\n[a]\r\n", "a", "j", "2",
            "free\r\n\r\n[a]\r\nj=2\r\n" },
    };
    for (const WriteCase &c : cases) {
        IniDocument doc = IniDocument::parse(c.before);
        doc.setValue(c.section, c.key, c.value);
        EXPECT_EQ(doc.bytes(), c.after) << c.name;
        EXPECT_EQ(doc.value(c.section, c.key), c.value) << c.name;
    }
}

TEST(IniDocument, KeepsEveryByteWhenNothingChanges)
{
    for (const std::string &bytes :
        { "a\r\n\r\r\n[b]\n\nk=\"\"\r"s, "\n\n\n"s, "[x"s, "\0\r\0\n"s })
        EXPECT_EQ(IniDocument::parse(bytes).bytes(), bytes);
}

TEST(IniDocument, ManyEditsStayConsistent)
{
    IniDocument doc = IniDocument::parse("[s]\r\nfirst=1\r\n\r\n[t]\r\n");
    for (int i = 0; i < 10000; ++i)
        doc.setValue(i % 2 ? "s" : "T", "key" + std::to_string(i), std::to_string(i));
    // Rewriting one key over and over leaves its old text behind until it is reclaimed.
    const std::string filler(200, 'f');
    for (int i = 0; i < 20000; ++i)
        doc.setValue("s", "key1", filler + std::to_string(i));

    const IniDocument reread = IniDocument::parse(doc.bytes());
    for (int i = 0; i < 10000; i += 97) {
        const std::string expected = std::to_string(i);
        EXPECT_EQ(doc.value(i % 2 ? "S" : "t", "KEY" + std::to_string(i)), expected);
        EXPECT_EQ(reread.value(i % 2 ? "S" : "t", "KEY" + std::to_string(i)), expected);
    }
    EXPECT_EQ(reread.value("s", "key1"), filler + "19999");
    EXPECT_EQ(reread.bytes(), doc.bytes());
    EXPECT_NE(doc.bytes().find("key9999=9999\r\n\r\n[t]\r\nkey0=0\r\n"), std::string::npos);
}

TEST(IniDocument, HostileInputsStayLinear)
{
    const auto start = std::chrono::steady_clock::now();
    // Lone CRs, a 1 MB line, a 1 MB header and 10,000 keys of one name.
    const std::string crs(4 << 20, '\r');
    EXPECT_EQ(IniDocument::parse(crs).bytes(), crs);
    const std::string longLine
        = "[a]\nk=" + std::string(1 << 20, 'v') + "\n[" + std::string(1 << 20, ']');
    EXPECT_EQ(IniDocument::parse(longLine).value("a", "k"), std::string(254, 'v'));
    std::string same = "[a]\n";
    for (int i = 0; i < 10000; ++i)
        same += "k=" + std::to_string(i) + "\n";
    IniDocument doc = IniDocument::parse(same);
    for (int i = 0; i < 10000; ++i)
        doc.setValue("a", "k", "x");
    EXPECT_EQ(doc.value("a", "k"), "x");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

} // namespace
