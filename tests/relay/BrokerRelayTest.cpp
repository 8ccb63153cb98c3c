// Relays, recorders and sources through a real Mosquitto broker on 127.0.0.1.
#include "Broker.h"
#include "ChildProcess.h"
#include "FileText.h"
#include "GuiThread.h"
#include "acquisition/MqttPayload.h"
#include "acquisition/MqttProvider.h"

#include <QDir>
#include <QTemporaryDir>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <thread>

namespace corvalog {
namespace {

using namespace std::chrono_literals;

const std::string kCli = CORVALOG_CLI_PATH;

// A recording of `count` packets of one tag over `spanMs`, each value naming its station and
// number, so the packets a recorder wrote can be told apart.
std::string writeReplay(
    const QTemporaryDir &dir, const std::string &name, const char *tag, int count, int spanMs)
{
    std::string text = "# Corvalog packet recording 1\n"
                       "time_ms,base_station,data_tag,value,status,rssi,cv,batt_low,error\n";
    for (int i = 0; i < count; ++i)
        text += std::to_string(i * spanMs / std::max(count, 1)) + ",1," + tag + "," + name + "-"
            + std::to_string(i) + ",0,-60,100,0,0\n";
    const std::string path = dir.filePath(QString::fromStdString(name + ".csv")).toStdString();
    writeFile(path, text);
    return path;
}

// How many times each value is in a recording.
std::map<std::string, int> valuesIn(const std::string &recording)
{
    std::map<std::string, int> seen;
    for (const QByteArray &line : QByteArray::fromStdString(fileText(recording)).split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.size() == 9 && !line.startsWith("time_ms") && !line.startsWith('#'))
            ++seen[fields[3].toStdString()];
    }
    return seen;
}

std::size_t packetsIn(const std::string &recording)
{
    std::size_t n = 0;
    for (const auto &[value, times] : valuesIn(recording))
        n += static_cast<std::size_t>(times);
    return n;
}

bool waitFor(const std::function<bool()> &done, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(50ms);
    }
    return true;
}

// Packets in the spool files a relay left (their names carry the counts).
std::uint64_t spooledPackets(const QString &folder)
{
    std::uint64_t n = 0;
    for (const QString &name : QDir(folder).entryList({ "*.msg" }))
        n += name.section('-', 1).chopped(4).toULongLong();
    return n;
}

class BrokerRelayTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    Broker broker { dir.path().toStdString() };

    std::string path(const char *name) const { return dir.filePath(name).toStdString(); }
    std::unique_ptr<ChildProcess> cli(std::vector<std::string> words)
    {
        words.insert(words.begin(), kCli);
        ChildProcess::Options options;
        options.environment = { { "HOME", dir.path().toStdString() } };
        return std::make_unique<ChildProcess>(words, options);
    }
    // A recorder subscribed (its session then holds what comes while it is away).
    std::unique_ptr<ChildProcess> recorder(const std::string &prefix, const std::string &client)
    {
        auto r = cli({ "record", "--source", broker.url(prefix + "?client=" + client), "--out",
            path("rec.csv"), "--duration", "120" });
        std::this_thread::sleep_for(1500ms);
        return r;
    }
};

TEST_F(BrokerRelayTest, TwoRelaysThroughARestartedBrokerGiveEveryPacketOnce)
{
    ASSERT_TRUE(broker.start()) << broker.log();
    auto rec = recorder("plant", "rec-restart");
    const std::string a = writeReplay(dir, "A", "0A01", 2000, 6000);
    const std::string b = writeReplay(dir, "B", "0B01", 2000, 6000);
    auto relayA = cli({ "relay", "--source", "replay:" + a, "--to", broker.url("plant/benchA"),
        "--spool", path("spoolA") });
    auto relayB = cli({ "relay", "--source", "replay:" + b, "--to", broker.url("plant/benchB"),
        "--spool", path("spoolB") });
    std::this_thread::sleep_for(2s);
    broker.stop();
    std::this_thread::sleep_for(3s);
    ASSERT_TRUE(broker.start()) << broker.log();
    for (auto *relay : { relayA.get(), relayB.get() }) {
        ASSERT_TRUE(relay->wait(30000));
        EXPECT_EQ(relay->exitCode(), 0) << relay->err();
        EXPECT_NE(relay->out().find("Relayed 2000 packets to mqtt://127.0.0.1:"), std::string::npos)
            << relay->out() << relay->err();
        EXPECT_NE(relay->err().find("Lost the broker"), std::string::npos) << relay->err();
        EXPECT_NE(relay->err().find("is connected again; sending the spool"), std::string::npos)
            << relay->err();
    }
    EXPECT_TRUE(waitFor([&] { return packetsIn(path("rec.csv")) >= 4000; }, 20s));
    std::this_thread::sleep_for(500ms); // a repeat would have come by now
    rec->signal(SIGINT);
    ASSERT_TRUE(rec->wait(15000));
    const std::map<std::string, int> seen = valuesIn(path("rec.csv"));
    EXPECT_EQ(seen.size(), 4000u);
    int repeated = 0;
    for (const auto &[value, times] : seen)
        repeated += times != 1;
    EXPECT_EQ(repeated, 0);
    EXPECT_TRUE(seen.count("A-0") && seen.count("A-1999") && seen.count("B-1999"));
}

TEST_F(BrokerRelayTest, ARelayKilledWhileTheBrokerIsAwaySendsItsSpoolNextTime)
{
    // No broker yet: everything the first run takes in stays in its spool.
    const std::string a = writeReplay(dir, "K", "0C01", 1500, 3000);
    auto first = cli({ "relay", "--source", "replay:" + a, "--to", broker.url("kill/bench"),
        "--spool", path("spool") });
    std::this_thread::sleep_for(2000ms);
    first->signal(SIGKILL);
    ASSERT_TRUE(first->wait(5000));
    const std::uint64_t spooled = spooledPackets(dir.filePath("spool"));
    ASSERT_GT(spooled, 0u);

    ASSERT_TRUE(broker.start()) << broker.log();
    auto rec = recorder("kill", "rec-kill");
    const std::string nothing = writeReplay(dir, "N", "0C02", 0, 0);
    const ChildResult second = runChild({ kCli, "relay", "--source", "replay:" + nothing, "--to",
                                            broker.url("kill/bench"), "--spool", path("spool") },
        { "", -1, { { "HOME", dir.path().toStdString() } } }, 30000);
    EXPECT_EQ(second.exitCode, 0) << second.err;
    EXPECT_NE(second.out.find("Relayed " + std::to_string(spooled) + " packets"), std::string::npos)
        << second.out;
    EXPECT_TRUE(waitFor([&] { return packetsIn(path("rec.csv")) >= spooled; }, 10s));
    rec->signal(SIGINT);
    ASSERT_TRUE(rec->wait(15000));
    const std::map<std::string, int> seen = valuesIn(path("rec.csv"));
    EXPECT_EQ(seen.size(), spooled);
    // The first packets of the replay, each once.
    for (std::uint64_t i = 0; i < spooled; ++i)
        EXPECT_EQ(seen.count("K-" + std::to_string(i)), 1u) << i;
}

TEST_F(BrokerRelayTest, AFullSpoolDropsTheOldestAndSaysSo)
{
    // The broker never comes: the spool fills and the oldest messages go.
    const ChildResult run
        = runChild({ kCli, "relay", "--source", "sim", "--to", broker.url("full/bench"), "--spool",
                       path("spool"), "--spool-limit", "16K", "--duration", "3" },
            { "", -1, { { "HOME", dir.path().toStdString() } } }, 30000);
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_NE(
        run.err.find("The spool is full (16384 bytes): dropped the oldest"), std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("packets were dropped, the oldest first"), std::string::npos) << run.err;
    EXPECT_NE(run.out.find("Relayed 0 packets"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("remain spooled"), std::string::npos) << run.out;
    qint64 bytes = 0;
    for (const QFileInfo &f : QDir(dir.filePath("spool")).entryInfoList({ "*.msg" }))
        bytes += f.size();
    EXPECT_GT(bytes, 0);
    EXPECT_LE(bytes, 16384);
}

// Payloads that are not a relay's messages are counted and skipped; a repeated message is
// taken once; the good packets of a message with a bad one still arrive.
TEST_F(BrokerRelayTest, ASourceSkipsGarbageAndRepeats)
{
    ASSERT_TRUE(broker.start()) << broker.log();
    GuiThread gui;
    MqttProvider::Options options;
    options.address = *MqttAddress::parse(broker.url("g?client=src-garbage"), false);
    MqttProvider source(options, NumberLocale::point());
    std::size_t received = 0;
    QObject::connect(&source, &DataProvider::packetsArrived,
        [&](const PacketBatch &batch) { received += batch.size(); });
    source.OpenInterface(0, 0);
    ASSERT_TRUE(gui.runUntil([&] { return source.connected(); }, 5000ms));

    MqttClient::Options publisher;
    publisher.host = "127.0.0.1";
    publisher.port = broker.port();
    MqttClient client(publisher, {});
    client.start();
    ASSERT_TRUE(waitFor([&] { return client.isConnected(); }, 5s));
    RelayMessage message;
    message.station = "s1";
    message.seq = 1;
    message.packets.resize(2);
    message.times = { 0, 0 };
    const std::string good = encodeRelayMessage(message, NumberLocale::point());
    std::string withBadPacket = good;
    withBadPacket.replace(withBadPacket.find("\"bs\":0"), 6, "\"bs\":-5");
    withBadPacket.replace(withBadPacket.find("\"seq\":1"), 7, "\"seq\":2");
    for (const auto &[topic, payload] :
        std::vector<std::pair<std::string, std::string>> { { "g/s1/packets", "garbage" },
            { "g/s1/packets", good }, { "g/s1/packets", good }, // delivered again
            { "g/s2/packets", good }, // from s1, on s2's topic
            { "g/s1/packets", withBadPacket } })
        ASSERT_TRUE(client.publish(topic, payload));
    EXPECT_TRUE(
        gui.runUntil([&] { return received >= 3 && source.malformedCount() >= 3; }, 5000ms));
    gui.runUntil([] { return false; }, 300ms);
    EXPECT_EQ(received, 3u);
    EXPECT_EQ(source.repeatCount(), 1u);
    const std::vector<std::string> why = source.malformedMessages();
    ASSERT_EQ(why.size(), 3u);
    EXPECT_NE(why[0].find("on g/s1/packets: not JSON"), std::string::npos) << why[0];
    EXPECT_NE(why[1].find("its station \"s1\" is not the topic's"), std::string::npos) << why[1];
    EXPECT_NE(why[2].find("packet 1: \"bs\""), std::string::npos) << why[2];
    client.stop();
    source.CloseInterface();
}

} // namespace
} // namespace corvalog
