#include "TrendCsv.h"

#include "runtime/CsvField.h"

#include <QByteArray>
#include <algorithm>
#include <cmath>

namespace corvalog {

namespace {

struct ColumnMean {
    double sum = 0;
    int count = 0;
    bool error = false;
};

std::vector<ColumnMean> columnMeans(
    const ChannelHistory &history, double fromMs, double toMs, int pixels)
{
    std::vector<ColumnMean> columns(static_cast<std::size_t>(pixels));
    const double width = (toMs - fromMs) / pixels;
    for (std::size_t i = history.lowerBound(fromMs); i < history.size(); ++i) {
        const HistorySample s = history.at(i);
        if (s.timeMs >= toMs)
            break;
        const auto p = static_cast<std::size_t>(
            std::min<double>(std::floor((s.timeMs - fromMs) / width), pixels - 1));
        ColumnMean &c = columns[p];
        if (s.error()) {
            c.error = true;
            continue;
        }
        // A sample holds the extremes of its bucket: its middle stands for it.
        c.sum += (static_cast<double>(s.min) + s.max) / 2.0;
        ++c.count;
    }
    return columns;
}

} // namespace

std::string trendCsv(const TrendHistory &history, const std::vector<std::string> &captions,
    double fromMs, double toMs, int pixels)
{
    std::string out = "Time ms";
    for (const std::string &caption : captions) {
        out += ',';
        appendCsvField(out, caption, ',');
    }
    out += "\r\n";
    if (pixels <= 0 || !(toMs > fromMs))
        return out;

    const int channels = std::min<int>(history.channels(), static_cast<int>(captions.size()));
    std::vector<std::vector<ColumnMean>> means;
    for (int n = 1; n <= channels; ++n)
        means.push_back(columnMeans(history.channel(n), fromMs, toMs, pixels));
    const double width = (toMs - fromMs) / pixels;
    for (int p = 0; p < pixels; ++p) {
        out += QByteArray::number(fromMs + p * width, 'g', 12).toStdString();
        for (const std::vector<ColumnMean> &channel : means) {
            out += ',';
            const ColumnMean &c = channel[static_cast<std::size_t>(p)];
            if (c.count > 0)
                out += QByteArray::number(c.sum / c.count, 'g', 7).toStdString();
            else if (c.error)
                out += "error";
        }
        out += "\r\n";
    }
    return out;
}

} // namespace corvalog
