#include "INIFileModule.h"

#include "IniFile.h"

#include <ctime>
#include <optional>
#include <sys/stat.h>
#include <vector>

namespace corvalog {

namespace {

constexpr std::size_t kBufferSize = kIniValueLength + 1;

// A workspace load and the settings reads hit the same few files hundreds of times, so parsed
// documents are kept while the file's identity, size and times stay the same. Big files are
// read afresh every time rather than held in memory.
constexpr std::size_t kCachedFiles = 4;
constexpr off_t kMaxCachedBytes = 4 << 20;
// Two writes within one tick of the file system's clock leave the same times (FAT keeps two
// seconds), so a file changed more recently than this is re-read instead of trusted. The
// change time counts, not the modification time, which tools may set back.
constexpr long long kSettleNanoseconds = 2100000000LL;

struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    long long modified = 0; // nanoseconds since the epoch
    long long changed = 0;

    bool operator==(const FileStamp &o) const
    {
        return device == o.device && inode == o.inode && size == o.size && modified == o.modified
            && changed == o.changed;
    }
};

struct CachedFile {
    std::string path;
    FileStamp stamp;
    IniDocument document;
    unsigned long long lastUse = 0;
};

// The module is used from one thread (the settings and workspace code run on the GUI thread).
std::vector<CachedFile> g_cache;
unsigned long long g_useCounter = 0;

long long nanoseconds(const struct timespec &t)
{
    return static_cast<long long>(t.tv_sec) * 1000000000LL + t.tv_nsec;
}

bool stampOf(const std::string &path, FileStamp &stamp)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        return false;
    stamp.device = st.st_dev;
    stamp.inode = st.st_ino;
    stamp.size = st.st_size;
    stamp.modified = nanoseconds(st.st_mtim);
    stamp.changed = nanoseconds(st.st_ctim);
    return true;
}

bool settled(const FileStamp &stamp)
{
    struct timespec now;
    ::clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now) - stamp.changed > kSettleNanoseconds;
}

CachedFile *cached(const std::string &path)
{
    for (CachedFile &entry : g_cache) {
        if (entry.path == path)
            return &entry;
    }
    return nullptr;
}

void forget(const std::string &path)
{
    for (auto it = g_cache.begin(); it != g_cache.end(); ++it) {
        if (it->path == path) {
            g_cache.erase(it);
            return;
        }
    }
}

const IniDocument &remember(const std::string &path, const FileStamp &stamp, IniDocument &&document)
{
    CachedFile *entry = cached(path);
    if (!entry) {
        if (g_cache.size() < kCachedFiles) {
            entry = &g_cache.emplace_back();
        } else {
            entry = &g_cache.front();
            for (CachedFile &candidate : g_cache) {
                if (candidate.lastUse < entry->lastUse)
                    entry = &candidate;
            }
        }
        entry->path = path;
    }
    entry->stamp = stamp;
    entry->document = std::move(document);
    entry->lastUse = ++g_useCounter;
    return entry->document;
}

// The file's document, from the cache when it is still current; nullptr when the file cannot
// be read. A file too big to keep is parsed into `scratch`.
const IniDocument *documentOf(const std::string &path, std::optional<IniDocument> &scratch)
{
    FileStamp stamp;
    if (!stampOf(path, stamp)) {
        forget(path);
        return nullptr;
    }
    if (CachedFile *entry = cached(path); entry && entry->stamp == stamp && settled(stamp)) {
        entry->lastUse = ++g_useCounter;
        return &entry->document;
    }
    // Stamped before reading: a change while reading leaves a stamp that no longer matches.
    std::optional<IniDocument> loaded = loadIniFile(path);
    if (!loaded) {
        forget(path);
        return nullptr;
    }
    if (stamp.size > kMaxCachedBytes) {
        forget(path);
        scratch = std::move(loaded);
        return &*scratch;
    }
    return &remember(path, stamp, std::move(*loaded));
}

// What the platform's reader puts in the buffer for a missing key: the default without its
// trailing spaces, as a C string, cut to the buffer.
std::string defaultInBuffer(std::string_view Default)
{
    std::string_view d = Default.substr(0, Default.find('\0'));
    while (!d.empty() && d.back() == ' ')
        d.remove_suffix(1);
    return std::string(d.substr(0, kBufferSize - 1));
}

} // namespace

bool hasLineBreak(std::string_view text)
{
    return text.find_first_of("\r\n") != std::string_view::npos;
}

std::string readIniValue(const IniDocument &document, std::string_view Section,
    std::string_view Key, std::string_view Default)
{
    std::string buffer = document.value(Section, Key, kBufferSize);
    if (buffer.empty() && !document.hasKey(Section, Key))
        buffer = defaultInBuffer(Default);
    if (buffer.empty())
        return std::string(Default);
    if (buffer == "*NULL*")
        return {};
    return buffer;
}

std::string ReadINI(const std::string &FileName, std::string_view Section, std::string_view Key,
    std::string_view Default)
{
    std::optional<IniDocument> scratch;
    if (const IniDocument *document = documentOf(FileName, scratch))
        return readIniValue(*document, Section, Key, Default);
    return readIniValue(IniDocument(), Section, Key, Default);
}

bool WriteINI(const std::string &FileName, std::string_view Section, std::string_view Key,
    std::string_view Value)
{
    // A line break would end the line there and let the rest be read as more keys; the
    // platform writes it raw, this refuses it.
    if (hasLineBreak(Section) || hasLineBreak(Key) || hasLineBreak(Value))
        return false;
    IniDocument document;
    FileStamp stamp;
    if (stampOf(FileName, stamp)) {
        CachedFile *entry = cached(FileName);
        if (entry && entry->stamp == stamp && settled(stamp)) {
            document = std::move(entry->document);
        } else {
            std::optional<IniDocument> loaded = loadIniFile(FileName);
            if (!loaded) {
                forget(FileName);
                return false;
            }
            document = std::move(*loaded);
        }
    }
    // A missing file starts empty; a missing folder makes the save below fail.
    forget(FileName);
    document.setValue(Section, Key, Value);
    if (!saveIniFile(FileName, document))
        return false;
    if (stampOf(FileName, stamp) && stamp.size <= kMaxCachedBytes)
        remember(FileName, stamp, std::move(document));
    return true;
}

} // namespace corvalog
