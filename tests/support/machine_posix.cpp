#include <dlfcn.h>

#include "native/machine.h"

#include "support/machine.h"

namespace test_support {

std::filesystem::path SettingsFilePath() {
    return std::filesystem::path(MachineRoot()) /
           "drive_c/users/public/Documents/Zembra/Settings/zembra.ini";
}

bool LibraryIsLoaded(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr && dlclose(library) == 0;
}

}  // namespace test_support
