#pragma once

#include <filesystem>
#include <string_view>

namespace test_support {

/// Where the machine's settings file lies, whether it exists or not.
std::filesystem::path SettingsFilePath();

/// Replaces the settings file, bytes as given, and makes its folder.
void WriteSettings(std::string_view text);

void RemoveSettings();

/// Whether this process has the library, whoever loaded it.
bool LibraryIsLoaded(const char* file);

}  // namespace test_support
