#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "simulator/loopback.h"

namespace simulator::loopback {

namespace {

int Descriptor(Socket socket) {
    return static_cast<int>(socket);
}

[[noreturn]] void Fail(const std::string& what, int descriptor) {
    const int error = errno;
    if (descriptor >= 0) {
        close(descriptor);
    }
    throw std::system_error(error, std::generic_category(), what);
}

sockaddr_in Address(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int Make() {
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made < 0) {
        Fail("socket", made);
    }
    return made;
}

}  // namespace

Socket Listen(std::uint16_t port) {
    const int made = Make();
    const int on = 1;
    const sockaddr_in address = Address(port);
    if (setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        fcntl(made, F_SETFL, O_NONBLOCK) != 0 ||
        bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(made, SOMAXCONN) != 0) {
        Fail("control port " + std::to_string(port), made);
    }
    return made;
}

std::uint16_t PortOf(Socket listener) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(Descriptor(listener), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

Socket Accept(Socket listener) {
    return accept4(Descriptor(listener), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
}

Socket Connect(std::uint16_t port) {
    const int made = Make();
    const sockaddr_in address = Address(port);
    if (connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        fcntl(made, F_SETFL, O_NONBLOCK) != 0) {
        Fail("control port " + std::to_string(port), made);
    }
    return made;
}

std::vector<Socket> Wait(const std::vector<Socket>& sockets, std::chrono::milliseconds limit) {
    std::vector<pollfd> sources;
    sources.reserve(sockets.size());
    for (const Socket socket : sockets) {
        sources.push_back({Descriptor(socket), POLLIN, 0});
    }
    std::vector<Socket> ready;
    if (poll(sources.data(), sources.size(), static_cast<int>(limit.count())) > 0) {
        for (const pollfd& source : sources) {
            if (source.revents != 0) {
                ready.push_back(source.fd);
            }
        }
    }
    return ready;
}

std::optional<std::string> Receive(Socket connection) {
    std::array<char, 4096> buffer{};
    const ssize_t count = recv(Descriptor(connection), buffer.data(), buffer.size(), 0);
    return count > 0 ? std::optional<std::string>({buffer.data(), std::size_t(count)})
                     : std::nullopt;
}

bool Send(Socket connection, std::string_view bytes) {
    const ssize_t sent = send(Descriptor(connection), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return sent == static_cast<ssize_t>(bytes.size());
}

void Close(Socket socket) {
    close(Descriptor(socket));
}

}  // namespace simulator::loopback
