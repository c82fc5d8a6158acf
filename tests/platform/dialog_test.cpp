#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32.h"
#include "resources/resource_ids.h"
#include "support/dialog_driver.h"

namespace {

using test_support::DialogDriver;
using test_support::ResourceInstance;
using test_support::RunMessages;
using test_support::WaitUntil;

constexpr UINT TestMessage = WM_APP + 1;
const std::string PanelCaption = "Mitutoyo QI";
const std::string HomingCaption = "Dialog";

struct Heard {
    UINT message;
    WPARAM wParam;
    bool operator==(const Heard&) const = default;
};

void PrintTo(const Heard& heard, std::ostream* out) {
    *out << std::hex << heard.message << "(" << heard.wParam << ")";
}

/// What a dialog does with its messages, and which of them it has heard: those of the product. Its
/// controls' notifications stand apart.
struct Script {
    std::function<INT_PTR(HWND, const Heard&)> handler;
    std::vector<Heard> heard{};
    std::vector<WPARAM> notifications{};
    HWND window = nullptr;
};

INT_PTR CALLBACK Play(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    thread_local std::map<HWND, Script*> scripts;
    if (message == WM_INITDIALOG) {
        EXPECT_EQ(scripts.count(window), 0U);
        scripts[window] = reinterpret_cast<Script*>(lParam);
        scripts[window]->window = window;
        wParam = 0;
    }
    const std::set<UINT> known{WM_INITDIALOG, WM_DESTROY, WM_CLOSE,
                               WM_COMMAND,    WM_TIMER,   TestMessage};
    const auto script = scripts.find(window);
    if (script == scripts.end() || known.count(message) == 0) {
        return FALSE;
    }
    Script& played = *script->second;
    if (message == WM_COMMAND && wParam > 0xFFFF) {
        played.notifications.push_back(wParam);
        return FALSE;
    }
    played.heard.push_back({.message = message, .wParam = wParam});
    if (message == WM_DESTROY) {
        scripts.erase(script);
    }
    return played.handler ? played.handler(window, played.heard.back()) : FALSE;
}

INT_PTR EndOnCommand(HWND window, const Heard& heard) {
    if (heard.message == WM_COMMAND) {
        EXPECT_TRUE(EndDialog(window, static_cast<INT_PTR>(heard.wParam) + 100));
    }
    return heard.message == WM_COMMAND ? TRUE : FALSE;
}

INT_PTR RunHoming(Script& script, HWND owner = nullptr) {
    return DialogBoxParamW(ResourceInstance(), MAKEINTRESOURCEW(IDD_MANUAL_HOMING), owner, Play,
                           reinterpret_cast<LPARAM>(&script));
}

HWND MakePanel(Script& script) {
    const HWND window = CreateDialogParamW(ResourceInstance(), MAKEINTRESOURCEW(IDD_PANEL), nullptr,
                                           Play, reinterpret_cast<LPARAM>(&script));
    EXPECT_NE(window, nullptr);
    return window;
}

/// Runs on a thread of its own, which takes its windows along, while the test's thread operates.
void OnThread(
    const std::function<void()>& work, const std::function<void()>& operate = [] {}) {
    std::thread thread(work);
    operate();
    thread.join();
}

TEST(ModalDialog, RunsUntilItsEndAndGivesTheResult) {
    struct Case {
        const char* name;
        std::function<void(const DialogDriver&)> operate;
        INT_PTR result;
        std::vector<Heard> between;
    };
    const Case cases[] = {
        {"a button", [](const auto& dialog) { dialog.Press(IDOK); }, 101, {{WM_COMMAND, IDOK}}},
        {"the close box",
         [](const auto& dialog) { dialog.Close(); },
         102,
         {{WM_CLOSE, 0}, {WM_COMMAND, IDCANCEL}}},
        {"another thread", [](const auto& dialog) { EndDialog(dialog.Window(), 7); }, 7, {}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        Script script{.handler = EndOnCommand};
        INT_PTR result = 0;
        OnThread([&] { result = RunHoming(script); },
                 [&] { one.operate(DialogDriver(HomingCaption)); });
        EXPECT_EQ(result, one.result);
        std::vector<Heard> all = one.between;
        all.insert(all.begin(), {WM_INITDIALOG, 0});
        all.push_back({WM_DESTROY, 0});
        EXPECT_EQ(script.heard, all);
        EXPECT_FALSE(DialogDriver(script.window).Exists());
    }
}

TEST(ModalDialog, MayEndBeforeItIsShown) {
    Script script;
    script.handler = [](HWND window, const Heard& heard) {
        EXPECT_FALSE(DialogDriver(window).IsVisible());
        return heard.message == WM_INITDIALOG ? INT_PTR{EndDialog(window, 5)} : FALSE;
    };
    EXPECT_EQ(RunHoming(script), 5);
    EXPECT_EQ(script.heard, (std::vector<Heard>{{WM_INITDIALOG, 0}, {WM_DESTROY, 0}}));
}

TEST(ModalDialog, KeepsItsCloseBoxWhileCancelIsDisabled) {
    Script script;
    script.handler = [](HWND window, const Heard& heard) {
        if (heard.message == WM_INITDIALOG) {
            EXPECT_FALSE(EnableWindow(GetDlgItem(window, IDCANCEL), FALSE));
        }
        return EndOnCommand(window, heard);
    };
    OnThread([&] { EXPECT_EQ(RunHoming(script), 101); },
             [] {
                 const DialogDriver dialog(HomingCaption);
                 dialog.Close();
                 dialog.Press(IDOK);
             });
}

TEST(ModalDialog, DisablesItsOwnerAndServesAllWindowsOfTheThread) {
    OnThread([] {
        Script panelScript;
        const HWND panel = MakePanel(panelScript);
        Script script;
        script.handler = [panel](HWND window, const Heard& heard) {
            if (heard.message == WM_INITDIALOG) {
                EXPECT_EQ(GetParent(window), panel);
                EXPECT_EQ(GetParent(GetDlgItem(window, IDOK)), window);
                EXPECT_TRUE(PostMessageW(panel, TestMessage, 1, 0));
                EXPECT_TRUE(PostMessageW(window, WM_COMMAND, IDOK, 0));
            } else if (heard.message == WM_COMMAND) {
                EXPECT_FALSE(DialogDriver(panel).IsEnabled());
            } else {
                EXPECT_TRUE(DialogDriver(panel).IsEnabled());
            }
            return EndOnCommand(window, heard);
        };
        EXPECT_EQ(RunHoming(script, panel), 101);
        EXPECT_EQ(panelScript.heard.back(), (Heard{TestMessage, 1}));
    });
}

TEST(ModalDialog, FailsWithoutTemplateOrWithAWrongOwner) {
    Script script{.handler = EndOnCommand};
    EXPECT_EQ(DialogBoxParamW(ResourceInstance(), MAKEINTRESOURCEW(99), nullptr, Play,
                              reinterpret_cast<LPARAM>(&script)),
              -1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
    EXPECT_EQ(RunHoming(script, reinterpret_cast<HWND>(std::uintptr_t{0x123450})), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    EXPECT_TRUE(script.heard.empty());
}

TEST(Messages, ComeInOrderFromAnyThread) {
    constexpr WPARAM Count = 1000;
    Script script{.handler = EndOnCommand};
    OnThread([&] { RunHoming(script); },
             [] {
                 const HWND window = DialogDriver(HomingCaption).Window();
                 for (WPARAM i = 0; i < Count; ++i) {
                     EXPECT_TRUE(PostMessageW(window, TestMessage, i, 0));
                 }
                 EXPECT_TRUE(PostMessageW(window, WM_COMMAND, IDOK, 0));
             });
    ASSERT_EQ(script.heard.size(), Count + 3);
    for (WPARAM i = 0; i < Count; ++i) {
        EXPECT_EQ(script.heard[i + 1], (Heard{TestMessage, i}));
    }
}

TEST(Messages, ToAWindowThatHasGoneFail) {
    const auto failsIn = [](auto call) {
        const bool failed = !call();
        return failed && GetLastError() == ERROR_INVALID_WINDOW_HANDLE;
    };
    Script script;
    HWND control = nullptr;
    script.handler = [&](HWND window, const Heard& heard) {
        control = GetDlgItem(window, IDOK);
        return heard.message == WM_INITDIALOG ? INT_PTR{EndDialog(window, 0)} : FALSE;
    };
    std::set<HWND> windows;
    for (int round = 0; round < 20; ++round) {
        RunHoming(script);
        EXPECT_TRUE(windows.insert(script.window).second);
        for (const HWND gone : {script.window, control}) {
            EXPECT_TRUE(failsIn([&] { return PostMessageW(gone, TestMessage, 0, 0); }));
            EXPECT_TRUE(failsIn([&] { return SendMessageW(gone, TestMessage, 0, 0); }));
            EXPECT_TRUE(failsIn([&] { return SetWindowTextW(gone, WIDE("x")); }));
            EXPECT_TRUE(failsIn([&] { return EnableWindow(gone, TRUE); }));
        }
        EXPECT_TRUE(failsIn([&] { return SetDlgItemTextA(script.window, IDOK, "x"); }));
        EXPECT_TRUE(failsIn([&] { return EndDialog(script.window, 0); }));
    }
    EXPECT_EQ(script.heard.size(), 40U);
}

TEST(Messages, SentByAnotherThreadWaitForTheOwnersLoop) {
    std::atomic<bool> asked = false;
    std::atomic<bool> answered = false;
    std::atomic<HWND> window = nullptr;
    OnThread(
        [&] {
            Script script;
            window = MakePanel(script);
            EXPECT_TRUE(WaitUntil([&] { return asked.load(); }));
            Sleep(50);
            EXPECT_FALSE(answered);
            EXPECT_TRUE(RunMessages([&] { return answered.load(); }));
            EXPECT_EQ(DialogDriver(window).Text(IDC_PORT), "7");
            EXPECT_EQ(script.heard.back(), (Heard{TestMessage, 3}));
        },
        [&] {
            EXPECT_TRUE(WaitUntil([&] { return window.load() != nullptr; }));
            asked = true;
            EXPECT_TRUE(SetDlgItemTextA(window, IDC_PORT, "7"));
            EXPECT_EQ(SendMessageW(window, TestMessage, 3, 0), 0);
            answered = true;
        });
}

TEST(Messages, SentEachToTheOtherAtOnceDoNotBlock) {
    constexpr std::size_t Rounds = 200;
    std::atomic<HWND> windows[2] = {};
    std::atomic<int> finished = 0;
    const auto talk = [&](int self) {
        Script script;
        windows[self] = MakePanel(script);
        EXPECT_TRUE(RunMessages([&] { return windows[1 - self].load() != nullptr; }));
        for (std::size_t i = 0; i < Rounds; ++i) {
            SendMessageW(windows[1 - self], TestMessage, i, 0);
        }
        ++finished;
        EXPECT_TRUE(RunMessages([&] { return finished == 2; }));
        EXPECT_EQ(script.heard.size(), Rounds + 1);
    };
    OnThread([&] { talk(0); }, [&] { OnThread([&] { talk(1); }); });
}

TEST(Messages, WaitingForAThreadThatEndsFail) {
    std::atomic<HWND> window = nullptr;
    std::atomic<bool> asked = false;
    OnThread(
        [&] {
            Script script;
            window = MakePanel(script);
            EXPECT_TRUE(WaitUntil([&] { return asked.load(); }));
            Sleep(20);
        },
        [&] {
            EXPECT_TRUE(WaitUntil([&] { return window.load() != nullptr; }));
            asked = true;
            EXPECT_FALSE(SetDlgItemTextA(window, IDC_PORT, "7"));
        });
    EXPECT_FALSE(DialogDriver(window).Exists());
    EXPECT_EQ(FindWindowW(nullptr, WIDE("Mitutoyo QI")), nullptr);
}

TEST(Timer, TicksAtItsPeriodWhileTheLoopRuns) {
    OnThread([] {
        Script script;
        const HWND panel = MakePanel(script);
        EXPECT_NE(SetTimer(panel, 0, 60'000, nullptr), 0U);
        EXPECT_NE(SetTimer(panel, 0, 100, nullptr), 0U);
        const ULONGLONG start = GetTickCount64();
        Sleep(350);
        EXPECT_EQ(script.heard.size(), 1U);
        EXPECT_TRUE(RunMessages([&] { return script.heard.size() == 4; }));
        EXPECT_GE(GetTickCount64() - start, 450U);
        EXPECT_EQ(script.heard.back(), (Heard{WM_TIMER, 0}));
    });
}

TEST(ModelessDialog, IsShownMovedAndNamedByItsOwner) {
    OnThread([] {
        Script script;
        const HWND panel = MakePanel(script);
        const DialogDriver driver(panel);
        EXPECT_EQ(script.heard, (std::vector<Heard>{{WM_INITDIALOG, 0}}));
        EXPECT_FALSE(driver.IsVisible());
        EXPECT_EQ(FindWindowW(nullptr, WIDE("mitutoyo qi")), panel);
        EXPECT_EQ(GetParent(panel), nullptr);

        EXPECT_TRUE(UpdateWindow(panel));
        EXPECT_FALSE(ShowWindow(panel, SW_SHOWNORMAL));
        EXPECT_TRUE(driver.IsVisible());
        RECT before{};
        RECT after{};
        EXPECT_TRUE(GetWindowRect(panel, &before));
        EXPECT_TRUE(SetWindowPos(panel, nullptr, 40, 50, 1, 1, SWP_NOSIZE | SWP_NOZORDER));
        EXPECT_TRUE(SetWindowPos(panel, HWND_TOPMOST, 1, 1, 1, 1, SWP_NOSIZE | SWP_NOMOVE));
        EXPECT_TRUE(GetWindowRect(panel, &after));
        EXPECT_EQ(after.left, 40);
        EXPECT_EQ(after.top, 50);
        EXPECT_EQ(after.right - after.left, before.right - before.left);
        EXPECT_EQ(after.bottom - after.top, before.bottom - before.top);
        RECT screen{};
        EXPECT_TRUE(GetWindowRect(GetDesktopWindow(), &screen));
        EXPECT_LT(after.right, screen.right);

        EXPECT_TRUE(SetWindowTextW(panel, WIDE("Other")));
        EXPECT_EQ(driver.Caption(), "Other");
        EXPECT_EQ(FindWindowW(nullptr, WIDE("Other")), panel);
        EXPECT_EQ(FindWindowW(nullptr, WIDE("Mitutoyo QI")), nullptr);
        EXPECT_TRUE(ShowWindow(panel, SW_HIDE));
        EXPECT_FALSE(driver.IsVisible());
    });
}

TEST(ModelessDialog, IsOperatedWhileItsLoopRuns) {
    std::atomic<bool> pressed = false;
    OnThread(
        [&] {
            Script script;
            script.handler = [&](HWND, const Heard& heard) {
                pressed = pressed || heard == Heard{WM_COMMAND, IDC_SEND};
                return FALSE;
            };
            ShowWindow(MakePanel(script), SW_SHOWNORMAL);
            EXPECT_TRUE(RunMessages([&] { return pressed.load(); }));
        },
        [] {
            const DialogDriver panel(PanelCaption);
            EXPECT_EQ(panel.Text(IDC_SET_LIGHT_1), "Set Light 1 %");
            panel.Type(IDC_SEND_TEXT, "@CCND?");
            EXPECT_EQ(panel.Text(IDC_SEND_TEXT), "@CCND?");
            panel.Press(IDC_SEND);
        });
}

TEST(Controls, KeepTextAndTellOfItsChange) {
    OnThread([] {
        Script script;
        const HWND panel = MakePanel(script);
        script.notifications.clear();
        EXPECT_TRUE(SetDlgItemTextW(panel, IDC_RECEIVED, WIDE("\u20acA\u0416")));
        EXPECT_EQ(script.notifications, (std::vector<WPARAM>{EN_UPDATE << 16 | IDC_RECEIVED,
                                                             EN_CHANGE << 16 | IDC_RECEIVED}));
        char text[8] = "1234567";
        EXPECT_EQ(GetDlgItemTextA(panel, IDC_RECEIVED, text, 8), 3U);
        EXPECT_STREQ(text,
                     "\x80"
                     "A?");
        EXPECT_TRUE(SetDlgItemTextA(panel, IDC_RECEIVED, "abcdef"));
        for (const int size : {8, 7, 6, 2, 1}) {
            const std::string whole = "abcdef";
            const std::string cut = whole.substr(0, static_cast<std::size_t>(size) - 1);
            EXPECT_EQ(GetDlgItemTextA(panel, IDC_RECEIVED, text, size), cut.size());
            EXPECT_EQ(text, cut);
        }
        EXPECT_EQ(GetDlgItemTextA(panel, 99, text, 8), 0U);
        EXPECT_FALSE(SetDlgItemTextA(panel, 99, "x"));
        EXPECT_EQ(GetDlgItem(panel, 99), nullptr);
        EXPECT_TRUE(SetWindowTextW(GetDlgItem(panel, IDC_SEND), WIDE("Go")));
        EXPECT_EQ(DialogDriver(panel).Text(IDC_SEND), "Go");
        EXPECT_EQ(script.notifications.size(), 4U);
    });
}

TEST(Controls, TakeInputOrNot) {
    OnThread([] {
        Script script;
        const HWND panel = MakePanel(script);
        const HWND button = GetDlgItem(panel, IDC_SEND);
        const DialogDriver driver(panel);
        EXPECT_TRUE(driver.IsEnabled(IDC_SEND));
        EXPECT_FALSE(EnableWindow(button, FALSE));
        EXPECT_FALSE(driver.IsEnabled(IDC_SEND));
        EXPECT_TRUE(EnableWindow(button, FALSE));
        EXPECT_TRUE(EnableWindow(button, TRUE));
        EXPECT_TRUE(driver.IsEnabled(IDC_SEND));
        EXPECT_TRUE(driver.IsEnabled(IDC_CLOSE));
    });
}

TEST(Controls, ReadAndWriteNumbers) {
    struct Case {
        const char* text;
        BOOL isSigned;
        UINT value;
        BOOL isNumber;
    };
    constexpr auto Minus12 = static_cast<UINT>(-12);
    const Case cases[] = {
        {"0", FALSE, 0, TRUE},
        {"115200", FALSE, 115200, TRUE},
        {"  12", FALSE, 12, TRUE},
        {"12 baud", FALSE, 12, TRUE},
        {"-12", TRUE, Minus12, TRUE},
        {"+12", TRUE, 12, TRUE},
        {"", TRUE, 0, FALSE},
        {"-", TRUE, 0, FALSE},
        {"x12", FALSE, 0, FALSE},
        {"4294967295", FALSE, 4294967295U, TRUE},
        {"4294967296", FALSE, 0, FALSE},
        {"99999999999999999999", FALSE, 0, FALSE},
        {"2147483646", TRUE, 2147483646U, TRUE},
        {"2147483648", TRUE, 0, FALSE},
        {"-2147483647", TRUE, 2147483649U, TRUE},
    };
    OnThread([&] {
        Script script;
        const HWND panel = MakePanel(script);
        for (const Case& one : cases) {
            SCOPED_TRACE(one.text);
            SetDlgItemTextA(panel, IDC_PORT, one.text);
            BOOL isNumber = 2;
            EXPECT_EQ(GetDlgItemInt(panel, IDC_PORT, &isNumber, one.isSigned), one.value);
            EXPECT_EQ(isNumber, one.isNumber);
            EXPECT_EQ(GetDlgItemInt(panel, IDC_PORT, nullptr, one.isSigned), one.value);
        }
        EXPECT_EQ(GetDlgItemInt(panel, 99, nullptr, FALSE), 0U);
        EXPECT_TRUE(SetDlgItemInt(panel, IDC_PORT, Minus12, TRUE));
        EXPECT_EQ(DialogDriver(panel).Text(IDC_PORT), "-12");
        EXPECT_TRUE(SetDlgItemInt(panel, IDC_PORT, Minus12, FALSE));
        EXPECT_EQ(DialogDriver(panel).Text(IDC_PORT), "4294967284");
    });
}

TEST(Pictures, AreShownByAStaticControlInTheirSize) {
    const auto load = [](int number) {
        return LoadBitmapW(ResourceInstance(), MAKEINTRESOURCEW(number));
    };
    const HBITMAP left = load(IDB_TABLE_LEFT);
    const HBITMAP column = load(IDB_COLUMN_UP);
    ASSERT_NE(left, nullptr);
    ASSERT_NE(column, nullptr);
    EXPECT_EQ(load(99), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
    Script script;
    script.handler = [&](HWND window, const Heard& heard) {
        if (heard.message != WM_INITDIALOG) {
            return INT_PTR{FALSE};
        }
        const DialogDriver dialog(window);
        const HWND control = GetDlgItem(window, IDC_HOMING_PICTURE);
        const auto show = [&](HBITMAP picture) {
            return reinterpret_cast<HBITMAP>(SendMessageW(control, STM_SETIMAGE, IMAGE_BITMAP,
                                                          reinterpret_cast<LPARAM>(picture)));
        };
        EXPECT_EQ(dialog.Picture(IDC_HOMING_PICTURE), 0);
        EXPECT_EQ(show(left), nullptr);
        EXPECT_EQ(dialog.Picture(IDC_HOMING_PICTURE), IDB_TABLE_LEFT);
        EXPECT_EQ(show(column), left);
        EXPECT_EQ(dialog.Picture(IDC_HOMING_PICTURE), IDB_COLUMN_UP);
        EXPECT_EQ(dialog.PictureHeight(IDC_HOMING_PICTURE), 350);
        RECT place{};
        EXPECT_TRUE(GetWindowRect(control, &place));
        EXPECT_EQ(place.right - place.left, 450);
        EXPECT_EQ(place.bottom - place.top, 350);
        EXPECT_EQ(show(nullptr), column);
        return INT_PTR{EndDialog(window, 0)};
    };
    RunHoming(script);
    for (const HBITMAP picture : {left, column}) {
        EXPECT_TRUE(DeleteObject(picture));
        EXPECT_FALSE(DeleteObject(picture));
    }
}

}  // namespace
