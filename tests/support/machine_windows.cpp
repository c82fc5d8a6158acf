#include "support/machine.h"

#include "platform/win32.h"

namespace test_support {

std::filesystem::path SettingsFilePath() {
    return "C:/Users/Public/Documents/Zembra/Settings/zembra.ini";
}

bool LibraryIsLoaded(const char* file) {
    return GetModuleHandleA(file) != nullptr;
}

}  // namespace test_support
