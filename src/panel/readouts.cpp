#include "panel/readouts.h"

#include <array>
#include <cstdio>
#include <string>

#include "link/line_gate.h"
#include "link/link_health.h"
#include "log/zbr_log.h"
#include "replies/queries.h"
#include "resources/resource_ids.h"
#include "settings/settings.h"

namespace {

/// Number the readouts shown since load. The panel's thread only.
std::uint32_t PositionReadoutCount = 0;
std::uint32_t StatusReadoutCount = 0;

std::string AxisText(std::int32_t counts, std::uint8_t error, const std::string& errorText) {
    return error == 1 ? errorText : std::to_string(counts);
}

std::string PositionText(const CposmrReply& reply) {
    return std::to_string(PositionReadoutCount) +
           ": X=" + AxisText(reply.x, reply.xError, reply.xErrorText) +
           ", Y=" + AxisText(reply.y, reply.yError, reply.yErrorText) +
           ", Z=" + AxisText(reply.z, reply.zError, reply.zErrorText);
}

std::string StatusText(const SswcReply& reply) {
    return std::to_string(StatusReadoutCount) + ": EMER_SW=" + std::to_string(reply.EMER_SW) +
           ", SW_Y=" + std::to_string(reply.SW_Y) + ", DATA_SW=" + std::to_string(reply.DATA_SW) +
           ", FOOT_SW=" + std::to_string(reply.FOOT_SW) +
           ", MEAS_MODE=" + std::to_string(reply.MEAS_MODE);
}

/// One readout: the number goes up only for a reply that is shown.
template <typename Reply>
void ShowReadout(HWND panel, int control, bool (*query)(Reply&), std::uint32_t& count,
                 std::string (*text)(const Reply&)) {
    MyPanelReadPortFields(panel);
    Reply reply;
    if (query(reply)) {
        ++count;
        SetDlgItemTextA(panel, control, text(reply).c_str());
    }
    MyPanelShowRecovery(panel);
}

}  // namespace

void MyPanelReadPortFields(HWND panel) {
    const auto read = [panel](int control) {
        return GetDlgItemInt(panel, control, nullptr, FALSE);
    };
    PortSettings settings{};
    settings.Port = static_cast<std::int32_t>(read(IDC_PORT));
    settings.BaudRate = read(IDC_BAUD_RATE);
    settings.ByteSize = read(IDC_BYTE_SIZE);
    settings.Parity = read(IDC_PARITY);
    settings.StopBits = read(IDC_STOP_BITS);
    StorePortSettings(settings);
}

void MyPanelGetPosition(HWND panel) {
    ShowReadout(panel, IDC_POSITION, MyQueryCposmr, PositionReadoutCount, PositionText);
}

void MyPanelGetStatus(HWND panel) {
    ShowReadout(panel, IDC_STATUS, MyQuerySswc, StatusReadoutCount, StatusText);
}

void MyPanelShowRecovery(HWND panel) {
    std::array<char, 80> text{};
    const int length = std::snprintf(text.data(), text.size(), "Reopen %d, StrictReplies %d",
                                     ReopenWanted ? 1 : 0, StrictRepliesWanted ? 1 : 0);
    if (ReopenWanted) {
        const auto used = static_cast<std::size_t>(length);
        std::snprintf(text.data() + used, text.size() - used, "%s, losses %u",
                      LineIsLost() ? ", LINE LOST" : "", LineLosses());
    }
    SetDlgItemTextA(panel, IDC_RECOVERY, text.data());
}

void MyOvsCncCallbackFunc(bool finished, bool error, const McndReply*, std::intptr_t data) {
    WriteLine("MyOvsCncCallbackFunc finished=", Decimal{finished ? 1 : 0},
              " error=", Decimal{error ? 1 : 0}, " data=", Decimal{static_cast<std::int32_t>(data)},
              "\n");
}
