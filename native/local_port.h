#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// The far end of a local port: bytes in, bytes out when they are due. Called on the threads that
/// use the port, one at a time; times are of the layer's clock and never run backwards.
class LocalPeer {
  public:
    virtual ~LocalPeer() = default;
    virtual void Receive(std::string_view bytes, std::chrono::nanoseconds now) = 0;
    /// The next bytes, at most so many, of those that have arrived by `now`.
    virtual std::string TakeDue(std::size_t most, std::chrono::nanoseconds now) = 0;
    /// When `TakeDue` next has something to do; nothing while only new bytes can change that.
    virtual std::optional<std::chrono::nanoseconds> NextDue() = 0;
};

/// A serial port of this process alone, without a device: the peer stands where the line would
/// lead. For tools and tests, not for the product. It hides a device of the same number.
class LocalPort {
  public:
    /// `peer` must outlive the port.
    LocalPort(unsigned number, LocalPeer& peer);
    /// Pulls the port out: whatever an open handle is asked for fails from now on.
    ~LocalPort();
    LocalPort(const LocalPort&) = delete;
    LocalPort& operator=(const LocalPort&) = delete;

    /// Whoever changes what the peer has to send, other than by its functions, says so.
    void Changed();

    struct State;

  private:
    std::shared_ptr<State> state_;
};
