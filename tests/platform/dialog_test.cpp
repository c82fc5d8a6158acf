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

/// What a dialog does with its messages, and which of them it has heard: those of the product,
/// without its controls' notifications.
struct Script {
    std::function<INT_PTR(HWND, const Heard&)> handler{};
    std::vector<Heard> heard{};
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
    const bool isNotification = message == WM_COMMAND && wParam > 0xFFFF;
    if (script == scripts.end() || known.count(message) == 0 || isNotification) {
        return FALSE;
    }
    Script& played = *script->second;
    played.heard.push_back({.message = message, .wParam = wParam});
    if (message == WM_DESTROY) {
        scripts.erase(script);
    }
    return played.handler ? played.handler(window, played.heard.back()) : FALSE;
}

INT_PTR EndOnCommand(HWND window, const Heard& heard) {
    return heard.message == WM_COMMAND
               ? INT_PTR{EndDialog(window, static_cast<INT_PTR>(heard.wParam) + 100)}
               : FALSE;
}

INT_PTR RunHoming(Script& script) {
    return DialogBoxParamW(ResourceInstance(), MAKEINTRESOURCEW(IDD_MANUAL_HOMING), nullptr, Play,
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

void PostInOrder(const DialogDriver& dialog) {
    for (const WPARAM number : {1U, 2U, 3U}) {
        EXPECT_TRUE(PostMessageW(dialog.Window(), TestMessage, number, 0));
    }
    dialog.Press(IDOK);
}

TEST(ModalDialog, RunsUntilItsEndAndGivesTheResult) {
    const struct {
        const char* name;
        std::function<void(const DialogDriver&)> operate;
        INT_PTR result;
        std::vector<Heard> between;
    } cases[] = {
        {"a button", [](const auto& dialog) { dialog.Press(IDOK); }, 101, {{WM_COMMAND, IDOK}}},
        {"the close box",
         [](const auto& dialog) { dialog.Close(); },
         102,
         {{WM_CLOSE, 0}, {WM_COMMAND, IDCANCEL}}},
        {"another thread", [](const auto& dialog) { EndDialog(dialog.Window(), 7); }, 7, {}},
        {"posted messages, in their order",
         PostInOrder,
         101,
         {{TestMessage, 1}, {TestMessage, 2}, {TestMessage, 3}, {WM_COMMAND, IDOK}}},
    };
    for (const auto& one : cases) {
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

TEST(Messages, ToAWindowThatHasGoneFail) {
    Script script;
    script.handler = [&](HWND window, const Heard& heard) {
        return heard.message == WM_INITDIALOG ? INT_PTR{EndDialog(window, 5)} : FALSE;
    };
    std::set<HWND> windows;
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(RunHoming(script), 5);
        EXPECT_TRUE(windows.insert(script.window).second) << "a handle is used again";
        EXPECT_FALSE(PostMessageW(script.window, TestMessage, 0, 0));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
        EXPECT_FALSE(SetDlgItemTextA(script.window, IDOK, "x"));
        EXPECT_FALSE(EndDialog(script.window, 0));
    }
}

TEST(Messages, SentByAnotherThreadWaitForTheOwnersLoop) {
    std::atomic<bool> answered = false;
    std::atomic<HWND> window = nullptr;
    const auto own = [&] {
        Script script;
        window = MakePanel(script);
        Sleep(50);
        EXPECT_FALSE(answered);
        EXPECT_TRUE(RunMessages([&] { return answered.load(); }));
        EXPECT_EQ(DialogDriver(window).Text(IDC_PORT), "7");
        answered = false;
        Sleep(50);
    };
    OnThread(own, [&] {
        EXPECT_TRUE(WaitUntil([&] { return window.load() != nullptr; }));
        EXPECT_TRUE(SetDlgItemTextA(window, IDC_PORT, "7"));
        answered = true;
        EXPECT_TRUE(WaitUntil([&] { return !answered; }));
        EXPECT_FALSE(SetDlgItemTextA(window, IDC_PORT, "8")) << "the owner ends";
    });
    EXPECT_FALSE(DialogDriver(window).Exists());
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

TEST(ModelessDialog, IsOperatedAndTicksWhileItsLoopRuns) {
    OnThread(
        [] {
            Script script;
            const HWND panel = MakePanel(script);
            EXPECT_EQ(FindWindowW(nullptr, WIDE("mitutoyo qi")), panel);
            EXPECT_FALSE(ShowWindow(panel, SW_SHOWNORMAL));
            EXPECT_TRUE(RunMessages([&] {
                return script.heard.back() == Heard{WM_COMMAND, IDC_SEND};
            }));
            EXPECT_EQ(script.heard.size(), 2U);
            // The later period replaces the earlier one, and ticks do not pile up.
            EXPECT_NE(SetTimer(panel, 0, 60'000, nullptr), 0U);
            EXPECT_NE(SetTimer(panel, 0, 100, nullptr), 0U);
            const ULONGLONG start = GetTickCount64();
            Sleep(350);
            EXPECT_TRUE(RunMessages([&] { return script.heard.size() == 5; }));
            EXPECT_GE(GetTickCount64() - start, 450U);
            EXPECT_EQ(script.heard.back(), (Heard{WM_TIMER, 0}));
        },
        [] { DialogDriver(PanelCaption).Press(IDC_SEND); });
    EXPECT_EQ(FindWindowW(nullptr, WIDE("Mitutoyo QI")), nullptr);
}

TEST(Controls, KeepTextsAndNumbers) {
    const struct {
        const char* text;
        BOOL isSigned;
        UINT value;
        BOOL isNumber;
    } cases[] = {
        {"  12 baud", FALSE, 12, TRUE},
        {"-12", TRUE, static_cast<UINT>(-12), TRUE},
        {"", TRUE, 0, FALSE},
        {"x12", FALSE, 0, FALSE},
        {"4294967295", FALSE, 4294967295U, TRUE},
        {"4294967296", FALSE, 0, FALSE},
        {"2147483648", TRUE, 0, FALSE},
    };
    OnThread([&] {
        Script script;
        const HWND panel = MakePanel(script);
        for (const auto& one : cases) {
            SCOPED_TRACE(one.text);
            SetDlgItemTextA(panel, IDC_PORT, one.text);
            BOOL isNumber = 2;
            EXPECT_EQ(GetDlgItemInt(panel, IDC_PORT, &isNumber, one.isSigned), one.value);
            EXPECT_EQ(isNumber, one.isNumber);
        }
        EXPECT_TRUE(SetDlgItemInt(panel, IDC_PORT, static_cast<UINT>(-12), TRUE));
        char text[8] = "1234567";
        EXPECT_EQ(GetDlgItemTextA(panel, IDC_PORT, text, 8), 3U);
        EXPECT_STREQ(text, "-12");
        EXPECT_EQ(GetDlgItemTextA(panel, IDC_PORT, text, 3), 2U);
        EXPECT_STREQ(text, "-1");
        EXPECT_EQ(GetDlgItemTextA(panel, 99, text, 8), 0U);
        EXPECT_FALSE(SetDlgItemTextA(panel, 99, "x"));
    });
}

}  // namespace
