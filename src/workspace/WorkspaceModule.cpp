#include "WorkspaceModule.h"

#include "INIFileModule.h"
#include "IniFile.h"
#include "Settings.h"
#include "runtime/Ascii.h"
#include "runtime/Convert.h"
#include "runtime/NumberText.h"
#include "runtime/VbError.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace corvalog {

namespace {

constexpr const char *kSection = "Workspace";
constexpr const char *kType = "CORVALOG";

// Numbers in workspace files may come from a point or a comma locale: a text with only one of
// the two separators uses it as the decimal mark, anything else is read in the process locale.
bool readNumber(const std::string &text, double &out)
{
    const bool comma = text.find(',') != std::string::npos;
    const bool point = text.find('.') != std::string::npos;
    NumberLocale locale = numberLocale();
    if (comma && !point)
        locale = NumberLocale::comma();
    else if (point && !comma)
        locale = NumberLocale::point();
    return tryParseNumericText(text, locale, out);
}

template <typename T> T converted(double v);
template <> std::int16_t converted(double v)
{
    return toInteger(v);
}
template <> std::int32_t converted(double v)
{
    return toLong(v);
}
template <> float converted(double v)
{
    return toSingle(v);
}
template <> ChannelFunction converted(double v)
{
    return static_cast<ChannelFunction>(toInteger(v));
}

// Each assignment converts like the platform's implicit conversion to the property's type;
// a value that does not convert leaves the property as it was.
template <typename T> void assign(T &property, const std::string &text)
{
    double v = 0;
    if (!readNumber(text, v))
        return;
    try {
        property = converted<T>(v);
    } catch (const VbError &) {
    }
}

std::string replaceAll(std::string text, const std::string &from, const std::string &to)
{
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string upper(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), asciiUpper);
    return s;
}

std::string lastFour(const std::string &s)
{
    return s.size() > 4 ? s.substr(s.size() - 4) : s;
}

// "<00FF>" for Data Tag 255: four upper-case hex digits of the 16-bit pattern.
std::string tagReference(std::int16_t tag)
{
    char hex[8];
    std::snprintf(hex, sizeof hex, "%X", static_cast<unsigned>(static_cast<std::uint16_t>(tag)));
    return "<" + lastFour("0000" + std::string(hex)) + ">";
}

// Version 1 files knew a channel by one Data Tag, a "+" list of them or the sum of the
// channels before it, and numbered the functions one higher.
void convertVersion1(ItemClass &item, int n, int &runningStart)
{
    std::int16_t code = functionCode(item.Functionality); // a version 1 code
    const auto is = [&code](Version1Function f) { return code == static_cast<std::int16_t>(f); };
    if (!is(Version1Function::SumOfDataTags))
        item.DataTagList = tagReference(item.DataTag);
    if (is(Version1Function::SumOfDataTags)) {
        std::string list;
        std::size_t from = 0;
        for (;;) {
            const std::size_t plus = item.DataTagList.find('+', from);
            const std::string piece = item.DataTagList.substr(
                from, plus == std::string::npos ? std::string::npos : plus - from);
            list += "<" + lastFour("0000" + upper(piece)) + ">+";
            if (plus == std::string::npos)
                break;
            from = plus + 1;
        }
        code = 0;
        item.DataTagList = list.substr(0, list.size() - 1);
    }
    if (is(Version1Function::SumOfChannels)) {
        std::string sum;
        for (int j = runningStart; j <= n - 1; ++j)
            sum += "<" + std::to_string(j) + ">+";
        item.DataTagList = sum.empty() ? sum : sum.substr(0, sum.size() - 1);
        code = 0;
        runningStart = n + 1;
    }
    item.Functionality = static_cast<ChannelFunction>(code > 0 ? code - 1 : code);
}

// Reads the workspace section of a file with ReadINI's rule, noting the keys whose value is
// longer than a read gives back, since a cut expression would silently mean something else.
class WorkspaceReader
{
public:
    explicit WorkspaceReader(const IniDocument &doc)
        : m_doc(doc)
    {
    }

    std::string read(const std::string &key, const std::string &fallback)
    {
        if (m_doc.valueLength(kSection, key) > kIniValueLength)
            m_cut.push_back(key);
        return readIniValue(m_doc, kSection, key, fallback);
    }

    const std::vector<std::string> &cutKeys() const { return m_cut; }

private:
    const IniDocument &m_doc;
    std::vector<std::string> m_cut;
};

ItemClass readChannel(WorkspaceReader &reader, int n)
{
    const std::string number = std::to_string(n);
    auto read = [&](const char *key, const std::string &fallback) {
        return reader.read(key + number, fallback);
    };
    ItemClass item;
    assign(item.DataTag, read("DataTag", number));
    item.DataTagList = read("DataTagList", number);
    item.Caption = read("Caption", "Channel " + number);
    item.Format = read("Format", "00.000");
    assign(item.TareValue, read("TareValue", "0"));
    assign(item.Timeout, read("Timeout", "3"));
    float fallback = 0; // a new item's value, kept when the text does not convert
    assign(fallback, read("Default", "-9999999"));
    item.Default = fallback;
    assign(item.Underload, read("Underload", "-9999999"));
    assign(item.Overload, read("Overload", "9999999"));
    assign(item.Functionality, read("Function", "0"));
    return item;
}

std::string loadFailure(const std::string &fileName, const FileError &error)
{
    return "An error occurred while trying to load workspace from " + fileName
        + "\r\nError: " + error.description;
}

// A value is one line of the file; a line break inside it would end the value there.
std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\r', ' ');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

bool LoadWorkspace(WorkspaceClass &ws, const std::string &FileName, UserPrompts &prompts,
    const std::string &settingsFile)
{
    IniDocument doc;
    if (!FileName.empty()) {
        FileError error;
        std::optional<IniDocument> loaded = loadIniFile(FileName, &error);
        if (!loaded) {
            if (!settingsFile.empty())
                WriteINI(settingsFile, settings::kWorkspaceFiles, settings::kInitFile, "");
            prompts.message("Warning", loadFailure(FileName, error), PromptIcon::Exclamation);
            return false;
        }
        doc = std::move(*loaded);
        if (readIniValue(doc, kSection, "Type", "") != kType) {
            prompts.message("Warning", "The selected workspace file is not valid for this program!",
                PromptIcon::Exclamation);
            return false;
        }
    }
    WorkspaceReader reader(doc);
    auto read = [&](const char *key, const char *fallback) { return reader.read(key, fallback); };
    assign(ws.Version, read("version", "1"));
    ws.Title = read("Title", "Title Text");
    ws.Notes = replaceAll(read("Notes", ""), "|", "\r\n");
    assign(ws.Interface, read("Interface", "0"));
    assign(ws.Port, read("Port", "1"));
    assign(ws.Baudrate, read("Baudrate", "115200"));
    assign(ws.LogInterval, read("LogInterval", "1000"));
    assign(ws.Channels, read("Channels", "4"));
    assign(ws.RFChannel, read("RFChannel", "1"));
    assign(ws.BSAddress, read("BSAddress", "1"));
    assign(ws.KeepAwake, read("KeepAwake", "0"));

    // The displays hold at most 24 channels; a file asking for more (or fewer than none) gets
    // as many as there can be, so the channel count always matches the items.
    ws.Channels = std::clamp<std::int16_t>(ws.Channels, 0, WorkspaceClass::kMaxChannels);
    ws.Items.clear();
    int runningStart = 1;
    for (int n = 1; n <= ws.Channels; ++n) {
        ItemClass item = readChannel(reader, n);
        if (ws.Version == 1)
            convertVersion1(item, n, runningStart);
        ws.Items.push_back(std::move(item));
    }
    if (!reader.cutKeys().empty()) {
        std::string keys;
        for (const std::string &key : reader.cutKeys())
            keys += (keys.empty() ? "" : ", ") + key;
        prompts.message("Warning",
            "These values of the workspace file " + FileName + " are longer than "
                + std::to_string(kIniValueLength) + " characters and were cut to "
                + std::to_string(kIniValueLength) + ": " + keys + ".",
            PromptIcon::Exclamation);
    }
    return true;
}

bool SaveWorkspace(const WorkspaceClass &ws, const std::string &FileName, UserPrompts &prompts)
{
    IniDocument doc;
    auto write = [&](const std::string &key, const std::string &value) {
        doc.setValue(kSection, key, oneLine(value));
    };
    auto number = [](float v) { return singleText(v); };
    write("Type", kType);
    write("Version", "2");
    write("Title", ws.Title);
    write("Notes", replaceAll(replaceAll(ws.Notes, "\n", ""), "\r", "|"));
    write("Interface", std::to_string(ws.Interface));
    write("Port", std::to_string(ws.Port));
    write("Baudrate", std::to_string(ws.Baudrate));
    write("Channels", std::to_string(ws.Channels));
    write("logInterval", std::to_string(ws.LogInterval));
    write("RFChannel", std::to_string(ws.RFChannel));
    write("BSAddress", std::to_string(ws.BSAddress));
    write("KeepAwake", std::to_string(ws.KeepAwake));
    const int channels = std::min<int>(ws.Channels, static_cast<int>(ws.Items.size()));
    for (int n = 1; n <= channels; ++n) {
        const ItemClass &item = ws.item(n);
        const std::string suffix = std::to_string(n);
        write("DataTagList" + suffix, item.DataTagList);
        write("Caption" + suffix, item.Caption);
        write("Format" + suffix, item.Format);
        write("TareValue" + suffix, number(item.TareValue));
        write("Timeout" + suffix, std::to_string(item.Timeout));
        write("Default" + suffix, item.Default ? number(*item.Default) : std::string());
        write("Underload" + suffix, number(item.Underload));
        write("Overload" + suffix, number(item.Overload));
        write("Function" + suffix, std::to_string(functionCode(item.Functionality)));
    }
    FileError error;
    if (!saveIniFile(FileName, doc, &error)) {
        prompts.message("Warning",
            "An error occurred while trying to save workspace to " + FileName
                + "\r\nError: " + error.description,
            PromptIcon::Exclamation);
        return false;
    }
    return true;
}

} // namespace corvalog
