#include "workspace/INIFileModule.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace {

// A settings file of 500 lines that has been on disk for a while, as settings files are: the
// cache trusts a file only once it has not changed for two seconds.
class IniFileOnDisk
{
public:
    IniFileOnDisk()
    {
        std::string pattern
            = (std::filesystem::temp_directory_path() / "corvalog-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data()))
            m_dir = pattern;
        m_file = (m_dir / "Config.INI").string();
        std::ofstream out(m_file, std::ios::binary);
        for (int s = 0; s < 10; ++s) {
            out << "[Section" << s << "]\r\n";
            for (int k = 0; k < 48; ++k)
                out << "Key" << k << "=Value of key " << k << " in section " << s << "\r\n";
            out << "\r\n";
        }
        out.close();
        std::this_thread::sleep_for(std::chrono::milliseconds(2200));
    }
    ~IniFileOnDisk() { std::filesystem::remove_all(m_dir); }
    const std::string &file() const { return m_file; }

private:
    std::filesystem::path m_dir;
    std::string m_file;
};

void BM_ReadINI(benchmark::State &state)
{
    static const IniFileOnDisk disk;
    for (auto _ : state)
        benchmark::DoNotOptimize(corvalog::ReadINI(disk.file(), "section7", "KEY31", "none"));
    if (corvalog::ReadINI(disk.file(), "Section7", "Key31", "") != "Value of key 31 in section 7")
        state.SkipWithError("wrong value read");
}
BENCHMARK(BM_ReadINI);

} // namespace
