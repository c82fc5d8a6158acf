#include "log_viewer/window_controls.h"

#include <commctrl.h>

#include <iterator>

namespace log_viewer {

namespace {

/// The row of buttons from left to right.
constexpr struct {
    int id;
    const wchar_t* kind;
    const wchar_t* text;
    DWORD style;
} Row[] = {
    {PauseCommand, L"BUTTON", L"&Pause", BS_CHECKBOX | BS_PUSHLIKE | WS_TABSTOP},
    {ClearCommand, L"BUTTON", L"&Clear", BS_PUSHBUTTON | WS_TABSTOP},
    {SaveCommand, L"BUTTON", L"&Save as...", BS_PUSHBUTTON | WS_TABSTOP},
    {StampsCommand, L"BUTTON", L"&Time stamps", BS_CHECKBOX | WS_TABSTOP},
    {FindLabel, L"STATIC", L"&Find:", SS_RIGHT | SS_CENTERIMAGE},
    {FindText, L"EDIT", L"", ES_AUTOHSCROLL | WS_TABSTOP},
    {NextCommand, L"BUTTON", L"&Next", BS_PUSHBUTTON | WS_TABSTOP},
    {PreviousCommand, L"BUTTON", L"P&revious", BS_PUSHBUTTON | WS_TABSTOP},
};

LOGFONTW MessageFont() {
    NONCLIENTMETRICSW fonts{};
    fonts.cbSize = sizeof(fonts);
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(fonts), &fonts, 0);
    return fonts.lfMessageFont;
}

SIZE TextSize(HWND window, HFONT font, const wchar_t* text) {
    const HDC device = GetDC(window);
    const HGDIOBJ before = SelectObject(device, font);
    SIZE size{};
    GetTextExtentPoint32W(device, text, lstrlenW(text), &size);
    SelectObject(device, before);
    ReleaseDC(window, device);
    return size;
}

HFONT MakeFont(const LOGFONTW& model) {
    return CreateFontIndirectW(&model);
}

HFONT MakeFixedFont(const LOGFONTW& model) {
    return CreateFontW(model.lfHeight, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                       OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                       FIXED_PITCH | FF_MODERN, L"Consolas");
}

}  // namespace

WindowControls::WindowControls()
    : font_(MakeFont(MessageFont())),
      fixedFont_(MakeFixedFont(MessageFont())),
      lineHeight_(TextSize(nullptr, font_, L"X").cy) {}

WindowControls::~WindowControls() {
    DeleteObject(font_);
    DeleteObject(fixedFont_);
}

HWND WindowControls::Add(const wchar_t* kind, const wchar_t* text, int id, DWORD style,
                         DWORD extended) {
    const HWND control =
        CreateWindowExW(extended, kind, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, parent_,
                        reinterpret_cast<HMENU>(INT_PTR{id}), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
    return control;
}

void WindowControls::Create(HWND parent, std::size_t lines) {
    parent_ = parent;
    pane_.Create(parent, LogText, lines);
    SendMessageW(pane_.Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(fixedFont_), FALSE);
    for (const auto& part : Row) {
        Add(part.kind, part.text, part.id, part.style, part.id == FindText ? WS_EX_CLIENTEDGE : 0);
    }
    status_ = Add(STATUSCLASSNAMEW, L"", StatusLine, SBARS_SIZEGRIP);
}

int WindowControls::WidthOf(int id) const {
    if (id == FindText) {
        return 10 * lineHeight_;
    }
    wchar_t text[32] = {};
    GetDlgItemTextW(parent_, id, text, static_cast<int>(std::size(text)));
    const int room = id == FindLabel ? lineHeight_ / 2 : 2 * lineHeight_;
    return TextSize(parent_, font_, text).cx + room;
}

int WindowControls::LeastWidth() const {
    const int gap = lineHeight_ / 2;
    int width = gap;
    for (const auto& part : Row) {
        width += WidthOf(part.id) + gap;
    }
    return width;
}

void WindowControls::Layout() {
    const int gap = lineHeight_ / 2;
    const int height = lineHeight_ * 7 / 4;
    int left = gap;
    for (const auto& part : Row) {
        const int width = WidthOf(part.id);
        MoveWindow(GetDlgItem(parent_, part.id), left, gap, width, height, TRUE);
        left += width + gap;
    }
    SendMessageW(status_, WM_SIZE, 0, 0);
    RECT status{};
    RECT inside{};
    GetWindowRect(status_, &status);
    GetClientRect(parent_, &inside);
    const int top = height + 2 * gap;
    const int bottom = static_cast<int>(inside.bottom - (status.bottom - status.top));
    MoveWindow(pane_.Handle(), 0, top, inside.right, bottom - top, TRUE);
}

}  // namespace log_viewer
