#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace simulator {

/// A line with a host at its other end. `Read` and `Write` belong to one thread.
class Transport {
  public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    virtual ~Transport() = default;

    /// Bytes as soon as some are there; empty if nothing came within `limit`, or on `Wake`.
    virtual std::string Read(std::chrono::nanoseconds limit) = 0;
    /// Sends what the line takes without waiting for the host; false if not all of it.
    virtual bool Write(std::string_view bytes) = 0;
    /// Ends a running `Read` early, from any thread, where the line can do that.
    virtual void Wake() {}

    /// Whether the host's port goes with the cable. On other lines the host only meets silence.
    virtual bool PortGoesWithCable() const { return false; }

    /// Pulls the cable and plugs it in again, as far as the host can see that by this kind of line;
    /// otherwise nothing. May throw std::system_error, and may be repeated.
    virtual void Unplug() {}
    virtual void Replug() {}
};

}  // namespace simulator
