#include "Spool.h"

#include "runtime/ReadNumber.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace corvalog {

namespace {

constexpr const char *kSeqFile = "next-seq";
constexpr const char *kSuffix = ".msg";

// "0000000000001234-50.msg": the sequence number, zero-padded so names sort by it, and the
// number of packets, so a dropped message can be counted without reading it.
bool parseName(const QString &name, std::uint64_t &seq, std::uint32_t &packets)
{
    if (!name.endsWith(QLatin1String(kSuffix)))
        return false;
    const std::string text = name.chopped(4).toStdString();
    const std::size_t dash = text.find('-');
    return dash != std::string::npos && readNumber(std::string_view(text).substr(0, dash), seq)
        && readNumber(std::string_view(text).substr(dash + 1), packets) && seq > 0;
}

} // namespace

Spool::Spool(std::string folder, std::uint64_t limit)
    : m_folder(std::move(folder))
    , m_limit(limit)
{
}

std::unique_ptr<Spool> Spool::open(
    const std::string &folder, std::uint64_t limitBytes, std::string &error)
{
    const QString path = QString::fromStdString(folder);
    if (!QDir().mkpath(path)) {
        error = "cannot make the spool folder " + folder;
        return nullptr;
    }
    std::unique_ptr<Spool> spool(new Spool(folder, limitBytes));
    const QDir dir(path);
    std::uint64_t highest = 0;
    for (const QFileInfo &file : dir.entryInfoList(QDir::Files)) {
        std::uint64_t seq = 0;
        std::uint32_t packets = 0;
        if (!parseName(file.fileName(), seq, packets))
            continue;
        const auto bytes = static_cast<std::uint64_t>(file.size());
        spool->m_items[seq] = { packets, bytes };
        spool->m_bytes += bytes;
        spool->m_packets += packets;
        highest = std::max(highest, seq);
    }
    QFile seqFile(dir.filePath(QLatin1String(kSeqFile)));
    std::uint64_t written = 0;
    if (seqFile.open(QIODevice::ReadOnly))
        readNumber(seqFile.readAll().trimmed().toStdString(), written);
    spool->m_next = std::max<std::uint64_t>({ written, highest + 1, 1 });
    // Nothing may be sent before the folder is known to take the numbers.
    if (!spool->writeSeqBlock(spool->m_next, error))
        return nullptr;
    return spool;
}

bool Spool::writeSeqBlock(std::uint64_t end, std::string &error)
{
    QSaveFile file(QDir(QString::fromStdString(m_folder)).filePath(QLatin1String(kSeqFile)));
    const QByteArray text = QByteArray::number(static_cast<qulonglong>(end)) + "\n";
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        error = "cannot write to the spool folder " + m_folder + ": "
            + file.errorString().toStdString();
        return false;
    }
    m_blockEnd = end;
    return true;
}

std::optional<std::uint64_t> Spool::nextSeq(std::string &error)
{
    if (m_next >= m_blockEnd && !writeSeqBlock(m_next + kSeqBlock, error))
        return std::nullopt;
    return m_next++;
}

std::string Spool::pathOf(std::uint64_t seq, std::uint32_t packets) const
{
    char name[64];
    std::snprintf(
        name, sizeof name, "/%016llu-%u%s", static_cast<unsigned long long>(seq), packets, kSuffix);
    return m_folder + name;
}

bool Spool::store(
    std::uint64_t seq, std::uint32_t packets, const std::string &payload, std::string &error)
{
    if (payload.size() > m_limit) {
        error = "a message of " + std::to_string(payload.size())
            + " bytes is larger than the spool's limit";
        return false;
    }
    while (!m_items.empty() && m_bytes + payload.size() > m_limit)
        drop(m_items.begin());
    const std::string path = pathOf(seq, packets);
    std::FILE *file = std::fopen(path.c_str(), "wb");
    const bool written
        = file && std::fwrite(payload.data(), 1, payload.size(), file) == payload.size();
    const bool closed = file && std::fclose(file) == 0;
    if (!written || !closed) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        std::remove(path.c_str());
        return false;
    }
    m_items[seq] = { packets, payload.size() };
    m_bytes += payload.size();
    m_packets += packets;
    return true;
}

void Spool::drop(std::map<std::uint64_t, Item>::iterator it)
{
    ++m_droppedMessages;
    m_droppedPackets += it->second.packets;
    remove(it->first);
}

void Spool::remove(std::uint64_t seq)
{
    const auto it = m_items.find(seq);
    if (it == m_items.end())
        return;
    std::remove(pathOf(seq, it->second.packets).c_str());
    m_bytes -= it->second.bytes;
    m_packets -= it->second.packets;
    m_items.erase(it);
}

std::optional<std::string> Spool::read(std::uint64_t seq) const
{
    const auto it = m_items.find(seq);
    if (it == m_items.end())
        return std::nullopt;
    QFile file(QString::fromStdString(pathOf(seq, it->second.packets)));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll().toStdString();
}

} // namespace corvalog
