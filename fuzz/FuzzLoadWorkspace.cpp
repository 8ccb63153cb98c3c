// Loads arbitrary bytes as a workspace file, saves the result and loads that again: no input
// may crash, hang or break the channel-count invariant, and a saved workspace must load back
// with the same channels.
#include "workspace/WorkspaceModule.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace corvalog;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::string folder = [] {
        // Memory-backed when possible: every save flushes its file to the disk.
        char shm[] = "/dev/shm/corvalog-fuzz-XXXXXX";
        char tmp[] = "/tmp/corvalog-fuzz-XXXXXX";
        const char *made = mkdtemp(shm);
        return std::string(made ? made : mkdtemp(tmp));
    }();
    const std::string in = folder + "/in.lws";
    const std::string out = folder + "/out.lws";
    std::ofstream(in, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    SilentPrompts prompts;
    WorkspaceClass ws;
    if (!LoadWorkspace(ws, in, prompts))
        return 0;
    if (ws.Items.size() != static_cast<std::size_t>(ws.Channels) || ws.Channels < 0
        || ws.Channels > 24)
        std::abort();
    if (!SaveWorkspace(ws, out, prompts))
        std::abort();
    WorkspaceClass back;
    if (!LoadWorkspace(back, out, prompts) || back.Items.size() != ws.Items.size())
        std::abort();
    for (std::size_t i = 0; i < ws.Items.size(); ++i) {
        if (back.Items[i].Functionality != ws.Items[i].Functionality
            || back.Items[i].Timeout != ws.Items[i].Timeout)
            std::abort();
    }
    return 0;
}
