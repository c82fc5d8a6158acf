#include "support/machine.h"

#include <fstream>

namespace test_support {

void WriteSettings(std::string_view text) {
    std::filesystem::create_directories(SettingsFilePath().parent_path());
    std::ofstream file(SettingsFilePath(), std::ios::binary | std::ios::trunc);
    file.exceptions(std::ios::badbit | std::ios::failbit);
    file << text << std::flush;
}

void RemoveSettings() {
    std::filesystem::remove(SettingsFilePath());
}

}  // namespace test_support
