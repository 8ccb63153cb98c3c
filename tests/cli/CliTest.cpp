// corvalog-cli as a script runs it: the exact standard output, the exit code (0 done, 1 the
// system reported an error, 2 wrong usage) and what goes to standard error.
#include "ChildProcess.h"
#include "CliFixture.h"

#include <fcntl.h>
#include <unistd.h>

using namespace corvalog;

namespace {

TEST_F(Cli, CommandsPrintTheirStableOutput)
{
    writeFile("v1.lws", fileText(CORVALOG_EXAMPLES "/version1.lws"));
    writeFile("bad.lws",
        "[Workspace]\nType=CORVALOG\nVersion=2\nChannels=5\nDataTagList1=<FF12>*2\n"
        "DataTagList2=(<FF12>\nDataTagList3=Foo(<1>)/<2>\nDataTagList4=1/0\nDataTagList5=10^400\n");
    const struct {
        std::string words, out;
        int exitCode = 0;
        std::string err = "";
    } cases[] = {
        { "eval (<FF12>+<0012>)/2-<3> --tag FF12=10 --tag=0012=20 --chan 3=5", "Single 10\n" },
        { "eval --1", "Integer 1\n" },
        { "eval -- --tag", "error 500: Variable is undefined: 'tag'\n", 1 },
        { "eval <1>/2 --chan 1=2,5 --comma-decimal", "Single 1,25\n" },
        { "eval <24> --chan 24=3", "Single 3\n" },
        { "eval Null", "Null\n" },
        { "rewrite (<FF12>+<0012>)/2-<3>",
            "expression=(T(65298)+T(18))/2-C(3)\nerror=TE(18) OR TE(65298) OR CE(3)\n"
            "lqi=Min(TL(18),TL(65298),CL(3))\nbatt=TB(18) OR TB(65298) OR CB(3)\n"
            "timeout=TT(18) OR TT(65298) OR CT(3)\n" },
        { "format <FF12>*2 00.000 --tag FF12=12.5", "25.000\n" },
        { "--comma-decimal format 1/4 0.00", "0,25\n" },
        { "format 1/0 0", "error 11: Division by zero\n", 1 },
        { "decode 03~FF~FF~FF~FE", "Long -2\n" },
        { "decode 0205", "String Incorrect data length to decode data type!\n" },
        { "packet --tag FF12 --value 12.5 --rssi -60 --cv 100", "T=12.5 TL=100 TB=0 TE=0\n" },
        { "packet --tag ff12 --value 1 --rssi -90 --cv 60 --batt 65535 --err -32768",
            "T=1 TL=0 TB=-1 TE=-32768\n" },
        // A 117-byte value is a raw record whose first four bytes are a Long.
        { "packet --tag B117 --rssi -60 --cv 100 --value-hex 0000002A" + std::string(226, '5'),
            "T=42 TL=100 TB=0 TE=0\n" },
        { "packet --tag FF12 --value abc --rssi -60 --cv 100", "error 13: Type mismatch\n", 1 },
        { "packet --tag FFFFFFFF --value 1 --rssi -60 --cv 100",
            "error 9: Subscript out of range\n", 1 },
        { "--comma-decimal packet --tag FF12 --value 1,5 --rssi -60 --cv 100",
            "T=1,5 TL=100 TB=0 TE=0\n" },
        { "ini set c.ini Sec Key a~value", "" },
        { "ini set c.ini Sec Blank ~", "" },
        { "ini get c.ini sec KEY def", "a value\n" },
        { "ini get c.ini Sec Blank def", "def\n" },
        { "ini get none.ini Sec Key def", "def\n" },
        { "ini set no/such/c.ini Sec Key v", "", 1, "Error: cannot write no/such/c.ini\n" },
        { "workspace show none.lws", "", 1,
            "Warning: An error occurred while trying to load workspace from none.lws\n"
            "Error: File not found\n" },
        { "workspace upgrade v1.lws up.lws", "" },
        { "workspace upgrade v1.lws no/such/up.lws", "", 1,
            "Warning: An error occurred while trying to save workspace to no/such/up.lws\n"
            "Error: Path not found\n" },
        { "check bad.lws",
            "1 ok\n2 error 1006: Expected ')'\n3 error 500: Variable is undefined: 'Foo'\n"
            "4 error 11: Division by zero\n5 ok\n",
            1 },
        { "check v1.lws", "1 ok\n2 ok\n3 ok\n4 ok\n5 ok\n6 ok\n" },
    };
    for (const auto &c : cases) {
        const ChildResult r = runChild(cli(c.words));
        EXPECT_EQ(r.out, c.out) << c.words;
        EXPECT_EQ(r.exitCode, c.exitCode) << c.words;
        EXPECT_EQ(r.err, c.err) << c.words;
    }
    EXPECT_EQ(fileText("up.lws"), fileText(CORVALOG_TEST_DATA "/version1-upgraded.lws"));
}

// Scripts read the JSON: every key in its order, two-space indents, text escaped (U+FFFD for a
// byte that is not UTF-8), numbers as the workspace holds them.
TEST_F(Cli, WorkspaceShowWritesTheWorkspaceAsJson)
{
    writeFile("w.lws",
        "[Workspace]\nType=CORVALOG\nVersion=2\nTitle=a\"b\\c\td\001e\377f\303\251\nNotes=x|y\n"
        "Channels=1\nTareValue1=1E+20\nDefault1=-7\nOverload1=-0.5\n");
    EXPECT_EQ(runChild(cli("workspace show w.lws")).out,
        "{\n  \"Version\": 2,\n  \"Title\": \"a\\\"b\\\\c\\td\\u0001e\\ufffdf\303\251\",\n"
        "  \"Notes\": \"x\\r\\ny\",\n  \"Interface\": 0,\n  \"Port\": 1,\n"
        "  \"Baudrate\": 115200,\n  \"Channels\": 1,\n  \"LogInterval\": 1000,\n"
        "  \"RFChannel\": 1,\n  \"BSAddress\": 1,\n  \"KeepAwake\": 0,\n  \"items\": [\n"
        "    {\n      \"DataTag\": 1,\n      \"DataTagList\": \"1\",\n"
        "      \"Caption\": \"Channel 1\",\n      \"Format\": \"00.000\",\n"
        "      \"TareValue\": 1E+20,\n      \"Timeout\": 3,\n      \"Default\": -7,\n"
        "      \"Underload\": -9999999,\n      \"Overload\": -0.5,\n      \"Functionality\": 0\n"
        "    }\n  ]\n}\n");
    writeFile("none.lws", "[Workspace]\nType=CORVALOG\nChannels=0\n");
    const std::string empty = runChild(cli("workspace show none.lws")).out;
    EXPECT_EQ(empty.substr(empty.find("\"KeepAwake\"")), "\"KeepAwake\": 0,\n  \"items\": []\n}\n");
}

TEST_F(Cli, WrongUseIsExitTwoWithTheReasonOnStandardError)
{
    const std::string log = "log --workspace w.lws --source sim ";
    const std::string start = log + "--virtual-time --duration 1 --start ";
    const std::string packet = "packet --tag FF12 --value 1 --rssi 1 ";
    const std::string wrong[] = { "bogus", "eval", "eval 1 --tag", "eval 1 --tag FF12",
        "eval 1 --tag FFFFF=1", "eval 1 --tag FF12=abc", "eval 1 --chan 25=1",
        "eval 1 --frobnicate", "format 1", "decode 0", "decode zz",
        "packet --value 1 --rssi 1 --cv 1", packet + "--cv 1 --tag 0012",
        "packet --tag 123456789 --value 1 --rssi 1 --cv 1", packet + "--cv 1 --value-hex 01",
        packet, packet + "--cv 32768", packet + "--cv 1 --batt 65536", packet + "--cv 1 extra",
        "ini get a b c", "ini put a b c d", "ini set x.ini Workspace Title Hello\nChannels=24",
        "ini set x.ini Work\rspace Title x", "workspace show a b", "workspace upgrade only-one",
        "check", "record --source sim", "record --out x.csv --source bogus",
        "record --out x.csv --source udp:0", "record --out x.csv --duration 0",
        "record --out x.csv --duration 2678401", "log --source sim --duration 1",
        "log --workspace w.lws --duration 1", log + "--duration 1 extra", log + "--virtual-time",
        log + "--start 2026-01-01",
        "log --workspace w.lws --source udp:9 --virtual-time --duration 1",
        start + "2026-11-15T14:03:07Z", start + "2026-11-15T14:03:07.",
        start + "2026-02-30T00:00:00", start + "2026-11-15T24:00:00", start + "2026-1-5",
        start + "0099-01-01" };
    for (const std::string &words : wrong) {
        const ChildResult r = runChild(cli(words));
        EXPECT_EQ(r.exitCode, 2) << words;
        EXPECT_EQ(r.out, "") << words;
        EXPECT_EQ(r.err.substr(r.err.find('\n') + 1), "(run 'corvalog-cli --help' for usage)\n")
            << words;
    }
    // Asked for, the usage is the output; given no command at all, it is the complaint.
    const ChildResult help = runChild(cli("--help")), none = runChild(cli(""));
    EXPECT_EQ(help.out.rfind("usage: corvalog-cli [--comma-decimal] COMMAND ARGS...\n", 0), 0u);
    EXPECT_EQ(std::pair(help.exitCode, none.exitCode), std::pair(0, 2));
    EXPECT_EQ(std::pair(none.out, none.err), std::pair(std::string(), help.out));
}

// A recording replayed into a second recording gives the same packets (hex values, flags and
// base stations too); only the times are the replay's own.
TEST_F(Cli, ARecordingReplaysToTheSamePackets)
{
    const auto packets = [](const std::string &recording) {
        std::string kept;
        std::istringstream in(recording);
        for (std::string line; std::getline(in, line);)
            kept += line.substr(line.find(',') + 1) + "\n";
        return kept;
    };
    const std::string a = writeFile("a.csv",
        "# Corvalog packet recording 1\n"
        "time_ms,base_station,data_tag,value,status,rssi,cv,batt_low,error\n"
        "20,1,FF12,12.507,0,-58,99,0,0\n40,1,0E44,100.02,0,-53,103,1,3\n"
        "60,1,B117,hex:FFFF223800000001"
            + std::string(218, '5') + ",0,-52,96,0,0\n80,2,0012,-7.5E+20,0,-90,60,0,0\n");
    const ChildResult r = runChild(cli("record --source replay:a.csv --duration 5 --out b.csv"));
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "Recorded 4 packets to b.csv\n");
    EXPECT_EQ(packets(fileText("b.csv")), packets(fileText(a)));
    EXPECT_EQ(runChild(cli("record --source replay:none.csv --out b.csv")).exitCode, 1);
}

// Worked out by hand: screen ticks every 333 ms also step the light filter (the log interval
// is above 333 ms); Load times out (Timeout 1) once two second boundaries have passed since
// its last packet at 1.1 s and shows its Default, which puts Sum in error with its own Default.
// Without --out the log goes to the standard output handed down: appended, nothing truncated.
TEST_F(Cli, TheHeadlessLoggerWritesTheLogTheProgramWould)
{
    writeFile("w.lws", fileText(CORVALOG_TEST_DATA "/three-seconds.lws"));
    writeFile("r.csv", fileText(CORVALOG_TEST_DATA "/three-seconds.csv"));
    const std::string run = "log --workspace w.lws --source replay:r.csv --virtual-time "
                            "--duration 3 --start 2026-11-15T14:03:07";
    ChildProcess::Options o;
    o.stdoutFd = ::open(writeFile("out.csv", "earlier\r\n").c_str(), O_WRONLY | O_APPEND);
    EXPECT_EQ(runChild(cli(run), o).exitCode, 0);
    ::close(o.stdoutFd);
    EXPECT_EQ(fileText("out.csv"),
        "earlier\r\nDate,Time,Elapsed mS,Load,Filtered,Sum\r\n"
        "15/11/2026,14:03:07,500,1.0,15.00,16.00\r\n"
        "15/11/2026,14:03:08,1000,2.0,19.38,21.38\r\n"
        "15/11/2026,14:03:08,1500,3.0,34.84,37.84\r\n"
        "15/11/2026,14:03:09,2000,3.0,39.36,42.36\r\n"
        "15/11/2026,14:03:09,2500,3.0,39.84,42.84\r\n"
        "15/11/2026,14:03:10,3000,99.0,39.98,-1.00\r\n");

    EXPECT_EQ(
        runChild(cli("--comma-decimal " + run + " --out c.csv")).err, "Logged 6 rows to c.csv\n");
    const std::string rows = fileText("c.csv");
    EXPECT_EQ(rows.substr(0, 42), "Date;Time;Elapsed mS;Load;Filtered;Sum\r\n15");
    EXPECT_NE(rows.find("14:03:10;3000;99,0;39,98;-1,00\r\n"), std::string::npos);
}

// The time of the row 250 ms in, as the start's fraction of a second carries it over or not.
TEST_F(Cli, TheStartIsTakenWholeWithItsFraction)
{
    const std::pair<std::string, const char *> cases[] = {
        { "2026-11-15T14:03:07.750", "14:03:08" },
        { "2026-11-15T14:03:07.700", "14:03:07" },
        { "2026-11-15~14:03", "14:03:00" },
        { "2026-11-15", "00:00:00" },
    };
    for (const auto &[start, time] : cases) {
        const ChildResult r
            = runChild(logRun(250, "--source sim --virtual-time --duration 1 --start " + start));
        EXPECT_EQ(r.exitCode, 0) << start << r.err;
        EXPECT_EQ(r.out.substr(r.out.find("\r\n") + 2 + 11, 8), time) << start;
    }
}

} // namespace
