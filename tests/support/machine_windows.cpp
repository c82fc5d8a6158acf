#include "support/machine.h"

namespace test_support {

std::filesystem::path SettingsFilePath() {
    return "C:/Users/Public/Documents/Zembra/Settings/zembra.ini";
}

}  // namespace test_support
