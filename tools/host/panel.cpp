#include "host/panel.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <map>
#include <thread>

#include "host/interrupt.h"
#include "host/panel_window.h"
#include "resources/resource_ids.h"

namespace host_tool {

namespace {

using namespace std::chrono_literals;

/// The texts of the panel's boxes by their ids, for telling what has changed.
using Boxes = std::map<int, std::string>;

std::string NameOf(int box) {
    static const std::map<int, const char*> names{
        {IDC_SENT, "Sent Buffer"},      {IDC_RECEIVED, "Received Buffer"},
        {IDC_POSITION, "position"},     {IDC_STATUS, "status"},
        {IDC_LIGHT_1_REPLY, "light 1"}, {IDC_LIGHT_2_REPLY, "light 2"},
    };
    const auto name = names.find(box);
    return name == names.end() ? std::to_string(box) : name->second;
}

std::string Printable(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text;
}

void PrintChanges(HWND panel, Boxes& last) {
    for (const PanelControl& control : ControlsOf(panel)) {
        if (control.isBox && last[control.id] != control.text) {
            last[control.id] = control.text;
            std::printf("  %-15s %s\n", NameOf(control.id).c_str(),
                        Printable(control.text).c_str());
        }
    }
    std::fflush(stdout);
}

/// Presses the button of that caption. False if there is none.
bool Press(HWND panel, const std::string& caption) {
    const auto controls = ControlsOf(panel);
    const auto button = std::ranges::find_if(controls, [&](const PanelControl& control) {
        return control.isButton && control.text == caption;
    });
    if (button == controls.end()) {
        return false;
    }
    PressButton(panel, button->id);
    return true;
}

/// Types what stands behind the "=" into the box before it. False if that is none.
bool Type(HWND panel, const std::string& step, std::size_t equals) {
    int id = 0;
    const auto [end, error] = std::from_chars(step.data(), step.data() + equals, id);
    const auto controls = ControlsOf(panel);
    const bool exists = std::ranges::any_of(
        controls, [id](const PanelControl& control) { return control.isBox && control.id == id; });
    if (error != std::errc{} || end != step.data() + equals || !exists) {
        return false;
    }
    TypeInto(panel, id, step.substr(equals + 1));
    return true;
}

bool DoStep(HWND panel, const std::string& step, Boxes& last) {
    std::printf("-> %s\n", step.c_str());
    const std::size_t equals = step.find('=');
    if (!(equals == step.npos ? Press(panel, step) : Type(panel, step, equals))) {
        std::printf("  the panel has no such button or box\n");
        return false;
    }
    PrintChanges(panel, last);
    return true;
}

void ReadKeyboard(HWND panel) {
    std::printf(
        "keys: a button's caption presses it, ID=TEXT types into a box, an empty line "
        "shows what has changed\n");
    Boxes last;
    PrintChanges(panel, last);
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line.empty()) {
            PrintChanges(panel, last);
        } else {
            DoStep(panel, line, last);
        }
    }
}

/// The steps, on a thread of their own: the panel's thread serves it meanwhile.
ExitStatus RunSteps(HWND panel, const std::vector<std::string>& steps) {
    Boxes last;
    PrintChanges(panel, last);
    for (const std::string& step : steps) {
        if (!DoStep(panel, step, last)) {
            return Refused;
        }
    }
    return Done;
}

}  // namespace

ExitStatus ServePanel(const PanelSession& session) {
    const HWND panel = FindPanel();
    if (panel == nullptr) {
        std::printf("no panel: the settings file has to say Dialog=1 in its section [Ovisk]\n");
        return Refused;
    }
    std::atomic<bool> stepsDone{false};
    ExitStatus status = Done;
    std::thread steps([&] {
        status = RunSteps(panel, session.steps);
        stepsDone = true;
    });
    if (session.steps.empty() && PanelNeedsKeyboard()) {
        // Runs on until the next line or the program's end: a read can't be taken back.
        std::thread(ReadKeyboard, panel).detach();
    }
    const auto end = std::chrono::steady_clock::now() + session.length;
    ServeWindows(panel, [&] {
        const bool isOver = session.length > 0s ? std::chrono::steady_clock::now() >= end
                                                : !session.steps.empty() || !IsShown(panel);
        return stepsDone && (isOver || Interrupted());
    });
    steps.join();
    return status;
}

}  // namespace host_tool
