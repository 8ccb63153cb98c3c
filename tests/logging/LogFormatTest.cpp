#include "logging/LogFormat.h"

#include "runtime/DateTime.h"
#include "runtime/Format.h"
#include "runtime/NumberLocale.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace corvalog;

namespace {

const double kDate = dateFromCivil({ 2026, 11, 23, 9, 5, 1 });

// Two channels: the case's, then one formatted "0" that holds 1. A field that holds the
// separator, a quote or a line break is quoted, so no column shifts; with decimal commas the
// fields are separated by ";".
TEST(LogFormat, FieldsAreSeparatedAndQuotedSoNoColumnShifts)
{
    const struct {
        bool commas;
        const char *caption, *format;
        float value;
        double elapsedMs;
        const char *header, *row; // from the caption on, from the elapsed time on
    } cases[] = {
        { true, "Load", "0.00", 0.37f, 1000.5, "Load;x\r\n", "1000,5;0,37;1\r\n" },
        { false, "Temp, C", "#,##0.00", 7530, 5, "\"Temp, C\",x\r\n", "5,\"7,530.00\",1\r\n" },
        { false, "a \"b\"\nc", "0\";\"", 3, 5, "\"a \"\"b\"\"\nc\",x\r\n", "5,3;,1\r\n" },
        { true, "Temp, C", "#,##0.00", 7530, 5, "Temp, C;x\r\n", "5;7.530,00;1\r\n" },
        { true, "a;b", "0\";\"", 3, 5, "\"a;b\";x\r\n", "5;\"3;\";1\r\n" },
    };
    WorkspaceClass ws;
    ws.Channels = 2;
    ws.Items.assign(2, ItemClass {});
    ws.item(2).Format = "0";
    ChannelValues values;
    values.output(2) = 1;
    for (const auto &c : cases) {
        ScopedNumberLocale locale(c.commas ? NumberLocale::comma() : NumberLocale::point());
        ws.item(1).Format = c.format;
        values.output(1) = c.value;
        const std::string sep = c.commas ? ";" : ",";
        EXPECT_EQ(logHeader({ c.caption, "x" }, c.commas),
            "Date" + sep + "Time" + sep + "Elapsed mS" + sep + c.header);
        EXPECT_EQ(logRow(kDate, c.elapsedMs, ws, values, c.commas),
            "23/11/2026" + sep + "09:05:01" + sep + c.row)
            << c.format;
    }
}

// The date and time separators are the locale's (quoted when one is the field separator); with
// no channels the separator after the elapsed time stays.
TEST(LogFormat, DatesAndTimesUseTheLocaleSeparators)
{
    NumberLocale finnish = NumberLocale::comma();
    finnish.dateSeparator = finnish.timeSeparator = '.';
    NumberLocale odd = NumberLocale::point();
    odd.dateSeparator = ',';
    const std::pair<NumberLocale, const char *> cases[] = {
        { finnish, "23.11.2026;09.05.01;5;\r\n" },
        { odd, "\"23,11,2026\",09:05:01,5,\r\n" },
    };
    WorkspaceClass ws;
    ws.Channels = 0; // its items are not written
    for (const auto &[locale, row] : cases) {
        ScopedNumberLocale scoped(locale);
        EXPECT_EQ(logRow(kDate, 5, ws, ChannelValues(), locale.commaDecimal()), row);
    }
    EXPECT_EQ(logHeader({}, false), "Date,Time,Elapsed mS\r\n");

    // The row writes its date and time without Format; they must read exactly as Format's.
    for (const double date :
        { kDate + 0.9 / 86400, dateFromCivil({ 1999, 12, 31, 23, 59, 59 }) + 0.999 / 86400,
            dateFromCivil({ 100, 1, 1, 0, 0, 0 }), dateFromCivil({ 999, 7, 4, 12, 0, 1 }),
            dateFromCivil({ 9999, 12, 31, 0, 0, 0 }), dateFromCivil({ 1899, 12, 29, 6, 30, 0 }) })
        EXPECT_EQ(logRow(date, 0, ws, ChannelValues(), false),
            Format(Variant::date(date), "DD/MM/YYYY") + ","
                + Format(Variant::date(date), "HH:MM:SS") + ",0,\r\n");
}

} // namespace
