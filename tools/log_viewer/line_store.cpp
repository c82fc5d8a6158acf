#include "log_viewer/line_store.h"

namespace log_viewer {

namespace {

constexpr std::size_t LongestLine = 8192;

}  // namespace

LineStore::LineStore(std::size_t limit) : limit_(limit) {}

void LineStore::AppendFragment(const Fragment& fragment, const TimeOfDay& arrival) {
    if (lines_.empty() || lines_.back().ended) {
        if (lines_.size() == limit_) {
            lines_.pop_front();
            ++first_;
        }
        lines_.push_back({.arrival = arrival, .text = {}, .ended = false});
    }
    Line& line = lines_.back();
    line.text += fragment.text;
    line.ended = fragment.endsLine || line.text.size() > LongestLine;
}

void LineStore::Append(const std::vector<Fragment>& fragments, const TimeOfDay& arrival) {
    const std::lock_guard hold(mutex_);
    for (const Fragment& fragment : fragments) {
        AppendFragment(fragment, arrival);
    }
}

LineStore::Reading LineStore::ReadOn(Place& place, const Form& form) const {
    const std::lock_guard hold(mutex_);
    Reading reading{};
    if (place.line < first_) {
        reading.skipped = first_ - place.line;
        reading.text = place.offset != 0 ? form.lineEnd : "";
        place = {.line = first_, .offset = 0};
    }
    for (; place.line < first_ + lines_.size(); ++place.line, place.offset = 0) {
        const Line& line = lines_[static_cast<std::size_t>(place.line - first_)];
        if (place.offset == 0 && form.stamps) {
            reading.text += StampText(line.arrival);
        }
        reading.text.append(line.text, place.offset);
        if (!line.ended) {
            place.offset = line.text.size();
            break;
        }
        reading.text += form.lineEnd;
    }
    return reading;
}

LineStore::Place LineStore::Clear() {
    const std::lock_guard hold(mutex_);
    first_ += lines_.size();
    lines_.clear();
    return {.line = first_, .offset = 0};
}

std::uint64_t LineStore::Received() const {
    const std::lock_guard hold(mutex_);
    return first_ + lines_.size();
}

std::size_t LineStore::Held() const {
    const std::lock_guard hold(mutex_);
    return lines_.size();
}

}  // namespace log_viewer
