#pragma once

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "simulator/transport.h"

namespace simulator {

/// A serial line made of a pseudo-terminal, found by the host through a symbolic link. The line
/// stays up when the host closes and opens it again. Native builds only.
class PtyTransport : public Transport {
  public:
    /// Makes the line and the link. An old link at that place is replaced; anything else there
    /// is left alone and throws std::system_error, as does any failure of the system.
    explicit PtyTransport(std::filesystem::path link);
    /// Removes the link, if it is still its own.
    ~PtyTransport() override;

    std::string Read(std::chrono::nanoseconds limit) override;
    bool Write(std::string_view bytes) override;
    void Wake() override;

    bool PortGoesWithCable() const override { return true; }

    /// Pulls the cable: the link goes and the host's end of the line hangs up. From any thread;
    /// done when it returns.
    void Unplug() override;
    /// Plugs it in again: a new line under the same link. Throws as the constructor does.
    void Replug() override;

  private:
    class Borrowed;

    void MakeLine();
    void MakeLink();
    void RemoveLink();
    void CloseLine();
    std::string ReadLine(int line, std::chrono::nanoseconds limit);

    std::filesystem::path link_;
    std::filesystem::path device_;
    int wake_ = -1;
    std::mutex mutex_;
    std::condition_variable unused_;
    /// The three below are guarded by `mutex_`. The line is closed only while nobody uses it.
    int master_ = -1;
    int slave_ = -1;
    int users_ = 0;
    bool plugged_ = false;
};

}  // namespace simulator
