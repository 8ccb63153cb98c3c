#include "LogFormat.h"

#include "runtime/CsvField.h"
#include "runtime/DateTime.h"
#include "runtime/Format.h"
#include "runtime/NumberLocale.h"
#include "runtime/NumberText.h"

#include <algorithm>

namespace corvalog {

namespace {

void appendTwoDigits(std::string &out, int n)
{
    out += static_cast<char>('0' + n / 10 % 10);
    out += static_cast<char>('0' + n % 10);
}

} // namespace

void appendDateAndTime(std::string &row, double date, char separator)
{
    const NumberLocale &locale = numberLocale();
    const CivilDateTime dt = civilFromDate(date);
    if (dt.year < 1000 || locale.dateSeparator == separator || locale.timeSeparator == separator
        || locale.dateSeparator == '"' || locale.timeSeparator == '"') {
        appendCsvField(row, Format(Variant::date(date), "DD/MM/YYYY"), separator);
        row += separator;
        appendCsvField(row, Format(Variant::date(date), "HH:MM:SS"), separator);
        row += separator;
        return;
    }
    appendTwoDigits(row, dt.day);
    row += locale.dateSeparator;
    appendTwoDigits(row, dt.month);
    row += locale.dateSeparator;
    appendTwoDigits(row, dt.year / 100);
    appendTwoDigits(row, dt.year % 100);
    row += separator;
    appendTwoDigits(row, dt.hour);
    row += locale.timeSeparator;
    appendTwoDigits(row, dt.minute);
    row += locale.timeSeparator;
    appendTwoDigits(row, dt.second);
    row += separator;
}

std::string logHeader(const std::vector<std::string> &captions, bool semicolons)
{
    const char separator = semicolons ? ';' : ',';
    std::string header = "Date,Time,Elapsed mS";
    if (semicolons)
        std::replace(header.begin(), header.end(), ',', ';');
    for (const std::string &caption : captions) {
        header += separator;
        appendCsvField(header, caption, separator);
    }
    return header + "\r\n";
}

std::string logRow(double date, double elapsedMs, const WorkspaceClass &workspace,
    const ChannelValues &values, bool semicolons)
{
    const char separator = semicolons ? ';' : ',';
    std::string row;
    row.reserve(64 + 16 * workspace.Items.size());
    appendDateAndTime(row, date, separator);
    row += doubleText(elapsedMs);
    row += separator;
    // Channels beyond the 24 displays have no value to write.
    const int channels = std::min<int>({ workspace.Channels,
        static_cast<int>(workspace.Items.size()), ChannelValues::kEntries - 1 });
    for (int n = 1; n <= channels; ++n) {
        appendCsvField(
            row, Format(Variant::single(values.output(n)), workspace.item(n).Format), separator);
        if (n < workspace.Channels)
            row += separator;
    }
    return row + "\r\n";
}

} // namespace corvalog
