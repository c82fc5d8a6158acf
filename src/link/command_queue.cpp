#include "link/command_queue.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

#include "link/exchange.h"
#include "link/line_gate.h"
#include "log/zbr_log.h"
#include "platform/ownership.h"

CRITICAL_SECTION CommandQueueLock;
std::atomic<HANDLE> CommandEvent{nullptr};

namespace {

constinit Late<std::vector<PostedCommand>> queue;

/// The beginning of the text that was taken last, long enough to tell the starts of homing.
std::array<char, 16> takenText ZB_GUARDED_BY(CommandQueueLock){};

void NoteTaken(const char* text) ZB_REQUIRES(CommandQueueLock) {
    std::snprintf(takenText.data(), takenText.size(), "%s", text);
    SetPostedCommandCalledOff(false);
}

/// Folds the command into the newest of its id that waits: while the line is lost nobody takes any,
/// and a host that fades its lamps for days must not fill the memory. False if none waits.
bool Renew(PostedCommand& command) ZB_REQUIRES(CommandQueueLock) {
    const auto waiting =
        std::find_if(CommandQueue.rbegin(), CommandQueue.rend(),
                     [&](const PostedCommand& other) { return other.id == command.id; });
    if (waiting == CommandQueue.rend()) {
        return false;
    }
    waiting->text = std::move(command.text);
    return true;
}

}  // namespace

std::vector<PostedCommand>& CommandQueue = queue.object;

void MakeCommandQueue() {
    queue.Begin();
}

void FreeCommandQueue() {
    queue.End();
}

HANDLE OpenCommandEvent() {
    return CreateEventW(nullptr, FALSE, FALSE, WIDE("ZbOvisk_ComEvent"));
}

void EnsureCommandEvent() {
    KeepOne(CommandEvent, OpenCommandEvent);
}

bool PostCommand(std::uint32_t id, const std::string& text) {
    PostedCommand command{id, text};
    {
        const LockHold hold(CommandQueueLock);
        if (IsHoming(id) && LineIsLost()) {
            return false;
        }
        if (!LineIsLost() || !Renew(command)) {
            CommandQueue.push_back(std::move(command));
        }
    }
    if (const HANDLE event = CommandEvent.load()) {
        SetEvent(event);
    }
    return true;
}

bool ZbComPopUniqueCommandNoLock(PostedCommand& entry) {
    if (CommandQueue.empty()) {
        NoteTaken("");
        return false;
    }
    auto kept = CommandQueue.begin();
    entry = std::move(*kept);
    for (auto next = kept + 1; next != CommandQueue.end(); ++next) {
        if (next->id == entry.id) {
            entry.text = std::move(next->text);
            WriteLine("ZbComPopUniqueCommandNoLock POPPED!\n");
        } else {
            *kept++ = std::move(*next);
        }
    }
    CommandQueue.erase(kept, CommandQueue.end());
    NoteTaken(entry.text.c_str());
    return true;
}

void WithdrawCommand(const char* text) {
    const LockHold hold(CommandQueueLock);
    std::erase_if(CommandQueue, [=](const PostedCommand& command) { return command.text == text; });
    if (std::strcmp(takenText.data(), text) == 0) {
        SetPostedCommandCalledOff(true);
    }
}

void DropHomingCommands() {
    const LockHold hold(CommandQueueLock);
    NoteTaken("");
    std::erase_if(CommandQueue, [](const PostedCommand& command) { return IsHoming(command.id); });
}

void ReturnCommand(PostedCommand&& command) {
    const LockHold hold(CommandQueueLock);
    CommandQueue.insert(CommandQueue.begin(), std::move(command));
}

bool CommandWaits(std::uint32_t id) {
    const LockHold hold(CommandQueueLock);
    return std::any_of(CommandQueue.begin(), CommandQueue.end(),
                       [id](const PostedCommand& command) { return command.id == id; });
}

bool RunPostedCommand(const char* text) {
    std::string reply;
    return ExchangeLocked(text, reply);
}
