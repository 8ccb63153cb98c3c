// Brokers that want a password, or TLS, as a plant's broker does.
#include "Broker.h"
#include "ChildProcess.h"
#include "FileText.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

const std::string kCli = CORVALOG_CLI_PATH;

// Two seconds of the simulator relayed; the relay's output.
ChildResult relaySim(
    const QTemporaryDir &dir, const std::string &to, std::vector<std::string> extra)
{
    std::vector<std::string> words { kCli, "relay", "--source", "sim", "--to", to, "--spool",
        dir.filePath("spool").toStdString(), "--duration", "2" };
    words.insert(words.end(), extra.begin(), extra.end());
    ChildProcess::Options options;
    options.environment = { { "HOME", dir.path().toStdString() } };
    return runChild(words, options, 30000);
}

bool relayedSome(const ChildResult &run)
{
    return run.exitCode == 0 && run.out.rfind("Relayed ", 0) == 0
        && run.out.rfind("Relayed 0 ", 0) != 0
        && run.out.find("remain spooled") == std::string::npos;
}

TEST(BrokerSecurity, AUserAndPasswordComeFromAFileAndAWrongOneIsTold)
{
    QTemporaryDir dir;
    const std::string passwords = dir.filePath("passwd").toStdString();
    ASSERT_EQ(runChild({ "/usr/bin/mosquitto_passwd", "-b", "-c", passwords, "bench1", "s3cret" })
                  .exitCode,
        0);
    Broker broker(
        dir.path().toStdString(), "allow_anonymous false\npassword_file " + passwords + "\n");
    ASSERT_TRUE(broker.start()) << broker.log();
    const std::string good = writeFile(dir.filePath("good").toStdString(),
        "# the bench's account\nusername=bench1\npassword=s3cret\n");
    const std::string wrong
        = writeFile(dir.filePath("wrong").toStdString(), "username=bench1\npassword=guess\n");
    const std::string empty = writeFile(dir.filePath("empty").toStdString(), "password=x\n");

    const ChildResult ok = relaySim(dir, broker.url("secure/bench1"), { "--credentials", good });
    EXPECT_TRUE(relayedSome(ok)) << ok.out << ok.err;
    const ChildResult refused
        = relaySim(dir, broker.url("secure/bench2"), { "--credentials", wrong });
    EXPECT_NE(refused.err.find("the broker refused the connection"), std::string::npos)
        << refused.err;
    EXPECT_NE(refused.out.find("remain spooled"), std::string::npos) << refused.out;
    const ChildResult noUser
        = relaySim(dir, broker.url("secure/bench4"), { "--credentials", empty });
    EXPECT_EQ(noUser.exitCode, 1);
    EXPECT_NE(noUser.err.find("names no user (username=NAME)"), std::string::npos) << noUser.err;
}

TEST(BrokerSecurity, TlsChecksTheBrokerAgainstTheCaFile)
{
    QTemporaryDir dir;
    const auto file = [&](const char *name) { return dir.filePath(name).toStdString(); };
    // A certificate authority of the test's, and the broker's certificate for 127.0.0.1.
    const std::vector<std::vector<std::string>> steps {
        { "openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
            "/CN=Corvalog test CA", "-keyout", file("ca.key"), "-out", file("ca.crt") },
        { "openssl", "req", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1", "-keyout",
            file("broker.key"), "-out", file("broker.csr") },
        { "openssl", "x509", "-req", "-in", file("broker.csr"), "-CA", file("ca.crt"), "-CAkey",
            file("ca.key"), "-CAcreateserial", "-days", "2", "-extfile", file("ext"), "-out",
            file("broker.crt") },
    };
    writeFile(file("ext"), "subjectAltName=IP:127.0.0.1\n");
    for (const auto &step : steps) {
        std::vector<std::string> argv = step;
        argv[0] = "/usr/bin/openssl";
        const ChildResult made = runChild(argv);
        ASSERT_EQ(made.exitCode, 0) << made.err;
    }
    Broker broker(dir.path().toStdString(),
        "allow_anonymous true\ncafile " + file("ca.crt") + "\ncertfile " + file("broker.crt")
            + "\nkeyfile " + file("broker.key") + "\n");
    ASSERT_TRUE(broker.start()) << broker.log();

    const ChildResult trusted
        = relaySim(dir, broker.url("tls/bench1", true), { "--ca-file", file("ca.crt") });
    EXPECT_TRUE(relayedSome(trusted)) << trusted.out << trusted.err;
    // The system's authorities do not know the test's: the broker is not trusted.
    const ChildResult untrusted = relaySim(dir, broker.url("tls/bench2", true), {});
    EXPECT_NE(untrusted.err.find("Lost the broker mqtts://127.0.0.1:"), std::string::npos)
        << untrusted.err;
    EXPECT_NE(untrusted.out.find("remain spooled"), std::string::npos) << untrusted.out;
    const ChildResult missing
        = relaySim(dir, broker.url("tls/bench3", true), { "--ca-file", file("nothing.crt") });
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("Cannot read the CA file"), std::string::npos) << missing.err;
}

} // namespace
} // namespace corvalog
