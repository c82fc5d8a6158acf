#include "log_viewer/file_saver.h"

#include <stdexcept>
#include <utility>

namespace log_viewer {

namespace {

/// Whether the next text begins a line: the file is empty or ends in a line-feed.
bool EndsAtLineStart(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(-1, std::ios::end);
    const int last = stream.get();
    return !stream || last == '\n';
}

}  // namespace

FileSaver::FileSaver(std::filesystem::path file, bool stamps)
    : file_(std::move(file)),
      stamps_(stamps),
      stream_(file_, std::ios::binary | std::ios::app),
      atLineStart_(EndsAtLineStart(file_)) {
    if (!stream_) {
        throw std::runtime_error("cannot write " + file_.string());
    }
}

void FileSaver::Write(const std::vector<Fragment>& fragments, const TimeOfDay& arrival) {
    if (failed_) {
        return;
    }
    const std::string stamp = stamps_ ? StampText(arrival) : "";
    for (const Fragment& fragment : fragments) {
        stream_ << (atLineStart_ ? stamp : "") << fragment.text << (fragment.endsLine ? "\n" : "");
        atLineStart_ = fragment.endsLine;
    }
    stream_.flush();
    failed_ = !stream_;
}

}  // namespace log_viewer
