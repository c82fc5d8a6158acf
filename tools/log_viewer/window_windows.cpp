#include "log_viewer/window.h"

#include <commctrl.h>
#include <commdlg.h>

#include <fstream>
#include <iterator>
#include <string>

#include "log_viewer/window_controls.h"

namespace log_viewer {

namespace {

constexpr UINT_PTR UpdateTimer = 1;
constexpr UINT UpdateMilliseconds = 100;
constexpr const wchar_t* ClassName = L"OviskLogWindow";

class MainWindow {
  public:
    explicit MainWindow(const Session& session) : session_(session) {}

    bool Create();
    /// Runs the messages until the window has gone.
    void Run();

  private:
    static LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void HandleCommand(int command);
    void Update();
    void ShowNewText();
    void ShowStatus();
    void Reload();
    void Clear();
    void TogglePause();
    void ToggleStamps();
    void SaveAs();
    void Find(bool forward);
    void SetCheck(int id, bool checked) const;
    std::wstring FindWords() const;

    const Session& session_;
    HWND window_ = nullptr;
    WindowControls controls_;
    LineStore::Place place_;
    bool paused_ = false;
    bool stamps_ = true;
    bool notFound_ = false;
    std::wstring status_;
};

bool MainWindow::Create() {
    WNDCLASSW kind{};
    kind.lpfnWndProc = Handle;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    kind.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    kind.hbrBackground = reinterpret_cast<HBRUSH>(INT_PTR{COLOR_BTNFACE + 1});
    kind.lpszClassName = ClassName;
    RegisterClassW(&kind);
    return CreateWindowExW(0, ClassName, WindowTitleText, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                           CW_USEDEFAULT, CW_USEDEFAULT, controls_.Size(60), controls_.Size(38),
                           nullptr, nullptr, kind.hInstance, this) != nullptr;
}

LRESULT CALLBACK MainWindow::Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* const made = static_cast<MainWindow*>(
            reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        made->window_ = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
    }
    auto* const self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self != nullptr ? self->HandleMessage(message, wParam, lParam)
                           : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT MainWindow::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            controls_.Create(window_, session_.options.lines);
            SetCheck(StampsCommand, stamps_);
            SetTimer(window_, UpdateTimer, UpdateMilliseconds, nullptr);
            return controls_.Pane().Handle() != nullptr ? 0 : -1;
        case WM_SIZE:
            controls_.Layout();
            return 0;
        case WM_GETMINMAXINFO:
            reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {
                controls_.LeastWidth() + controls_.Size(1), controls_.Size(12)};
            return 0;
        case WM_CTLCOLORSTATIC:
            // A read-only edit control would be grey.
            if (reinterpret_cast<HWND>(lParam) == controls_.Pane().Handle()) {
                return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
            }
            break;
        case WM_COMMAND:
            HandleCommand(LOWORD(wParam));
            return 0;
        case WM_TIMER:
            Update();
            return 0;
        case WM_ENDSESSION:
            // The system ends the process behind this message.
            if (wParam != FALSE) {
                session_.collector.Stop();
            }
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window_, message, wParam, lParam);
}

void MainWindow::HandleCommand(int command) {
    switch (command) {
        case PauseCommand:
            return TogglePause();
        case ClearCommand:
            return Clear();
        case SaveCommand:
            return SaveAs();
        case StampsCommand:
            return ToggleStamps();
        case FindCommand:
            SetFocus(GetDlgItem(window_, FindText));
            SendDlgItemMessageW(window_, FindText, EM_SETSEL, 0, -1);
            return;
        case IDOK:  // Enter
        case NextCommand:
            return Find(true);
        case PreviousCommand:
            return Find(false);
        case IDCANCEL:  // Esc
            notFound_ = false;
            return controls_.Pane().ShowEnd();
        default:
            return;
    }
}

void MainWindow::Update() {
    if (session_.IsOver()) {
        DestroyWindow(window_);
        return;
    }
    if (!paused_ && controls_.Pane().IsAtEnd()) {
        ShowNewText();
    }
    ShowStatus();
}

void MainWindow::ShowNewText() {
    const bool fromStart = place_.line == 0 && place_.offset == 0;
    const LineStore::Reading reading =
        session_.store.ReadOn(place_, {.stamps = stamps_, .lineEnd = "\r\n"});
    if (reading.skipped != 0 && !fromStart) {
        controls_.Pane().Append("... " + std::to_string(reading.skipped) +
                                " lines are not kept any more ...\r\n");
    }
    if (!reading.text.empty()) {
        controls_.Pane().Append(reading.text);
    }
}

void MainWindow::ShowStatus() {
    std::wstring text = paused_                      ? L"Paused.  "
                        : controls_.Pane().IsAtEnd() ? L""
                                                     : L"Holding still, Esc goes on.  ";
    text += notFound_ ? L"Not found: " + FindWords() + L".  " : L"";
    text += std::to_wstring(session_.store.Received()) + L" lines came, " +
            std::to_wstring(session_.store.Held()) + L" kept.  Log block at most " +
            std::to_wstring(session_.collector.Fullest()) + L" of " +
            std::to_wstring(Channel::BlockCharacters - 1) + L" characters full.";
    if (session_.saver != nullptr) {
        text += (session_.saver->Failed() ? L"  NOT SAVED, cannot write " : L"  Saved in ") +
                session_.saver->File().wstring();
    }
    if (text != status_) {
        status_ = text;
        SetDlgItemTextW(window_, StatusLine, text.c_str());
    }
}

void MainWindow::Reload() {
    controls_.Pane().Clear();
    place_ = {};
    Update();
}

void MainWindow::Clear() {
    place_ = session_.store.Clear();
    controls_.Pane().Clear();
    ShowStatus();
}

void MainWindow::TogglePause() {
    paused_ = !paused_;
    SetCheck(PauseCommand, paused_);
    Update();
}

void MainWindow::ToggleStamps() {
    stamps_ = !stamps_;
    SetCheck(StampsCommand, stamps_);
    paused_ = false;
    SetCheck(PauseCommand, paused_);
    Reload();
}

void MainWindow::SaveAs() {
    wchar_t name[4096] = L"zembra.log";
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = window_;
    dialog.lpstrFilter = L"Logs (*.log)\0*.log\0All files\0*.*\0";
    dialog.lpstrFile = name;
    dialog.nMaxFile = static_cast<DWORD>(std::size(name));
    dialog.lpstrDefExt = L"log";
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (GetSaveFileNameW(&dialog) == FALSE) {
        return;
    }
    LineStore::Place start;
    std::ofstream file(std::filesystem::path(name), std::ios::binary);
    file << session_.store.ReadOn(start, {.stamps = stamps_, .lineEnd = "\n"}).text << std::flush;
    if (!file) {
        MessageBoxW(window_, (std::wstring(L"Cannot write ") + name).c_str(), L"Save as",
                    MB_OK | MB_ICONERROR);
    }
}

std::wstring MainWindow::FindWords() const {
    wchar_t text[256] = {};
    GetDlgItemTextW(window_, FindText, text, static_cast<int>(std::size(text)));
    return text;
}

void MainWindow::Find(bool forward) {
    notFound_ = !controls_.Pane().Find(FindWords(), forward);
    if (notFound_) {
        MessageBeep(MB_OK);
    }
    ShowStatus();
}

void MainWindow::SetCheck(int id, bool checked) const {
    SendDlgItemMessageW(window_, id, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

void MainWindow::Run() {
    ACCEL keys[] = {
        {FVIRTKEY | FCONTROL, 'P', PauseCommand}, {FVIRTKEY | FCONTROL, 'L', ClearCommand},
        {FVIRTKEY | FCONTROL, 'S', SaveCommand},  {FVIRTKEY | FCONTROL, 'F', FindCommand},
        {FVIRTKEY, VK_F3, NextCommand},           {FVIRTKEY | FSHIFT, VK_F3, PreviousCommand},
    };
    const HACCEL table = CreateAcceleratorTableW(keys, static_cast<int>(std::size(keys)));
    ShowWindow(window_, SW_SHOWDEFAULT);
    SetFocus(controls_.Pane().Handle());
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (TranslateAcceleratorW(window_, table, &message) == 0 &&
            IsDialogMessageW(window_, &message) == FALSE) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    DestroyAcceleratorTable(table);
}

}  // namespace

bool RunWindow(const Session& session) {
    const INITCOMMONCONTROLSEX controls{.dwSize = sizeof(controls), .dwICC = ICC_BAR_CLASSES};
    InitCommonControlsEx(&controls);
    MainWindow window(session);
    if (!window.Create()) {
        return false;
    }
    window.Run();
    return true;
}

}  // namespace log_viewer
