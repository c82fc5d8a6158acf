#include "panel/buffer_boxes.h"

#include <optional>
#include <string>
#include <utility>

#include "link/serial_port.h"
#include "platform/guard.h"
#include "platform/lock_hold.h"
#include "resources/resource_ids.h"

namespace {

/// Guards what follows; held for one copy or exchange of texts, never while a window is waited for.
CRITICAL_SECTION boxLock;

struct {
    HWND panel = nullptr;
    std::optional<std::string> sent;      ///< not shown yet
    std::optional<std::string> received;  ///< not shown yet
    bool isPosted = false;                ///< the panel has been asked to look
} boxes ZB_GUARDED_BY(boxLock);

bool Keep(LineText way, const std::string& text) {
    const LockHold hold(boxLock);
    (way == LineText::Sent ? boxes.sent : boxes.received) = text;
    if (!boxes.isPosted) {
        boxes.isPosted = PostMessageW(boxes.panel, BufferBoxesMessage, 0, 0) != FALSE;
    }
    return true;
}

/// A text that there is no memory for is not shown; the exchange goes on.
void Hear(LineText way, const std::string& text) noexcept {
    Guarded(false, [&] { return Keep(way, text); });
}

void Show(HWND panel, int control, const std::optional<std::string>& text) {
    if (text) {
        SetDlgItemTextA(panel, control, text->c_str());
    }
}

}  // namespace

void MakePanelLock() {
    InitializeCriticalSection(&boxLock);
}

void FillBufferBoxes(HWND panel) {
    {
        const LockHold hold(boxLock);
        boxes.panel = panel;
        boxes.isPosted = false;
    }
    ListenToLine(Hear);
}

void WriteBufferBoxes(HWND panel) {
    std::optional<std::string> sent;
    std::optional<std::string> received;
    {
        const LockHold hold(boxLock);
        std::swap(sent, boxes.sent);
        std::swap(received, boxes.received);
        boxes.isPosted = false;
    }
    Show(panel, IDC_SENT, sent);
    Show(panel, IDC_RECEIVED, received);
}
