#include "log_viewer/log_pane.h"

#include <algorithm>

namespace log_viewer {

namespace {

WNDPROC originalProcedure = nullptr;

/// An edit control would keep Tab and Enter to itself, and select all its text when Tab comes to
/// it.
LRESULT CALLBACK HandlePane(HWND pane, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT answer = CallWindowProcW(originalProcedure, pane, message, wParam, lParam);
    return message == WM_GETDLGCODE ? answer & ~(DLGC_HASSETSEL | DLGC_WANTALLKEYS | DLGC_WANTTAB)
                                    : answer;
}

std::wstring Widened(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

/// A find over part of a text; its place in the whole text, or -1.
int FindIn(const std::wstring& text, std::size_t from, std::size_t to, const std::wstring& what,
           bool forward) {
    const int place = FindStringOrdinal(static_cast<DWORD>(forward ? FIND_FROMSTART : FIND_FROMEND),
                                        text.data() + from, static_cast<int>(to - from),
                                        what.data(), static_cast<int>(what.size()), TRUE);
    return place < 0 ? -1 : static_cast<int>(from) + place;
}

}  // namespace

void LogPane::Create(HWND parent, int id, std::size_t limit) {
    limit_ = static_cast<int>(limit);
    edit_ = CreateWindowExW(WS_EX_CLIENTEDGE, L"EDIT", L"",
                            WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL |
                                ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL | ES_AUTOHSCROLL |
                                ES_NOHIDESEL,
                            0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                            GetModuleHandleW(nullptr), nullptr);
    Send(EM_SETLIMITTEXT, 0);
    originalProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(edit_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HandlePane)));
}

LRESULT LogPane::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return SendMessageW(edit_, message, wParam, lParam);
}

LogPane::Selection LogPane::Selected() const {
    Selection selection{};
    Send(EM_GETSEL, reinterpret_cast<WPARAM>(&selection.start),
         reinterpret_cast<LPARAM>(&selection.end));
    return selection;
}

bool LogPane::IsAtEnd() const {
    const Selection selection = Selected();
    SCROLLINFO scroll{};
    scroll.cbSize = sizeof(scroll);
    scroll.fMask = SIF_PAGE | SIF_POS | SIF_RANGE;
    return selection.start == selection.end &&
           (GetScrollInfo(edit_, SB_VERT, &scroll) == FALSE ||
            scroll.nPos + static_cast<int>(scroll.nPage) >= scroll.nMax);
}

std::wstring LogPane::Text() const {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(edit_)), L'\0');
    GetWindowTextW(edit_, text.data(), static_cast<int>(text.size()) + 1);
    return text;
}

void LogPane::Replace(const Selection& part, const wchar_t* text) const {
    Send(EM_SETSEL, part.start, static_cast<LPARAM>(part.end));
    Send(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text));
}

int LogPane::Surplus() const {
    const int count = static_cast<int>(Send(EM_GETLINECOUNT));
    return count > limit_ + limit_ / 8 ? count - limit_ : 0;
}

void LogPane::Append(std::string_view text) {
    const auto end = static_cast<DWORD>(GetWindowTextLengthW(edit_));
    Replace({.start = end, .end = end}, Widened(text).c_str());
    const int surplus = Surplus();
    if (surplus == 0) {
        ShowEnd();
        UpdateWindow(edit_);
        return;
    }
    const auto cut = static_cast<DWORD>(Send(EM_LINEINDEX, static_cast<WPARAM>(surplus)));
    Send(WM_SETREDRAW, FALSE);
    Replace({.start = 0, .end = cut}, L"");
    ShowEnd();
    Send(WM_SETREDRAW, TRUE);
    RedrawWindow(edit_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW);
}

void LogPane::Clear() {
    SetWindowTextW(edit_, L"");
}

void LogPane::ShowEnd() {
    const auto end = static_cast<DWORD>(GetWindowTextLengthW(edit_));
    Send(EM_SETSEL, end, static_cast<LPARAM>(end));
    Send(EM_SCROLLCARET);
}

bool LogPane::Find(const std::wstring& what, bool forward) {
    const std::wstring text = Text();
    const Selection selection = Selected();
    const std::size_t from = std::min<std::size_t>(forward ? selection.end : 0, text.size());
    const std::size_t to = forward ? text.size() : selection.start;
    int place = what.empty() ? -1 : FindIn(text, from, to, what, forward);
    if (place < 0 && !what.empty()) {
        place = FindIn(text, 0, text.size(), what, forward);
    }
    if (place >= 0) {
        Send(EM_SETSEL, static_cast<WPARAM>(place), place + static_cast<LPARAM>(what.size()));
        Send(EM_SCROLLCARET);
    }
    return place >= 0;
}

}  // namespace log_viewer
