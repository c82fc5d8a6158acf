#include "homing/homing_procedure.h"

#include "resources/resource_ids.h"
#include "settings/settings.h"

HomingEnd lastHomingEnd = HomingEnd::None;

bool EndHoming(HomingState& state, HomingState::Moment then, HomingEnd end) {
    const LockHold hold(HealthLock);
    const bool isEnded = state.MoveOn(then, HomingIdle);
    if (isEnded) {
        lastHomingEnd = end;
    }
    return isEnded;
}

HomingState::Moment EndHoming(HomingState& state, HomingEnd end) {
    HomingState::Moment now = state.Now();
    while (now.state != HomingIdle && !EndHoming(state, now, end)) {
        now = state.Now();
    }
    return now;
}

void BreakOffHoming(HomingState& state, HWND dialog) {
    const HomingState::Moment last = EndHoming(state, HomingEnd::Failed);
    if (last.state != HomingIdle && dialog != nullptr) {
        PostMessageW(dialog, BreakOffMessage, last.run, 0);
    }
}

bool HomingCondition::Query() {
    if (!ExchangeChecked(HomingQuery.request, HomingQuery.prefix, buffer_)) {
        return false;
    }
    char* rest = buffer_.data();
    NextToken(rest, '=');
    for (const char*& field : fields_) {
        field = NextToken(rest, ',');
    }
    return true;
}

void PlaceHomingDialog(HWND dialog) {
    HWND parent = GetParent(dialog);
    if (parent == nullptr) {
        parent = GetDesktopWindow();
    }
    RECT outer{};
    RECT inner{};
    GetWindowRect(parent, &outer);
    GetWindowRect(dialog, &inner);
    SetWindowPos(dialog, nullptr, (outer.right - outer.left) / 2 - (inner.right - inner.left) / 2,
                 (outer.bottom - outer.top) / 2 - (inner.bottom - inner.top) / 2, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER);
}

HBITMAP LoadPicture(int resource) {
    return LoadBitmapW(ModuleInstance, MAKEINTRESOURCEW(resource));
}

void ShowPicture(HWND dialog, HBITMAP picture) {
    SendMessageW(GetDlgItem(dialog, IDC_HOMING_PICTURE), STM_SETIMAGE, IMAGE_BITMAP,
                 reinterpret_cast<LPARAM>(picture));
}

void RunHomingDialog(int resource, HWND parent, DLGPROC procedure, std::atomic<bool>& open) {
    if (open.exchange(true)) {
        return;
    }
    DialogBoxParamW(ModuleInstance, MAKEINTRESOURCEW(resource), parent, procedure, 0);
    open.store(false);
}
