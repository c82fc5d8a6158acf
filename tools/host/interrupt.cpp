#include "host/interrupt.h"

#include <algorithm>
#include <csignal>
#include <thread>

namespace host_tool {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void NoteInterrupt(int) {
    interrupted = 1;
}

}  // namespace

void CatchInterrupts() {
    std::signal(SIGINT, NoteInterrupt);
    std::signal(SIGTERM, NoteInterrupt);
}

bool Interrupted() {
    return interrupted != 0;
}

void Pause(std::chrono::milliseconds time) {
    constexpr std::chrono::milliseconds Slice{50};
    while (time.count() > 0 && !Interrupted()) {
        std::this_thread::sleep_for(std::min(time, Slice));
        time -= Slice;
    }
}

}  // namespace host_tool
