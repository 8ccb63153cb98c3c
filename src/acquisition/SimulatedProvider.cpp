#include "SimulatedProvider.h"

#include "SimulatedModules.h"
#include "runtime/NumberText.h"
#include "runtime/VbError.h"

#include <algorithm>
#include <cmath>

namespace corvalog {

namespace {

enum class Kind {
    LoadCell,
    Temperature,
    Counter,
    RawRecord,
    WeakLink,
    LowBattery,
    Faulty,
    Intermittent
};

struct ModuleKind {
    Kind kind;
    std::uint16_t tag;
    double rate; // packets/s before rateScale
};

// The load cell is the one people watch move, so it sends fastest; the temperature changes
// too slowly to need more than two packets a second.
constexpr ModuleKind kModuleKinds[] = {
    { Kind::LoadCell, simtags::LoadCell, 50 },
    { Kind::Temperature, simtags::Temperature, 2 },
    { Kind::Counter, simtags::Counter, 10 },
    { Kind::RawRecord, simtags::RawRecord, 10 },
    { Kind::WeakLink, simtags::WeakLink, 5 },
    { Kind::LowBattery, simtags::LowBattery, 5 },
    { Kind::Faulty, simtags::Faulty, 10 },
    { Kind::Intermittent, simtags::Intermittent, 10 },
};

constexpr double kMinRate = 1.0;
constexpr double kMaxRate = 200.0;
constexpr std::size_t kRawRecordLength = 117;

// splitmix64: tiny, fast, and bit-exact on every platform, which std:: distributions are not.
struct Random {
    std::uint64_t state;

    std::uint64_t next()
    {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // Uniform in [0, 1).
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    // Uniform integer in [lo, hi].
    int between(int lo, int hi) { return lo + static_cast<int>(uniform() * (hi - lo + 1)); }
    // Roughly standard normal (bounded at +-3.5): a sum of uniforms needs no libm, so it is
    // exact everywhere. The draws are summed one statement at a time because the order of
    // operands within an expression is the compiler's choice.
    double normal()
    {
        double sum = uniform();
        for (int i = 0; i < 3; ++i)
            sum += uniform();
        return (sum - 2.0) * 1.7320508;
    }
};

double rateOf(const ModuleKind &kind, double scale)
{
    const double rate = kind.rate * scale;
    return rate >= kMinRate ? std::min(rate, kMaxRate) : kMinRate;
}

double rounded(double value, double step)
{
    return std::round(value / step) * step;
}

// One step of a mean-reverting random walk with the given spread and time constant, so a
// reading wanders but never runs away, whatever the module's rate.
void wander(double &x, double mean, double spread, double tauSeconds, double dtSeconds, Random &r)
{
    const double pull = std::min(dtSeconds / tauSeconds, 1.0);
    x += (mean - x) * pull + spread * std::sqrt(2.0 * pull) * r.normal();
}

} // namespace

struct SimulatedProvider::Module {
    Kind kind;
    std::uint16_t tag;
    double period; // ms between packets
    double phase; // instant of the first packet, so modules do not all send together
    std::uint64_t slot = 0; // packets due so far, sent or not
    Random random;
    bool paused = false;
    std::uint64_t sent = 0;

    double level = 0.0; // the wandering part of the reading
    double link = 0.0; // weak link: the quality sum it wanders around
    double battLowAt = 0.0; // low battery: ms from which the flag is set
    int errorPackets = 0; // faulty: packets left in the current error burst
    std::int16_t errorFlags = 0;
    bool silent = false; // intermittent: in a silent stretch
    double stretchEnd = 0.0;

    // The reading of the current slot.
    double value = 0.0;
    std::int16_t rssi = 0;
    std::int16_t cv = 0;
    std::int16_t battLow = 0;
    std::int16_t error = 0;

    Module(const ModuleKind &k, double rate, std::uint64_t seed)
        : kind(k.kind)
        , tag(k.tag)
        , period(1000.0 / rate)
        , random { seed ^ (k.tag * 0xD1B54A32D192ED03ull) }
    {
        phase = random.uniform() * period;
        switch (kind) {
        case Kind::Temperature:
            level = 22.0 + 1.5 * random.normal();
            break;
        case Kind::RawRecord:
            level = 50000.0 * random.normal();
            break;
        case Kind::WeakLink:
            level = 1013.25;
            link = 43.5;
            break;
        case Kind::LowBattery:
            battLowAt = 20000.0 + 20000.0 * random.uniform();
            break;
        case Kind::Faulty:
            level = 100.0;
            break;
        case Kind::Intermittent:
            level = 7.5;
            stretchEnd = 4000.0 + 6000.0 * random.uniform();
            break;
        default:
            break;
        }
    }

    double dueAt() const { return phase + static_cast<double>(slot) * period; }

    // Moves the module's state on to the instant of its next slot; false when it keeps silent
    // by its own nature. Every slot draws the same numbers whether or not it is heard, so a
    // reading depends on time alone, not on when the module was asleep or paused.
    bool evolve(double ms)
    {
        const double dt = period / 1000.0;
        rssi = static_cast<std::int16_t>(-55 + random.between(-5, 5));
        cv = static_cast<std::int16_t>(100 + random.between(-4, 4));
        switch (kind) {
        case Kind::LoadCell:
            wander(level, 0.0, 0.15, 60.0, dt, random);
            value = rounded(12.5 + level + 0.004 * random.normal(), 0.001);
            break;
        case Kind::Temperature:
            wander(level, 22.0, 1.5, 240.0, dt, random);
            value = rounded(level + 0.02 * random.normal(), 0.01);
            break;
        case Kind::Counter:
            break;
        case Kind::RawRecord:
            wander(level, 0.0, 50000.0, 30.0, dt, random);
            // Within 2^24, so the Single the decoder makes of it is exact.
            value = std::clamp(std::round(level + 40.0 * random.normal()), -16777215.0, 16777215.0);
            break;
        case Kind::WeakLink: {
            wander(level, 1013.25, 2.0, 120.0, dt, random);
            value = rounded(level, 0.01);
            // q = (RSSI + 94) + (CV - 55) between 34 and 53 keeps link quality within 21..69.
            wander(link, 43.5, 6.0, 8.0, dt, random);
            link = std::clamp(link, 34.0, 53.0);
            const int q = static_cast<int>(std::lround(link));
            rssi = static_cast<std::int16_t>(-76 + random.between(-3, 3));
            cv = static_cast<std::int16_t>(q - 39 - rssi);
            break;
        }
        case Kind::LowBattery:
            // The supply voltage, crossing 2.9 V as the flag comes on.
            value = rounded(
                std::max(2.4, 3.05 - 0.15 * ms / battLowAt) + 0.003 * random.normal(), 0.001);
            battLow = ms >= battLowAt ? 1 : 0;
            break;
        case Kind::Faulty:
            wander(level, 100.0, 5.0, 30.0, dt, random);
            value = rounded(level, 0.01);
            if (errorPackets == 0 && random.uniform() < 0.02) {
                errorPackets = random.between(1, 8);
                errorFlags = static_cast<std::int16_t>(1 << random.between(0, 3));
            }
            error = errorPackets > 0 ? errorFlags : 0;
            errorPackets = std::max(errorPackets - 1, 0);
            break;
        case Kind::Intermittent:
            wander(level, 7.5, 0.5, 20.0, dt, random);
            value = rounded(level, 0.01);
            // Silences of 3.5 s or more outlast any timeout a workspace is likely to set.
            while (ms >= stretchEnd) {
                silent = !silent;
                stretchEnd += silent ? 3500.0 + 4500.0 * random.uniform()
                                     : 4000.0 + 6000.0 * random.uniform();
            }
            return !silent;
        }
        return true;
    }

    PacketNotification packet(std::int32_t baseStation)
    {
        ++sent;
        PacketNotification p;
        p.BaseStation = baseStation;
        p.Datatag = tag;
        p.RSSI = rssi;
        p.CV = cv;
        p.BattLow = battLow;
        p.Error = error;
        if (kind == Kind::Counter) {
            p.Value = std::to_string(sent);
        } else if (kind == Kind::RawRecord) {
            // A big-endian Long, the packet's sequence number, then filler.
            p.Value.assign(kRawRecordLength, '\x55');
            const auto raw = static_cast<std::uint32_t>(static_cast<std::int32_t>(value));
            const auto sequence = static_cast<std::uint32_t>(sent);
            for (int i = 0; i < 4; ++i) {
                p.Value[i] = static_cast<char>(raw >> (24 - 8 * i));
                p.Value[4 + i] = static_cast<char>(sequence >> (24 - 8 * i));
            }
        } else {
            // Few enough digits that the Single's text reads back as the same Single.
            p.Value = singleText(static_cast<float>(value));
        }
        return p;
    }
};

SimulatedProvider::SimulatedProvider(SimulationOptions options, QObject *parent)
    : DataProvider(parent)
    , m_options(options)
{
    restart();
    connect(&m_timer, &QTimer::timeout, this, &SimulatedProvider::tick);
}

SimulatedProvider::~SimulatedProvider() = default;

std::string SimulatedProvider::name() const
{
    return "Corvalog simulated base station";
}

std::int16_t SimulatedProvider::OpenInterface(std::int16_t port, std::int32_t baudrate)
{
    const bool usb = port == 0 && baudrate == 0;
    if (!usb && (port < 1 || baudrate <= 0))
        return kNoSuchPort;
    restart();
    m_open = true;
    if (m_options.realTime) {
        m_sinceOpen.start();
        m_timer.start(kTickMs);
    }
    return 0;
}

void SimulatedProvider::CloseInterface()
{
    m_timer.stop();
    m_open = false;
}

void SimulatedProvider::WakeAll(std::uint8_t baseStationAddress)
{
    requireOpen();
    requireAddress(baseStationAddress);
    m_asleep = false;
}

void SimulatedProvider::SleepAll()
{
    requireOpen();
    m_asleep = true;
}

void SimulatedProvider::KeepAwakeAll()
{
    requireOpen();
    m_keepAwakeUntil = m_now + kKeepAwakeMs;
}

float SimulatedProvider::ComVersion()
{
    return 2.1f;
}

float SimulatedProvider::DllVersion()
{
    return 1.4f;
}

void SimulatedProvider::SetRadioChannel(std::uint8_t baseStationAddress, std::uint8_t radioChannel)
{
    requireOpen();
    requireAddress(baseStationAddress);
    m_channel = radioChannel;
}

std::int32_t SimulatedProvider::DetectBaseStation(std::uint8_t baseStationAddress)
{
    return m_open && baseStationAddress == m_options.baseStationAddress ? 1 : 0;
}

std::int32_t SimulatedProvider::SendCommand(std::uint8_t &baseStationAddress, std::int32_t datatag,
    std::uint8_t &command, std::string & /*data*/)
{
    requireOpen();
    if (baseStationAddress != m_options.baseStationAddress)
        return kWrongBaseStation;
    const auto module = std::find_if(m_modules.begin(), m_modules.end(),
        [datatag](const Module &m) { return m.tag == datatag; });
    if (module == m_modules.end())
        return kUnknownModule;
    if (!modulesHearAt(m_now))
        return kNoAcknowledgement;
    // One draw per command that reaches a module, from a stream of its own, so the failures
    // of a seed do not depend on the packets sent in between.
    Random random { m_commandRandom };
    const bool lost = random.uniform() < m_options.commandFailureRate;
    m_commandRandom = random.state;
    if (lost)
        return kNoAcknowledgement;
    if (command == kPause)
        module->paused = true;
    else if (command == kResume)
        module->paused = false;
    return 0;
}

void SimulatedProvider::advanceTo(double msSinceOpen)
{
    PacketBatch batch = packetsDueUntil(msSinceOpen, &m_lastTimes);
    deliver(std::move(batch));
}

PacketBatch SimulatedProvider::packetsDueUntil(double msSinceOpen, std::vector<double> *times)
{
    struct Due {
        double at;
        PacketNotification packet;
    };
    std::vector<Due> due;
    if (m_open) {
        for (Module &m : m_modules) {
            for (double at = m.dueAt(); at <= msSinceOpen; at = m.dueAt()) {
                ++m.slot;
                if (m.evolve(at) && !m.paused && modulesHearAt(at))
                    due.push_back({ at, m.packet(m_options.baseStationAddress) });
            }
        }
        m_now = std::max(m_now, msSinceOpen);
    }
    // Modules were visited in table order, so a stable sort orders ties by it.
    std::stable_sort(
        due.begin(), due.end(), [](const Due &a, const Due &b) { return a.at < b.at; });
    PacketBatch batch;
    batch.reserve(due.size());
    if (times)
        times->clear();
    for (Due &d : due) {
        batch.push_back(std::move(d.packet));
        if (times)
            times->push_back(d.at);
    }
    return batch;
}

std::optional<double> SimulatedProvider::nextPacketTime()
{
    if (!m_open || m_modules.empty())
        return std::nullopt;
    double next = m_modules.front().dueAt();
    for (const Module &m : m_modules)
        next = std::min(next, m.dueAt());
    return next;
}

double SimulatedProvider::packetRate(std::int32_t datatag) const
{
    for (const ModuleKind &kind : kModuleKinds) {
        if (kind.tag == datatag)
            return rateOf(kind, m_options.rateScale);
    }
    return 0.0;
}

void SimulatedProvider::restart()
{
    m_modules.clear();
    for (const ModuleKind &kind : kModuleKinds)
        m_modules.emplace_back(kind, rateOf(kind, m_options.rateScale), m_options.seed);
    m_now = 0.0;
    m_channel = m_options.radioChannel;
    m_asleep = false;
    m_keepAwakeUntil = 0.0;
    m_commandRandom = m_options.seed ^ 0xC0A1F00Dull;
    m_lastTimes.clear();
}

void SimulatedProvider::requireOpen() const
{
    if (!m_open)
        throw VbError(kErrorNotOpen, "The base station is not open");
}

void SimulatedProvider::requireAddress(std::uint8_t baseStationAddress) const
{
    if (baseStationAddress != m_options.baseStationAddress)
        throw VbError(kErrorNoBaseStation,
            "No base station answers at address " + std::to_string(baseStationAddress));
}

bool SimulatedProvider::modulesHearAt(double ms) const
{
    return m_channel == m_options.radioChannel && (!m_asleep || ms < m_keepAwakeUntil);
}

void SimulatedProvider::tick()
{
    advanceTo(static_cast<double>(m_sinceOpen.nsecsElapsed()) / 1e6);
}

} // namespace corvalog
