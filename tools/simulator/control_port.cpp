#include "simulator/control_port.h"

#include <utility>
#include <vector>

namespace simulator {

ControlPort::ControlPort(std::uint16_t port, Handler handler)
    : handler_(std::move(handler)), listener_(loopback::Listen(port)) {
    thread_ = std::thread([this] { Run(); });
}

ControlPort::~ControlPort() {
    stop_ = true;
    thread_.join();
    for (const auto& [client, pending] : clients_) {
        loopback::Close(client);
    }
    loopback::Close(listener_);
}

void ControlPort::Run() {
    constexpr auto Round = std::chrono::milliseconds(50);
    while (!stop_) {
        std::vector<loopback::Socket> sockets{listener_};
        for (const auto& [client, pending] : clients_) {
            sockets.push_back(client);
        }
        for (const loopback::Socket ready : loopback::Wait(sockets, Round)) {
            if (ready == listener_) {
                TakeClient();
            } else if (!Serve(ready, clients_[ready])) {
                loopback::Close(ready);
                clients_.erase(ready);
            }
        }
    }
}

void ControlPort::TakeClient() {
    const loopback::Socket client = loopback::Accept(listener_);
    if (client == loopback::NoSocket) {
        return;
    }
    if (clients_.size() == MostClients) {
        loopback::Send(client, "error: too many clients\n");
        loopback::Close(client);
        return;
    }
    clients_[client];
}

/// False if the connection has to be closed. A client that sends without taking its answers is not
/// waited for.
bool ControlPort::Serve(loopback::Socket client, std::string& pending) {
    const auto bytes = loopback::Receive(client);
    if (!bytes) {
        return false;
    }
    pending += *bytes;
    std::string answers;
    std::size_t end = 0;
    while ((end = pending.find('\n')) != std::string::npos) {
        std::string line = pending.substr(0, end);
        pending.erase(0, end + 1);
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        answers += handler_(line) + "\n";
    }
    const bool good = pending.size() <= LongestLine;
    if (!good) {
        answers += "error: line too long\n";
    }
    // In one piece: the system holds a second small one back for a while.
    return (answers.empty() || loopback::Send(client, answers)) && good;
}

}  // namespace simulator
