#include "link/command_queue.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "link/exchange.h"
#include "link/line_gate.h"
#include "log/log_line.h"

CRITICAL_SECTION CommandQueueLock;
std::atomic<HANDLE> CommandEvent{nullptr};

namespace {

/// Storage without a life of its own, like that of the shared stage data.
union QueueStorage {
    constexpr QueueStorage() : empty() {}
    ~QueueStorage() {}
    char empty;
    std::vector<PostedCommand> queue;
};

constinit QueueStorage storage;

/// The beginning of the text that was taken last, long enough to tell the starts of homing.
std::array<char, 16> takenText ZB_GUARDED_BY(CommandQueueLock){};

void NoteTaken(const char* text) ZB_REQUIRES(CommandQueueLock) {
    std::snprintf(takenText.data(), takenText.size(), "%s", text);
    SetPostedCommandCalledOff(false);
}

}  // namespace

std::vector<PostedCommand>& CommandQueue = storage.queue;

void MakeCommandQueue() {
    std::construct_at(&storage.queue);
}

void FreeCommandQueue() {
    std::destroy_at(&storage.queue);
}

HANDLE OpenCommandEvent() {
    return CreateEventW(nullptr, FALSE, FALSE, WIDE("ZbOvisk_ComEvent"));
}

void EnsureCommandEvent() {
    if (CommandEvent.load() != nullptr) {
        return;
    }
    const HANDLE made = OpenCommandEvent();
    HANDLE kept = nullptr;
    if (made != nullptr && !CommandEvent.compare_exchange_strong(kept, made)) {
        CloseHandle(made);
    }
}

bool PostCommand(std::uint32_t id, const std::string& text) {
    PostedCommand command{id, text};
    {
        const LockHold hold(CommandQueueLock);
        CommandQueue.push_back(std::move(command));
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

bool CommandWaits(std::uint32_t id) {
    const LockHold hold(CommandQueueLock);
    return std::any_of(CommandQueue.begin(), CommandQueue.end(),
                       [id](const PostedCommand& command) { return command.id == id; });
}

bool RunPostedCommand(const char* text) {
    std::string reply;
    return ExchangeLocked(text, reply);
}
