#include "log_viewer/collector.h"

#include <algorithm>

namespace log_viewer {

namespace {

constexpr DWORD LookMilliseconds = 100;
constexpr DWORD MutexMilliseconds = 1000;
constexpr DWORD LastMutexMilliseconds = 5000;

}  // namespace

Collector::Collector(Channel& channel, LineStore& store, FileSaver* saver)
    : channel_(channel), store_(store), saver_(saver), thread_([this] { Run(); }) {}

bool Collector::Stop() {
    stop_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
    return tookAll_;
}

void Collector::Run() {
    while (!stop_) {
        Collect(MutexMilliseconds);
        channel_.WaitForLine(LookMilliseconds);
    }
    tookAll_ = Collect(LastMutexMilliseconds);
}

bool Collector::Collect(DWORD milliseconds) {
    if (!channel_.Take(text_, milliseconds)) {
        return false;
    }
    if (!text_.empty()) {
        const TimeOfDay arrival = Now();
        const std::vector<Fragment> fragments = SplitLines(text_);
        if (saver_ != nullptr) {
            saver_->Write(fragments, arrival);
        }
        store_.Append(fragments, arrival);
        characters_ += text_.size();
        fullest_ = std::max(fullest_.load(), text_.size());
    }
    return true;
}

}  // namespace log_viewer
