#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>

namespace {

struct CliRun {
    std::string out;
    int exitCode;
};

// Runs corvalog-cli with a shell-quoted argument string; stdout only.
CliRun cli(const std::string &arguments)
{
    const std::string command = std::string(CORVALOG_CLI_PATH) + " " + arguments + " 2>/dev/null";
    FILE *pipe = popen(command.c_str(), "r");
    CliRun r { {}, -1 };
    if (!pipe)
        return r;
    std::array<char, 4096> buf {};
    while (std::fgets(buf.data(), static_cast<int>(buf.size()), pipe))
        r.out += buf.data();
    const int status = pclose(pipe);
    r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}

TEST(Cli, CommandsPrintTheirStableOutput)
{
    const struct {
        const char *args;
        const char *out;
        int exitCode;
    } cases[] = {
        { "eval '(<FF12>+<0012>)/2-<3>' --tag FF12=10 --tag 0012=20 --chan 3=5", "Single 10\n", 0 },
        { "eval '<ff12>'", "error 1023: Expected expression\n", 1 },
        { "eval '1/0'", "error 11: Division by zero\n", 1 },
        { "eval --1", "Integer 1\n", 0 },
        { "eval -- --tag", "error 500: Variable is undefined: 'tag'\n", 0 + 1 },
        { "eval '<1>/2' --chan 1=2,5 --comma-decimal", "Single 1,25\n", 0 },
        { "rewrite '(<FF12>+<0012>)/2-<3>'",
            "expression=(T(65298)+T(18))/2-C(3)\nerror=TE(18) OR TE(65298) OR CE(3)\n"
            "lqi=Min(TL(18),TL(65298),CL(3))\nbatt=TB(18) OR TB(65298) OR CB(3)\n"
            "timeout=TT(18) OR TT(65298) OR CT(3)\n",
            0 },
        { "rewrite '2*PI'", "expression=2*PI\nerror=\nlqi=\nbatt=\ntimeout=\n", 0 },
        { "decode 03FFFFFFFE", "Long -2\n", 0 },
        { "decode '01 2A'", "Integer 42\n", 0 },
        { "decode 0205", "String Incorrect data length to decode data type!\n", 0 },
        { "packet --tag FF12 --value 12.5 --rssi -60 --cv 100", "T=12.5 TL=100 TB=0 TE=0\n", 0 },
        { "packet --tag ff12 --value 1 --rssi -90 --cv 60 --batt 1 --err 3", "T=1 TL=0 TB=1 TE=3\n",
            0 },
        { "packet --tag 10000 --value 1 --rssi -60 --cv 100", "error 9: Subscript out of range\n",
            1 },
    };
    for (const auto &c : cases) {
        const CliRun r = cli(c.args);
        EXPECT_EQ(r.out, c.out) << c.args;
        EXPECT_EQ(r.exitCode, c.exitCode) << c.args;
    }
}

TEST(Cli, FormatUsesTheNumberFormat)
{
    EXPECT_EQ(cli("format '<FF12>*2' '00.000' --tag FF12=12.5").out, "25.000\n");
    EXPECT_EQ(cli("--comma-decimal format '1/4' '0.00'").out, "0,25\n");
}

TEST(Cli, WorkspacesAndSettings)
{
    const std::string examples = CORVALOG_EXAMPLES;
    const std::string dir = ::testing::TempDir() + "corvalog-cli-test";
    std::system(("rm -rf '" + dir + "' && mkdir -p '" + dir + "'").c_str());

    EXPECT_EQ(cli("ini set '" + dir + "/c.ini' Sec Key 'a value'").exitCode, 0);
    EXPECT_EQ(cli("ini get '" + dir + "/c.ini' sec KEY def").out, "a value\n");
    EXPECT_EQ(cli("ini get '" + dir + "/c.ini' Sec Other def").out, "def\n");
    EXPECT_EQ(cli("ini set '" + dir + "/no/such/c.ini' Sec Key v").exitCode, 1);

    const CliRun shown = cli("workspace show '" + examples + "/demo.lws'");
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_EQ(shown.out.rfind("{\n  \"Version\": 2,\n  \"Title\": \"Corvalog demo\",", 0), 0u)
        << shown.out;
    EXPECT_NE(shown.out.find("\"DataTagList\": \"<FF12>\""), std::string::npos);

    EXPECT_EQ(
        cli("workspace upgrade '" + examples + "/version1.lws' '" + dir + "/up.lws'").exitCode, 0);
    EXPECT_NE(
        cli("workspace show '" + dir + "/up.lws'").out.find("\"<1>+<2>+<3>\""), std::string::npos);
    EXPECT_EQ(cli("workspace show '" + dir + "/missing.lws'").exitCode, 1);

    std::ofstream(dir + "/bad.lws")
        << "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=5\n"
        << "DataTagList1=<FF12>*2\nDataTagList2=(<FF12>\nDataTagList3=Foo(<1>)/<2>\n"
        << "DataTagList4=1/0\nDataTagList5=10^400\n";
    const CliRun checked = cli("check '" + dir + "/bad.lws'");
    EXPECT_EQ(checked.out,
        "1 ok\n2 error 1006: Expected ')'\n3 error 500: Variable is undefined: 'Foo'\n"
        "4 error 11: Division by zero\n5 ok\n");
    EXPECT_EQ(checked.exitCode, 1);
    EXPECT_EQ(cli("check '" + examples + "/every-feature.lws'").exitCode, 0);
}

// The packets of a recording replayed into a second recording, without their times.
std::string packetsOf(const std::string &file)
{
    std::ifstream in(file);
    std::string line, packets;
    while (std::getline(in, line)) {
        if (!line.empty() && line[0] != '#' && line.rfind("time_ms", 0) != 0)
            packets += line.substr(line.find(',') + 1) + "\n";
    }
    return packets;
}

TEST(Cli, ARecordingReplaysToTheSamePackets)
{
    const std::string dir = ::testing::TempDir();
    const std::string a = dir + "corvalog-a.csv", b = dir + "corvalog-b.csv";
    ASSERT_EQ(cli("record --source sim:7 --duration 1 --out '" + a + "'").exitCode, 0);
    ASSERT_EQ(cli("record --source replay:'" + a + "' --duration 5 --out '" + b + "'").exitCode, 0);
    const std::string packets = packetsOf(a);
    EXPECT_GT(std::count(packets.begin(), packets.end(), '\n'), 50);
    EXPECT_EQ(packetsOf(b), packets);
    EXPECT_EQ(
        cli("record --source replay:/no/such.csv --duration 1 --out '" + b + "'").exitCode, 1);
}

// Worked out by hand: screen ticks every 333 ms also step the light filter (the log interval
// is above 333 ms); Load times out (Timeout 1) once two second boundaries have passed since
// its last packet at 1.1 s and shows its Default, which puts Sum in error with its own Default.
TEST(Cli, TheHeadlessLoggerWritesTheLogTheProgramWould)
{
    const std::string data = CORVALOG_TEST_DATA;
    const std::string run = "log --workspace " + data + "/three-seconds.lws --source replay:" + data
        + "/three-seconds.csv --virtual-time --duration 3 --start 2026-11-15T14:03:07";
    const char *const expected = "Date,Time,Elapsed mS,Load,Filtered,Sum\r\n"
                                 "15/11/2026,14:03:07,500,1.0,15.00,16.00\r\n"
                                 "15/11/2026,14:03:08,1000,2.0,19.38,21.38\r\n"
                                 "15/11/2026,14:03:08,1500,3.0,34.84,37.84\r\n"
                                 "15/11/2026,14:03:09,2000,3.0,39.36,42.36\r\n"
                                 "15/11/2026,14:03:09,2500,3.0,39.84,42.84\r\n"
                                 "15/11/2026,14:03:10,3000,99.0,39.98,-1.00\r\n";
    const CliRun r = cli(run);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out, expected);

    const CliRun comma = cli("--comma-decimal " + run);
    EXPECT_EQ(comma.out.substr(0, 42), "Date;Time;Elapsed mS;Load;Filtered;Sum\r\n15");
    EXPECT_NE(comma.out.find("14:03:10;3000;99,0;39,98;-1,00\r\n"), std::string::npos);
}

TEST(Cli, WrongUseIsExitTwoWithNothingOnStdout)
{
    const char *const wrong[] = {
        "",
        "bogus",
        "eval",
        "eval 1 2",
        "eval 1 --tag FF12",
        "eval 1 --tag FFFFF=1",
        "eval 1 --tag FF12=abc",
        "eval 1 --chan 25=1",
        "eval 1 --frobnicate",
        "decode 0",
        "decode zz",
        "packet --tag FF12 --rssi 1 --cv 1",
        "packet --tag FF12 --value 1 --value-hex 01 --rssi 1 --cv 1",
        "packet --tag FF12 --value 1 --rssi 99999 --cv 1",
        "packet --tag --value 1 --rssi 1 --cv 1",
        "ini",
        "ini put a b c d",
        "ini set x.ini Workspace Title \"$(printf 'Hello\\nChannels=24')\"",
        "ini set x.ini \"$(printf 'Work\\rspace')\" Title x",
        "workspace upgrade only-one",
        "record --out x.csv --source bogus",
        "record --out x.csv --duration 0",
        "record --out x.csv --source udp:0",
        "log --source sim --duration 1",
        "log --workspace w.lws --duration 1",
        "log --workspace w.lws --source udp:9 --virtual-time --duration 1",
        "log --workspace w.lws --source sim --virtual-time",
        "log --workspace w.lws --source sim --start 2026-01-01",
        "log --workspace w.lws --source sim --virtual-time --duration 1 --start yesterday",
    };
    for (const char *args : wrong) {
        const CliRun r = cli(args);
        EXPECT_EQ(r.exitCode, 2) << args;
        EXPECT_EQ(r.out, "") << args;
    }
}

} // namespace
