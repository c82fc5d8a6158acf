#pragma once

#include <atomic>
#include <thread>

#include "log_viewer/channel.h"
#include "log_viewer/file_saver.h"
#include "log_viewer/line_store.h"

namespace log_viewer {

/// Takes the text out of the channel on a thread of its own, so that no slow view holds it up: at
/// each announced line, and ten times a second for pieces that nobody announces. Hands it to the
/// saver first and then to the store.
class Collector {
  public:
    /// `saver` may be null. All must outlive this.
    Collector(Channel& channel, LineStore& store, FileSaver* saver);
    ~Collector() { Stop(); }
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    /// Takes what is left and ends. False if somebody held the mutex for 5 s, so that text may have
    /// been left. Only one thread may call it, which may do so again.
    bool Stop();

    /// 16-bit characters that ever came.
    std::uint64_t Characters() const { return characters_; }
    /// The longest text that was found in the block; close to 4999 means that texts may have been
    /// dropped by their writers.
    std::size_t Fullest() const { return fullest_; }

  private:
    void Run();
    bool Collect(DWORD milliseconds);

    Channel& channel_;
    LineStore& store_;
    FileSaver* const saver_;
    std::u16string text_;
    std::atomic<std::uint64_t> characters_{0};
    std::atomic<std::size_t> fullest_{0};
    std::atomic<bool> stop_{false};
    std::atomic<bool> tookAll_{false};
    std::thread thread_;
};

}  // namespace log_viewer
