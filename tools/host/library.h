#pragma once

#include <filesystem>

/// The platform's loader of dynamic libraries; one implementation per platform.
namespace host_tool {

/// Loads the library. Throws std::runtime_error with the platform's reason.
void* LoadLibraryFile(const std::filesystem::path& path);
/// Gives the library back; its code is gone afterwards.
void UnloadLibraryFile(void* library);
/// The address of an exported name; null when there is none.
void* FindExport(void* library, const char* name);

}  // namespace host_tool
