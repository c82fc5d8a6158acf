#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "native/handle.h"

namespace {

struct ErrorText {
    DWORD code;
    std::u16string_view text;
};

/// Every code that the layer produces.
constexpr ErrorText ErrorTexts[] = {
    {ERROR_SUCCESS, u"The operation completed successfully.\r\n"},
    {ERROR_INVALID_FUNCTION, u"Incorrect function.\r\n"},
    {ERROR_FILE_NOT_FOUND, u"The system cannot find the file specified.\r\n"},
    {ERROR_PATH_NOT_FOUND, u"The system cannot find the path specified.\r\n"},
    {ERROR_ACCESS_DENIED, u"Access is denied.\r\n"},
    {ERROR_INVALID_HANDLE, u"The handle is invalid.\r\n"},
    {ERROR_NOT_ENOUGH_MEMORY,
     u"Not enough memory resources are available to process this command.\r\n"},
    {ERROR_BAD_COMMAND, u"The device does not recognize the command.\r\n"},
    {ERROR_GEN_FAILURE, u"A device attached to the system is not functioning.\r\n"},
    {ERROR_NOT_SUPPORTED, u"The request is not supported.\r\n"},
    {ERROR_INVALID_PARAMETER, u"The parameter is incorrect.\r\n"},
    {ERROR_ALREADY_EXISTS, u"Cannot create a file when that file already exists.\r\n"},
    {ERROR_FILENAME_EXCED_RANGE, u"The filename or extension is too long.\r\n"},
    {ERROR_NOT_OWNER, u"Attempt to release mutex not owned by caller.\r\n"},
    {ERROR_MR_MID_NOT_FOUND,
     u"The system cannot find message text for message number 0x%1 in the message file for "
     u"%2.\r\n"},
    {ERROR_INVALID_ADDRESS, u"Attempt to access invalid address.\r\n"},
    {ERROR_IO_DEVICE, u"The request could not be performed because of an I/O device error.\r\n"},
    {ERROR_INVALID_WINDOW_HANDLE, u"Invalid window handle.\r\n"},
    {ERROR_CONTROL_ID_NOT_FOUND, u"Control ID not found.\r\n"},
    {ERROR_NO_SYSTEM_RESOURCES,
     u"Insufficient system resources exist to complete the requested service.\r\n"},
    {ERROR_RESOURCE_NAME_NOT_FOUND,
     u"The specified resource name cannot be found in the image file.\r\n"},
    {ERROR_NOT_ENOUGH_QUOTA, u"Not enough quota is available to process this command.\r\n"},
};

}  // namespace

DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                     DWORD /*size*/, va_list* /*arguments*/) {
    constexpr DWORD Flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    constexpr DWORD UserLanguage = 0x400;
    if (flags != Flags || source != nullptr || (language != 0 && language != UserLanguage)) {
        return posix::Fail(ERROR_NOT_SUPPORTED, DWORD{0});
    }
    const auto* found = std::find_if(std::begin(ErrorTexts), std::end(ErrorTexts),
                                     [&](const ErrorText& entry) { return entry.code == code; });
    if (found == std::end(ErrorTexts)) {
        return posix::Fail(ERROR_MR_MID_NOT_FOUND, DWORD{0});
    }
    const std::u16string_view text = found->text;
    auto* copy = static_cast<WCHAR*>(std::calloc(text.size() + 1, sizeof(WCHAR)));
    if (copy == nullptr) {
        return posix::Fail(ERROR_NOT_ENOUGH_MEMORY, DWORD{0});
    }
    std::copy(text.begin(), text.end(), copy);
    *reinterpret_cast<LPWSTR*>(buffer) = copy;
    return static_cast<DWORD>(text.size());
}

HLOCAL LocalFree(HLOCAL memory) {
    std::free(memory);
    return nullptr;
}
