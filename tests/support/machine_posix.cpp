#include "platform/posix/machine.h"

#include "support/machine.h"

namespace test_support {

std::filesystem::path SettingsFilePath() {
    return std::filesystem::path(MachineRoot()) /
           "drive_c/users/public/Documents/Zembra/Settings/zembra.ini";
}

}  // namespace test_support
