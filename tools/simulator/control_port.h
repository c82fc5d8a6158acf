#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>

#include "simulator/loopback.h"

namespace simulator {

/// A TCP port of this machine at which programs send command lines and get one answer line for
/// each. Any number of clients up to a limit, whose lines are carried out in a thread of its own.
class ControlPort {
  public:
    static constexpr std::size_t MostClients = 16;
    static constexpr std::size_t LongestLine = 1000;

    /// Called on the port's thread for each line, without its line end. The result is the answer
    /// line, without one too.
    using Handler = std::function<std::string(std::string_view line)>;

    /// Opens the port; 0: a free one. Throws std::system_error.
    ControlPort(std::uint16_t port, Handler handler);
    /// Closes it and ends the thread, which may take 50 ms.
    ~ControlPort();
    ControlPort(const ControlPort&) = delete;
    ControlPort& operator=(const ControlPort&) = delete;

    std::uint16_t Number() const { return loopback::PortOf(listener_); }

  private:
    void Run();
    void TakeClient();
    bool Serve(loopback::Socket client, std::string& pending);

    Handler handler_;
    loopback::Socket listener_;
    /// What each client has sent of a line that has not ended yet. The thread's own.
    std::map<loopback::Socket, std::string> clients_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace simulator
