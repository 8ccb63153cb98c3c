#include "Commands.h"
#include "acquisition/PacketDecoder.h"
#include "acquisition/PacketHandler.h"
#include "runtime/Clock.h"
#include "runtime/Convert.h"
#include "values/ScriptClass.h"

#include <memory>

namespace corvalog::cli {

namespace {

std::int16_t flagWord(CliArgs &args, const char *option, bool required)
{
    const std::optional<std::string> text = args.take(option);
    if (!text) {
        if (required)
            throw UsageError(std::string(option) + " is required");
        return 0;
    }
    return static_cast<std::int16_t>(parseWhole(*text, -32768, 65535, option));
}

std::int16_t signedWord(CliArgs &args, const char *option)
{
    const std::optional<std::string> text = args.take(option);
    if (!text)
        throw UsageError(std::string(option) + " is required");
    return static_cast<std::int16_t>(parseWhole(*text, -32768, 32767, option));
}

} // namespace

int runDecode(CliArgs &args, std::ostream &out)
{
    const Variant v = DecodeDPP(parseHexBytes(args.positional(1)[0]));
    out << typeName(v.type()) << " " << CStr(v) << "\n";
    return 0;
}

int runPacket(CliArgs &args, std::ostream &out)
{
    PacketNotification packet;
    const std::optional<std::string> tag = args.take("--tag");
    if (!tag)
        throw UsageError("--tag is required");
    packet.Datatag = parseDataTag(*tag, 8);
    const std::optional<std::string> text = args.take("--value");
    const std::optional<std::string> hex = args.take("--value-hex");
    if (text.has_value() == hex.has_value())
        throw UsageError("give exactly one of --value and --value-hex");
    packet.Value = text ? *text : parseHexBytes(*hex);
    packet.RSSI = signedWord(args, "--rssi");
    packet.CV = signedWord(args, "--cv");
    packet.BattLow = flagWord(args, "--batt", false);
    packet.Error = flagWord(args, "--err", false);
    args.positional(0);

    SystemClock clock;
    auto tables = std::make_unique<ScriptClass>(clock);
    PacketHandler handler(*tables, numberLocale());
    handler.DP_PacketArrived(packet);
    if (handler.droppedCount() > 0) {
        out << "error " << handler.lastErrorNumber() << ": " << handler.lastErrorDescription()
            << "\n";
        return 1;
    }
    const std::int32_t t = packet.Datatag;
    out << "T=" << CStr(Variant::single(tables->T(t))) << " TL=" << tables->TL(t)
        << " TB=" << tables->TB(t) << " TE=" << tables->TE(t) << "\n";
    return 0;
}

} // namespace corvalog::cli
