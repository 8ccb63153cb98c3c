#include "logging/LogCompanions.h"

#include "runtime/DateTime.h"
#include "runtime/NumberLocale.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

TEST(LogCompanions, SitBesideTheLogUnderItsName)
{
    const std::pair<const char *, const char *> cases[] = {
        { "/logs/run.csv", "/logs/run.events.csv" },
        { "/logs/run.CSV", "/logs/run.events.csv" },
        { "/logs/run", "/logs/run.events.csv" },
        { "/logs/run.txt", "/logs/run.txt.events.csv" },
        { ".csv", ".csv.events.csv" },
    };
    for (const auto &[log, events] : cases)
        EXPECT_EQ(LogCompanions::pathBeside(log, LogCompanions::kEventsSuffix), events) << log;
    EXPECT_EQ(LogCompanions::pathBeside("a.csv", LogCompanions::kMetaSuffix), "a.meta.json");
}

// Event rows use the log's separator, date and time formats and the channel's format; a
// caption holding the separator is quoted; error and recovered have no limit.
TEST(LogCompanions, EventRowsAreWrittenAsTheLogsRows)
{
    const double date = dateFromCivil({ 2026, 11, 24, 7, 5, 9 });
    LimitEvent over { 3, "over", 12.345f, 12.0f };
    LimitEvent error { 4, "error", -9999999.0f, std::nullopt };
    EXPECT_EQ(LogCompanions::eventsHeader(false),
        "Date,Time,Elapsed mS,Channel,Caption,Event,Value,Limit\r\n");
    EXPECT_EQ(LogCompanions::eventRow(date, 1500, over, "Load, kg", "0.00", false),
        "24/11/2026,07:05:09,1500,3,\"Load, kg\",over,12.35,12\r\n");
    EXPECT_EQ(LogCompanions::eventRow(date, 250, error, "Temp", "0", false),
        "24/11/2026,07:05:09,250,4,Temp,error,-9999999,\r\n");

    ScopedNumberLocale comma(NumberLocale::comma());
    EXPECT_EQ(LogCompanions::eventsHeader(true),
        "Date;Time;Elapsed mS;Channel;Caption;Event;Value;Limit\r\n");
    over.limit = 12.5f;
    EXPECT_EQ(LogCompanions::eventRow(date, 1500, over, "Load; kg", "0.00", true),
        "24/11/2026;07:05:09;1500;3;\"Load; kg\";over;12,35;12,5\r\n");
}

TEST(LogCompanions, TheMetadataNamesEverythingNeededToReadTheLog)
{
    WorkspaceClass workspace;
    workspace.Channels = 1;
    workspace.Items.assign(1, ItemClass {});
    workspace.item(1).Caption = "Load";
    workspace.item(1).TareValue = 2.5f;
    const double date = dateFromCivil({ 2026, 11, 24, 7, 5, 9 }) + 0.25 / 86400.0;
    const std::string json = LogCompanions::metadataJson(
        workspace, { "serial:/dev/ttyUSB0", "Corvalog serial base station" }, date, true);
    const QJsonObject meta = QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
    EXPECT_EQ(meta.keys().size(), 8) << json;
    EXPECT_EQ(meta["program"].toString(), "Corvalog");
    EXPECT_EQ(meta["version"].toString(), CORVALOG_VERSION);
    EXPECT_TRUE(QRegularExpression("^2026-11-24T07:05:09\\.250[+-]\\d\\d:\\d\\d$")
                    .match(meta["started"].toString())
                    .hasMatch())
        << json;
    EXPECT_EQ(meta["source"].toString(), "serial:/dev/ttyUSB0");
    EXPECT_EQ(meta["driver"].toString(), "Corvalog serial base station");
    EXPECT_EQ(meta["decimal"].toString(), "comma");
    EXPECT_EQ(meta["separator"].toString(), ";");
    EXPECT_EQ(meta["workspace"]["items"][0]["TareValue"].toDouble(), 2.5);
    EXPECT_EQ(json.find("\"program\""), json.find('"')) << "the program comes first";
}

} // namespace
} // namespace corvalog
