#include "panel/panel.h"

#include "homing/automatic_homing.h"
#include "homing/manual_homing.h"
#include "link/com_lock.h"
#include "link/exchange.h"
#include "panel/actions.h"
#include "panel/buffer_boxes.h"
#include "panel/readouts.h"
#include "platform/guard.h"
#include "resources/resource_ids.h"
#include "settings/settings.h"

std::atomic<HWND> PanelWindow{nullptr};

namespace {

/// Brings a hidden panel back.
constexpr UINT ShowMessage = WM_APP + 2;
constexpr UINT TimerMilliseconds = 2000;
constexpr UINT FirstPercent = 25;

/// A start is at work on the panel; another one leaves it to that.
std::atomic<bool> panelIsBeingMade{false};

/// The timer runs the position readout. The panel's thread only, as the next.
bool PanelStreamPosition = false;
bool timerRuns = false;

void FillFields(HWND window) {
    const PortSettings settings = CurrentPortSettings();
    SetDlgItemInt(window, IDC_PORT, static_cast<UINT>(settings.Port), FALSE);
    SetDlgItemInt(window, IDC_BAUD_RATE, settings.BaudRate, FALSE);
    SetDlgItemInt(window, IDC_BYTE_SIZE, settings.ByteSize, FALSE);
    SetDlgItemInt(window, IDC_PARITY, settings.Parity, FALSE);
    SetDlgItemInt(window, IDC_STOP_BITS, settings.StopBits, FALSE);
    SetDlgItemInt(window, IDC_LIGHT_1_PERCENT, FirstPercent, FALSE);
    SetDlgItemInt(window, IDC_LIGHT_2_PERCENT, FirstPercent, FALSE);
}

/// The timer runs for the panel's whole life, whether positions are streamed or not.
void StartTimer(HWND window) {
    timerRuns = SetTimer(window, 0, TimerMilliseconds, nullptr) != 0;
}

void Begin(HWND window) {
    PanelStreamPosition = false;
    FillFields(window);
    MyPanelShowRecovery(window);
    StartTimer(window);
}

/// A timer that the system has refused is asked for again.
void ToggleStream(HWND window) {
    if (!timerRuns) {
        StartTimer(window);
    }
    PanelStreamPosition = !PanelStreamPosition;
}

void Hide(HWND window) {
    PanelStreamPosition = false;
    ShowWindow(window, SW_HIDE);
}

/// By the control alone: a button sends no other notification, and boxes have no action.
INT_PTR Command(HWND window, int control) {
    switch (control) {
        case IDC_CLOSE:
        case IDCANCEL:
            Hide(window);
            break;
        case IDC_OPEN_COMM:
            MyPanelOpenComm();
            break;
        case IDC_CLOSE_COMM:
            ClosePortWhenFree();
            break;
        case IDC_HOME:
            RunManualHoming(window);
            break;
        case IDC_HOME_CNC:
            RunAutoHoming(window);
            break;
        case IDC_REMOTE_ENABLE:
            MyRemoteEnable();
            break;
        case IDC_SEND:
            MyPanelSend(window);
            break;
        case IDC_GET_POSITION:
            MyPanelGetPosition(window);
            break;
        case IDC_SET_LIGHT_1:
            MyPanelSetLight(window, IDC_LIGHT_1_PERCENT, IDC_LIGHT_1_REPLY, PanelLamp1.setPrefix,
                            PanelLamp1.query);
            break;
        case IDC_STREAM_POSITION:
            ToggleStream(window);
            break;
        case IDC_SET_LIGHT_2:
            MyPanelSetLight(window, IDC_LIGHT_2_PERCENT, IDC_LIGHT_2_REPLY, PanelLamp2.setPrefix,
                            PanelLamp2.query);
            break;
        case IDC_GET_STATUS:
            MyPanelGetStatus(window);
            break;
        case IDC_SET_POSITION:
            MyPanelSetPosition(window);
            break;
        default:
            return 0;
    }
    return 1;
}

INT_PTR Handle(HWND window, UINT message, WPARAM wParam) {
    switch (message) {
        case WM_INITDIALOG:
            Begin(window);
            return 1;
        case WM_COMMAND:
            return Command(window, static_cast<int>(wParam & 0xFFFF));
        case WM_TIMER:
            MyPanelShowRecovery(window);
            if (PanelStreamPosition) {
                MyPanelGetPosition(window);
            }
            return 0;
        case WM_CLOSE:
            Hide(window);
            return 1;
        case BufferBoxesMessage:
            WriteBufferBoxes(window);
            return 1;
        case ShowMessage:
            // A panel that is there already must not take the keyboard from the host.
            if (!IsWindowVisible(window)) {
                ShowWindow(window, SW_SHOWNORMAL);
            }
            return 1;
        default:
            return 0;
    }
}

/// The panel lives until the process ends, and its procedure has to be there as long: a host that
/// unloads the module must not pull it away.
bool KeepModuleLoaded() {
    HMODULE module = nullptr;
    return GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
               reinterpret_cast<LPCWSTR>(&MyPanelDialogProc), &module) != FALSE;
}

/// Null when the system refuses it; the next start tries again.
HWND CreatePanel() {
    return KeepModuleLoaded() ? CreateDialogParamW(ModuleInstance, MAKEINTRESOURCEW(IDD_PANEL),
                                                   nullptr, MyPanelDialogProc, 0)
                              : nullptr;
}

void MakePanel() {
    const HWND window = CreatePanel();
    if (window == nullptr) {
        return;
    }
    PanelWindow.store(window);
    FillBufferBoxes(window);
    UpdateWindow(window);
    ShowWindow(window, SW_SHOWNORMAL);
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

}  // namespace

void ShowPanelIfWanted() {
    if (!ReadPanelWanted() || panelIsBeingMade.exchange(true)) {
        return;
    }
    // A panel goes with its thread, and nobody is told.
    const HWND window = PanelWindow.load();
    if (window == nullptr || !IsWindow(window)) {
        MakePanel();
    } else {
        // Its thread may be another one, and busy; the start does not wait for it.
        PostMessageW(window, ShowMessage, 0, 0);
    }
    panelIsBeingMade.store(false);
}

INT_PTR CALLBACK MyPanelDialogProc(HWND window, UINT message, WPARAM wParam, LPARAM) {
    return Guarded(INT_PTR{1}, [=] { return Handle(window, message, wParam); });
}
