// Before windows.h, which would bring the old sockets.
#include <winsock2.h>

#include <array>
#include <system_error>

#include "simulator/loopback.h"

namespace simulator::loopback {

namespace {

SOCKET Handle(Socket socket) {
    return static_cast<SOCKET>(socket);
}

[[noreturn]] void Fail(const std::string& what, SOCKET socket) {
    const int error = WSAGetLastError();
    closesocket(socket);
    throw std::system_error(error, std::system_category(), what);
}

sockaddr_in Address(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

SOCKET Make() {
    // Once for the process; Windows ends it with the process.
    static const int started = [] {
        WSADATA data{};
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (started != 0) {
        throw std::system_error(started, std::system_category(), "WSAStartup");
    }
    const SOCKET made = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (made == INVALID_SOCKET) {
        Fail("socket", made);
    }
    return made;
}

bool NeverWait(SOCKET socket) {
    u_long on = 1;
    return ioctlsocket(socket, static_cast<long>(FIONBIO), &on) == 0;
}

}  // namespace

Socket Listen(std::uint16_t port) {
    const SOCKET made = Make();
    // Otherwise another program could take the port over.
    const BOOL on = TRUE;
    const sockaddr_in address = Address(port);
    if (setsockopt(made, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on),
                   sizeof on) != 0 ||
        !NeverWait(made) ||
        bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(made, SOMAXCONN) != 0) {
        Fail("control port " + std::to_string(port), made);
    }
    return static_cast<Socket>(made);
}

std::uint16_t PortOf(Socket listener) {
    sockaddr_in address{};
    int size = sizeof address;
    getsockname(Handle(listener), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

Socket Accept(Socket listener) {
    const SOCKET accepted = accept(Handle(listener), nullptr, nullptr);
    if (accepted != INVALID_SOCKET && !NeverWait(accepted)) {
        closesocket(accepted);
        return NoSocket;
    }
    return static_cast<Socket>(accepted);
}

Socket Connect(std::uint16_t port) {
    const SOCKET made = Make();
    const sockaddr_in address = Address(port);
    if (connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        !NeverWait(made)) {
        Fail("control port " + std::to_string(port), made);
    }
    return static_cast<Socket>(made);
}

std::vector<Socket> Wait(const std::vector<Socket>& sockets, std::chrono::milliseconds limit) {
    std::vector<WSAPOLLFD> sources;
    sources.reserve(sockets.size());
    for (const Socket socket : sockets) {
        sources.push_back({Handle(socket), POLLRDNORM, 0});
    }
    std::vector<Socket> ready;
    if (WSAPoll(sources.data(), static_cast<ULONG>(sources.size()),
                static_cast<INT>(limit.count())) > 0) {
        for (const WSAPOLLFD& source : sources) {
            if (source.revents != 0) {
                ready.push_back(static_cast<Socket>(source.fd));
            }
        }
    }
    return ready;
}

std::optional<std::string> Receive(Socket connection) {
    std::array<char, 4096> buffer{};
    const int count = recv(Handle(connection), buffer.data(), static_cast<int>(buffer.size()), 0);
    return count > 0 ? std::optional<std::string>({buffer.data(), std::size_t(count)})
                     : std::nullopt;
}

bool Send(Socket connection, std::string_view bytes) {
    const int count = static_cast<int>(bytes.size());
    return send(Handle(connection), bytes.data(), count, 0) == count;
}

void Close(Socket socket) {
    closesocket(Handle(socket));
}

}  // namespace simulator::loopback
