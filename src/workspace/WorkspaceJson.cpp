#include "WorkspaceJson.h"

#include "runtime/NumberText.h"

#include <string>

namespace corvalog {

namespace {

std::string jsonNumber(float v)
{
    return singleText(v, '.');
}

} // namespace

void writeWorkspaceJson(JsonWriter &json, const WorkspaceClass &ws, std::string_view key)
{
    json.beginObject(key);
    json.number("Version", std::to_string(ws.Version));
    json.text("Title", ws.Title);
    json.text("Notes", ws.Notes);
    json.number("Interface", std::to_string(ws.Interface));
    json.number("Port", std::to_string(ws.Port));
    json.number("Baudrate", std::to_string(ws.Baudrate));
    json.number("Channels", std::to_string(ws.Channels));
    json.number("LogInterval", std::to_string(ws.LogInterval));
    json.number("RFChannel", std::to_string(ws.RFChannel));
    json.number("BSAddress", std::to_string(ws.BSAddress));
    json.number("KeepAwake", std::to_string(ws.KeepAwake));
    json.beginArray("items");
    for (const ItemClass &item : ws.Items) {
        json.beginObject();
        json.number("DataTag", std::to_string(item.DataTag));
        json.text("DataTagList", item.DataTagList);
        json.text("Caption", item.Caption);
        json.text("Format", item.Format);
        json.number("TareValue", jsonNumber(item.TareValue));
        json.number("Timeout", std::to_string(item.Timeout));
        json.number("Default", item.Default ? jsonNumber(*item.Default) : "null");
        json.number("Underload", jsonNumber(item.Underload));
        json.number("Overload", jsonNumber(item.Overload));
        json.number("Functionality", std::to_string(functionCode(item.Functionality)));
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

} // namespace corvalog
