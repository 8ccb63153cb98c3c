#include "runtime/Clock.h"
#include "values/ReadValues.h"
#include "values/ScriptClass.h"

#include <benchmark/benchmark.h>
#include <memory>

using namespace corvalog;

namespace {

class QuietHost final : public ReadValuesHost
{
public:
    bool suppressReadingLabel() const override { return false; }
    void setReadingLabel(const std::string &text) override { m_label = text; }
    void processEvents() override { }
    std::string panelTitle(int n) const override { return "Channel " + std::to_string(n); }

private:
    std::string m_label;
};

// 24 channels, each three module references and a medium filter.
void BM_ReadValues24(benchmark::State &state)
{
    SystemClock clock;
    auto tables = std::make_unique<ScriptClass>(clock);
    ScriptEngine engine(*tables);
    WorkspaceClass workspace;
    ChannelValues values;
    QuietHost host;
    workspace.Channels = 24;
    workspace.Items.assign(24, ItemClass {});
    for (int n = 1; n <= 24; ++n) {
        ItemClass &item = workspace.item(n);
        char a[8], b[8], c[8];
        std::snprintf(a, sizeof a, "%04X", 0x100 + n);
        std::snprintf(b, sizeof b, "%04X", 0x200 + n);
        std::snprintf(c, sizeof c, "%04X", 0x300 + n);
        item.DataTagList = std::string("(<") + a + ">+<" + b + ">)/2-<" + c + ">";
        item.Functionality = ChannelFunction::FilterMedium;
        item.Timeout = 3;
        for (const char *tag : { a, b, c }) {
            tables->setT(std::stoi(tag, nullptr, 16), 12.5f);
            tables->setTL(std::stoi(tag, nullptr, 16), 90);
        }
    }
    prepareChannels(workspace, values);
    for (auto _ : state)
        ReadValues(workspace, values, engine, host);
    benchmark::DoNotOptimize(values.output(24));
}
BENCHMARK(BM_ReadValues24);

} // namespace
