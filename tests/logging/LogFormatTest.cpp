#include "logging/LogFormat.h"

#include "runtime/DateTime.h"
#include "runtime/Format.h"
#include "runtime/NumberLocale.h"

#include <gtest/gtest.h>

using namespace corvalog;

namespace {

TEST(LogFormat, HeaderAndRowsInBothDecimalModes)
{
    WorkspaceClass ws;
    ws.Channels = 2;
    ws.Items.assign(2, ItemClass {});
    ws.item(1).Format = "0.00";
    ws.item(2).Format = "0.00";
    ChannelValues values;
    values.output(1) = 21.5f;
    values.output(2) = 0.37f;
    const double date = dateFromCivil({ 2026, 11, 15, 14, 3, 7 });
    const struct {
        NumberLocale locale;
        bool semicolons;
        const char *header;
        const char *row;
    } cases[] = {
        { NumberLocale::point(), false, "Date,Time,Elapsed mS,Temp,Load\r\n",
            "15/11/2026,14:03:07,1000,21.50,0.37\r\n" },
        { NumberLocale::comma(), true, "Date;Time;Elapsed mS;Temp;Load\r\n",
            "15/11/2026;14:03:07;1000;21,50;0,37\r\n" },
    };
    for (const auto &c : cases) {
        ScopedNumberLocale locale(c.locale);
        EXPECT_EQ(logHeader({ "Temp", "Load" }, c.semicolons), c.header);
        EXPECT_EQ(logRow(date, 1000, ws, values, c.semicolons), c.row);
    }
    ScopedNumberLocale comma(NumberLocale::comma());
    EXPECT_EQ(logRow(date, 1000.5, ws, values, true).substr(20, 8),
        "1000,5;2"); // elapsed as a plain number
}

// A field that holds the separator, a quote or a line break is quoted, so no column shifts.
TEST(LogFormat, FieldsThatWouldSplitWrongAreQuoted)
{
    const struct {
        bool semicolons;
        const char *caption;
        const char *format;
        float value;
        const char *headerField;
        const char *rowField;
    } cases[] = {
        { false, "Temp, C", "#,##0.00", 7530, "\"Temp, C\"", "\"7,530.00\"" },
        { false, "\"Load\"", "0", 3, "\"\"\"Load\"\"\"", "3" },
        { false, "two\nlines", "0\";\"", 3, "\"two\nlines\"", "3;" },
        { true, "Temp, C", "#,##0.00", 7530, "Temp, C", "7.530,00" },
        { true, "a;b", "0\";\"", 3, "\"a;b\"", "\"3;\"" },
        { false, "plain", "0.0", 2.5f, "plain", "2.5" },
    };
    const double date = dateFromCivil({ 2026, 11, 23, 9, 5, 1 });
    for (const auto &c : cases) {
        ScopedNumberLocale locale(c.semicolons ? NumberLocale::comma() : NumberLocale::point());
        WorkspaceClass ws;
        ws.Channels = 2;
        ws.Items.assign(2, ItemClass {});
        ws.item(1).Format = c.format;
        ws.item(2).Format = "0";
        ChannelValues values;
        values.output(1) = c.value;
        values.output(2) = 1;
        const std::string sep = c.semicolons ? ";" : ",";
        EXPECT_EQ(logHeader({ c.caption, "x" }, c.semicolons),
            "Date" + sep + "Time" + sep + "Elapsed mS" + sep + c.headerField + sep + "x\r\n")
            << c.caption;
        EXPECT_EQ(logRow(date, 5, ws, values, c.semicolons),
            "23/11/2026" + sep + "09:05:01" + sep + "5" + sep + c.rowField + sep + "1\r\n")
            << c.format;
    }
}

// The date and time separators are the locale's.
TEST(LogFormat, DatesAndTimesUseTheLocaleSeparators)
{
    NumberLocale german = NumberLocale::comma();
    german.dateSeparator = '.';
    NumberLocale finnish = NumberLocale::comma();
    finnish.dateSeparator = '.';
    finnish.timeSeparator = '.';
    NumberLocale odd = NumberLocale::point();
    odd.dateSeparator = ','; // a separator that is the field separator is quoted
    const struct {
        NumberLocale locale;
        bool semicolons;
        const char *row;
    } cases[] = {
        { german, true, "23.11.2026;09:05:01;5;\r\n" },
        { finnish, true, "23.11.2026;09.05.01;5;\r\n" },
        { odd, false, "\"23,11,2026\",09:05:01,5,\r\n" },
    };
    WorkspaceClass ws;
    ws.Channels = 0;
    ws.Items.clear();
    for (const auto &c : cases) {
        ScopedNumberLocale locale(c.locale);
        EXPECT_EQ(
            logRow(dateFromCivil({ 2026, 11, 23, 9, 5, 1 }), 5, ws, ChannelValues(), c.semicolons),
            c.row);
    }
}

TEST(LogFormat, NoChannelsKeepTheSeparatorAfterElapsed)
{
    WorkspaceClass ws;
    ws.Channels = 0;
    ws.Items.clear();
    EXPECT_EQ(logHeader({}, false), "Date,Time,Elapsed mS\r\n");
    EXPECT_EQ(logRow(dateFromCivil({ 2026, 1, 2, 3, 4, 5 }), 250, ws, ChannelValues(), false),
        "02/01/2026,03:04:05,250,\r\n");
}

} // namespace

namespace {

// The row writes its date and time without Format; they must read exactly as Format writes them.
TEST(LogFormat, DateAndTimeReadAsFormatWritesThem)
{
    WorkspaceClass ws;
    ws.Channels = 0;
    ws.Items.clear();
    const double dates[] = { dateFromCivil({ 2026, 11, 15, 14, 3, 7 }) + 0.9 / 86400,
        dateFromCivil({ 1999, 12, 31, 23, 59, 59 }) + 0.999 / 86400,
        dateFromCivil({ 100, 1, 1, 0, 0, 0 }), dateFromCivil({ 999, 7, 4, 12, 0, 1 }),
        dateFromCivil({ 9999, 12, 31, 0, 0, 0 }), dateFromCivil({ 1899, 12, 29, 6, 30, 0 }) };
    for (const double date : dates) {
        EXPECT_EQ(logRow(date, 0, ws, ChannelValues(), false),
            Format(Variant::date(date), "DD/MM/YYYY") + ","
                + Format(Variant::date(date), "HH:MM:SS") + ",0,\r\n");
    }
}

} // namespace
