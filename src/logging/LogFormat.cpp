#include "LogFormat.h"

#include "runtime/Format.h"
#include "runtime/NumberText.h"

#include <algorithm>

namespace corvalog {

bool logUsesSemicolons()
{
    const std::string zero = Format(Variant::integer(0), "0.0");
    return zero.size() > 1 && zero[1] == ',';
}

std::string logHeader(const std::vector<std::string> &captions, bool semicolons)
{
    std::string header = "Date,Time,Elapsed mS,";
    for (const std::string &caption : captions)
        header += caption + ",";
    header.pop_back();
    if (semicolons)
        std::replace(header.begin(), header.end(), ',', ';');
    return header + "\r\n";
}

std::string logRow(double date, double elapsedMs, const WorkspaceClass &workspace,
    const ChannelValues &values, bool semicolons)
{
    const char separator = semicolons ? ';' : ',';
    std::string row;
    row.reserve(64 + 16 * workspace.Items.size());
    row += Format(Variant::date(date), "DD/MM/YYYY");
    row += separator;
    row += Format(Variant::date(date), "HH:MM:SS");
    row += separator;
    row += doubleText(elapsedMs);
    row += separator;
    // Channels beyond the 24 displays have no value to write.
    const int channels = std::min<int>({ workspace.Channels,
        static_cast<int>(workspace.Items.size()), ChannelValues::kEntries - 1 });
    for (int n = 1; n <= channels; ++n) {
        row += Format(Variant::single(values.output(n)), workspace.item(n).Format);
        if (n < workspace.Channels)
            row += separator;
    }
    return row + "\r\n";
}

} // namespace corvalog
