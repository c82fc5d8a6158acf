#include "panel/readouts.h"

#include <string>

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

void MyOvsCncCallbackFunc(bool finished, bool error, const McndReply*, std::intptr_t data) {
    WriteLine("MyOvsCncCallbackFunc finished=", Decimal{finished ? 1 : 0},
              " error=", Decimal{error ? 1 : 0}, " data=", Decimal{static_cast<std::int32_t>(data)},
              "\n");
}
