#include "simulator/console_input.h"

#include <condition_variable>
#include <deque>
#include <iostream>
#include <mutex>
#include <thread>
#include <utility>

namespace simulator {

struct ConsoleInput::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::string> lines;
    bool ended = false;
};

ConsoleInput::ConsoleInput() : state_(std::make_shared<State>()) {
    std::thread([state = state_] {
        std::string line;
        while (std::getline(std::cin, line)) {
            if (line.ends_with('\r')) {
                line.pop_back();
            }
            const std::lock_guard hold(state->mutex);
            state->lines.push_back(std::exchange(line, {}));
            state->changed.notify_one();
        }
        const std::lock_guard hold(state->mutex);
        state->ended = true;
    }).detach();
}

std::optional<std::string> ConsoleInput::Next(std::chrono::milliseconds limit) {
    std::unique_lock hold(state_->mutex);
    if (!state_->changed.wait_for(hold, limit, [this] { return !state_->lines.empty(); })) {
        return std::nullopt;
    }
    std::string line = std::move(state_->lines.front());
    state_->lines.pop_front();
    return line;
}

bool ConsoleInput::Ended() const {
    const std::lock_guard hold(state_->mutex);
    return state_->ended && state_->lines.empty();
}

}  // namespace simulator
