#include "logging/LogReview.h"

#include "FileText.h"

#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

namespace corvalog {
namespace {

TEST(LogReview, NumbersReadAsTheLogWroteThem)
{
    const struct {
        const char *text;
        char decimal;
        std::optional<float> value;
    } cases[] = {
        { "12.5", '.', 12.5f },
        { "-1,234.50", '.', -1234.5f },
        { "1E+20", '.', 1e20f },
        { "7,5", ',', 7.5f },
        { "1.234,5", ',', 1234.5f },
        { "+3", '.', 3.0f },
        { "12.5 kg", '.', std::nullopt },
        { "", '.', std::nullopt },
        { "-", '.', std::nullopt },
    };
    for (const auto &c : cases)
        EXPECT_EQ(logNumber(c.text, c.decimal), c.value) << c.text;
}

class Review : public ::testing::Test
{
protected:
    std::string path(const char *name) const { return dir.filePath(name).toStdString(); }
    QTemporaryDir dir;
};

// A log with its companions: a series per channel over Elapsed mS, text values as gaps, the
// limits from the metadata (defaults are no limit), the events listed, the rows a channel spent
// in error (between its error and recovered events) as errors, and the clock from the Time.
TEST_F(Review, ALogReadsWithItsCompanionsInEitherSeparator)
{
    for (const bool semicolons : { false, true }) {
        std::string log = "Date,Time,Elapsed mS,\"Load, kg\",Temp\r\n"
                          "24/11/2026,07:00:01,10,12.5,n/a\r\n"
                          "24/11/2026,07:00:01,20,13.25,-9999999.00\r\n"
                          "broken\r\n"
                          "24/11/2026,07:00:01,30,-1,22\r\n";
        std::string events = "Date,Time,Elapsed mS,Channel,Caption,Event,Value,Limit\r\n"
                             "24/11/2026,07:00:01,20,1,\"Load, kg\",over,13.25,13\r\n"
                             "24/11/2026,07:00:01,20,2,Temp,error,-9999999.00,\r\n"
                             "24/11/2026,07:00:01,30,2,Temp,recovered,22,\r\n";
        if (semicolons) {
            // As a locale with decimal commas and dots between the parts of a time writes it.
            for (std::string *text : { &log, &events })
                for (char &c : *text)
                    c = c == ',' ? ';' : c == '.' || c == ':' ? ',' : c;
        }
        writeFile(path("run.csv"), log);
        writeFile(path("run.events.csv"), events);
        writeFile(path("run.meta.json"),
            R"({"started":"2026-11-24T07:00:00.000+01:00","workspace":{"items":[)"
            R"({"Underload":-1.5,"Overload":13},{"Underload":-9999999,"Overload":9999999}]}})");
        std::string error;
        const std::optional<ReviewData> data = readForReview(path("run.csv"), error);
        ASSERT_TRUE(data) << error;
        EXPECT_EQ(data->captions,
            (std::vector<std::string> { semicolons ? "Load; kg" : "Load, kg", "Temp" }));
        EXPECT_EQ(data->rows, 3u);
        ASSERT_EQ(data->history.channels(), 2);
        const ChannelHistory &load = data->history.channel(1);
        ASSERT_EQ(load.size(), 3u);
        EXPECT_EQ(load.at(1).timeMs, 20);
        EXPECT_EQ(load.at(1).max, 13.25f);
        const ChannelHistory &temp = data->history.channel(2);
        EXPECT_TRUE(temp.at(0).error()) << "text is a gap";
        EXPECT_TRUE(temp.at(1).error()) << "the Default logged while in error";
        EXPECT_FALSE(temp.at(2).error());
        EXPECT_EQ(data->clockAtStartMs, 7 * 3600000.0 + 1000.0 - 10.0);
        EXPECT_EQ(data->underload[0], -1.5f);
        EXPECT_EQ(data->overload[0], 13.0f);
        EXPECT_FALSE(data->overload[1]);
        ASSERT_EQ(data->events.size(), 3u);
        EXPECT_EQ(data->events[0].timeMs, 20);
        EXPECT_EQ(data->events[0].kind, "over");
        EXPECT_EQ(data->started, "2026-11-24T07:00:00.000+01:00");
        ASSERT_EQ(data->warnings.size(), 1u);
        EXPECT_EQ(data->warnings[0], "line 4: not a row of 5 fields");
    }
}

// A recording opens as one series per Data Tag; anything else is refused with the reason.
TEST_F(Review, ARecordingOpensAsASeriesPerTagAndOtherFilesAreRefused)
{
    writeFile(path("rec.csv"),
        "# Corvalog packet recording 1\ntime_ms,base_station,data_tag,value,status,rssi,cv,"
        "batt_low,error\n0,1,FF12,12.5,0,-60,100,0,0\n5,1,0012,20,0,-60,100,0,0\n"
        "40,1,FF12,hex:0102,0,-60,100,0,0\n80,1,FF12,13,0,-60,100,0,0\n");
    std::string error;
    const std::optional<ReviewData> rec = readForReview(path("rec.csv"), error);
    ASSERT_TRUE(rec) << error;
    EXPECT_TRUE(rec->recording);
    EXPECT_EQ(rec->captions, (std::vector<std::string> { "0012", "FF12" }));
    EXPECT_EQ(rec->history.channel(2).size(), 3u);
    EXPECT_TRUE(rec->history.channel(2).at(1).error()) << "a binary value is a gap";
    EXPECT_EQ(rec->history.channel(2).at(2).max, 13.0f);

    writeFile(path("other.csv"), "a,b,c\n1,2,3\n");
    writeFile(path("empty.csv"), "");
    const std::pair<std::string, std::string> refused[] = {
        { path("other.csv"), " is neither a Corvalog log nor a packet recording" },
        { path("empty.csv"), " is empty" },
        { path("missing.csv"), "" },
    };
    for (const auto &[file, why] : refused) {
        error.clear();
        EXPECT_FALSE(readForReview(file, error)) << file;
        EXPECT_NE(error.find(why), std::string::npos) << error;
    }
}

} // namespace
} // namespace corvalog
