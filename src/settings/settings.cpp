#include "settings/settings.h"

#include <cmath>
#include <iterator>

HINSTANCE ModuleInstance = nullptr;
std::atomic<std::uint8_t> SerialLogEnabled{0};
std::atomic<double> ScaleFactor{0.0};
std::int32_t Delay = 0;
bool ReopenWanted = false;
bool StrictRepliesWanted = false;
CRITICAL_SECTION PortSettingsLock;

namespace {

const WCHAR* const SettingsFile = WIDE("C:/Users/Public/Documents/Zembra/Settings/zembra.ini");
const WCHAR* const Section = WIDE("Ovisk");
constexpr double DefaultScaleFactor = 100.0;

struct IntegerKey {
    const WCHAR* name;
    int fallback;
};

// All keys of the section. ScaleFactor, the only text, has its default above.
//                                                       unit           read
constexpr IntegerKey SerialLogKey{WIDE("SerialLog"), 0};    // 1: on       load, then every 2 s
const WCHAR* const ScaleFactorKey = WIDE("ScaleFactor");    // counts      load, then every 2 s
constexpr IntegerKey PortKey{WIDE("Port"), 3};              // number      load
constexpr IntegerKey DelayKey{WIDE("Delay"), 10};           // ms          load
constexpr IntegerKey BaudRateKey{WIDE("BaudRate"), 38400};  // bits/s    load
constexpr IntegerKey ByteSizeKey{WIDE("ByteSize"), 8};      // bits        load
constexpr IntegerKey ParityKey{WIDE("Parity"), 0};          // code        load
constexpr IntegerKey StopBitsKey{WIDE("StopBits"), 0};      // code        load
constexpr IntegerKey ReopenKey{WIDE("Reopen"), 0};          // 1: on       load
constexpr IntegerKey StrictRepliesKey{WIDE("StrictReplies"), 0};  // 1: on  load
constexpr IntegerKey CommandPollKey{WIDE("CmdPoll"), 80};         // ms         start of the worker
constexpr IntegerKey DialogKey{WIDE("Dialog"), 0};                // 1: panel   each start

PortSettings portSettings ZB_GUARDED_BY(PortSettingsLock){};

std::uint32_t Read(const IntegerKey& key) {
    return GetPrivateProfileIntW(Section, key.name, key.fallback, SettingsFile);
}

double ReadScaleFactor() {
    WCHAR text[512];
    const DWORD length = GetPrivateProfileStringW(
        Section, ScaleFactorKey, WIDE(""), text, static_cast<DWORD>(std::size(text)), SettingsFile);
    if (length == 0) {
        return DefaultScaleFactor;
    }
    const double value = _wtof(text);
    // Nothing can be divided by these, and a host that shows a wrong position is worse than one
    // that shows the default unit.
    return value == 0.0 || !std::isfinite(value) ? DefaultScaleFactor : value;
}

}  // namespace

PortSettings CurrentPortSettings() {
    const LockHold hold(PortSettingsLock);
    return portSettings;
}

void StorePortSettings(const PortSettings& settings) {
    const LockHold hold(PortSettingsLock);
    portSettings = settings;
}

void ReloadSettings() {
    SerialLogEnabled.store(Read(SerialLogKey) == 1 ? 1 : 0);
    ScaleFactor.store(ReadScaleFactor());
}

void ReadSettingsAtLoad() {
    ReloadSettings();
    PortSettings settings{};
    settings.Port = static_cast<std::int32_t>(Read(PortKey));
    Delay = static_cast<std::int32_t>(Read(DelayKey));
    settings.BaudRate = Read(BaudRateKey);
    settings.ByteSize = Read(ByteSizeKey);
    settings.Parity = Read(ParityKey);
    settings.StopBits = Read(StopBitsKey);
    StorePortSettings(settings);
    ReopenWanted = Read(ReopenKey) == 1;
    StrictRepliesWanted = Read(StrictRepliesKey) == 1;
}

std::uint32_t ReadCommandPoll() {
    return Read(CommandPollKey);
}

bool ReadPanelWanted() {
    return Read(DialogKey) == 1;
}
