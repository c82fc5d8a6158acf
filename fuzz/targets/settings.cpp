// The settings file: any bytes.

#include <cmath>
#include <fstream>

#include "settings/settings.h"
#include "targets/fuzz_module.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::BringUp();
    static const std::string path = fuzz::SettingsPath();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    ReadSettingsAtLoad();
    FUZZ_REQUIRE(std::isfinite(ScaleFactor.load()) && ScaleFactor.load() != 0.0);
    FUZZ_REQUIRE(SerialLogEnabled.load() <= 1);
    ReadCommandPoll();
    ReadPanelWanted();
    return 0;
}
