#include "link/line_listener.h"

#include <atomic>

namespace {

std::atomic<LineListener> lineListener{nullptr};

}  // namespace

void ListenToLine(LineListener listener) {
    lineListener.store(listener);
}

void TellLineListener(LineText way, const std::string& text) {
    if (const LineListener listener = lineListener.load()) {
        listener(way, text);
    }
}
