#include "panel/actions.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "link/exchange.h"
#include "log/zbr_log.h"
#include "panel/readouts.h"
#include "resources/resource_ids.h"
#include "worker/moves.h"

namespace {

/// What a box's text is read into, closing zero included.
using BoxText = std::array<char, 256>;
constexpr std::size_t LineEndLength = 2;
constexpr int CountsPerPercent = 100;
constexpr const char* TargetSeparators = ", ";
/// Stands behind " data=" in the log line of a move's end.
constexpr std::intptr_t MoveMark = 123;

BoxText ReadBox(HWND panel, int control, std::size_t room = BoxText{}.size()) {
    BoxText text{};
    GetDlgItemTextA(panel, control, text.data(), static_cast<int>(room));
    return text;
}

/// Cuts the text at runs of separators, as far as there is room for its parts; gives their count.
std::size_t Cut(char* text, std::array<const char*, 3>& parts) {
    std::size_t count = 0;
    text += std::strspn(text, TargetSeparators);
    while (*text != 0 && count < parts.size()) {
        parts[count++] = text;
        text += std::strcspn(text, TargetSeparators);
        if (*text != 0) {
            *text++ = 0;
        }
        text += std::strspn(text, TargetSeparators);
    }
    return count;
}

std::string LampCommand(const char* setPrefix, const char* percentText) {
    const int percent = std::clamp(std::stoi(percentText), 0, 100);
    return setPrefix + std::to_string(percent * CountsPerPercent) + RequestEnd;
}

}  // namespace

void MyPanelOpenComm() {
    const ComLockHold hold;
    ZbComOpen();
}

void MyPanelSend(HWND panel) {
    const BoxText text = ReadBox(panel, IDC_SEND_TEXT, BoxText{}.size() - LineEndLength);
    std::string reply;
    if (ExchangeLocked((text.data() + std::string(RequestEnd)).c_str(), reply)) {
        SetDlgItemTextA(panel, IDC_RECEIVED, reply.c_str());
    }
}

void MyPanelSetLight(HWND panel, int valueControl, int resultControl, const char* setPrefix,
                     const char* query) {
    const BoxText text = ReadBox(panel, valueControl);
    try {
        const std::string command = LampCommand(setPrefix, text.data());
        WriteLine("SEND=", command, "\n");
        std::string reply;
        if (ExchangeLocked(command.c_str(), reply) && ExchangeLocked(query, reply)) {
            SetDlgItemTextA(panel, resultControl, reply.c_str());
        }
    } catch (const std::exception&) {
        WriteLine("error converting: ", text.data(), "\n");
    }
}

void MyPanelSetPosition(HWND panel) {
    BoxText text = ReadBox(panel, IDC_TARGET);
    std::array<const char*, 3> parts{"", "", "0"};
    if (Cut(text.data(), parts) < 2) {
        return;
    }
    MoveAbsolute(std::atof(parts[0]), std::atof(parts[1]), std::atof(parts[2]),
                 MyOvsCncCallbackFunc, MoveMark);
}
