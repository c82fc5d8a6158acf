#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// TCP within this machine, no more than the control port and its clients need. The address is
/// 127.0.0.1 always, so nobody outside gets in. No call but Wait waits. Thread-safe.
namespace simulator::loopback {

/// The system's own number of a socket.
using Socket = std::intptr_t;
inline constexpr Socket NoSocket = -1;

/// Takes connections at this port from now on; 0: at a free one. Throws std::system_error.
Socket Listen(std::uint16_t port);
std::uint16_t PortOf(Socket listener);
/// The next connection that somebody has made, if there is one; otherwise NoSocket.
Socket Accept(Socket listener);
/// Makes a connection to a port that somebody listens at. Throws std::system_error.
Socket Connect(std::uint16_t port);
/// Waits until one of them has something to take or has ended, and says which; none after `limit`.
std::vector<Socket> Wait(const std::vector<Socket>& sockets, std::chrono::milliseconds limit);
/// What has come on a connection for which Wait has said so; nothing: it has ended.
std::optional<std::string> Receive(Socket connection);
/// False if the connection has ended or does not take all of it now.
bool Send(Socket connection, std::string_view bytes);
void Close(Socket socket);

}  // namespace simulator::loopback
