#include "native/local_port.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "native/comm_settings.h"
#include "native/serial_line.h"

struct LocalPort::State {
    explicit State(unsigned portNumber, LocalPeer& portPeer)
        : number(portNumber), peer(&portPeer) {}

    const unsigned number;
    std::mutex lock;
    /// The two below are under the lock. Null once the port has gone.
    LocalPeer* peer;
    bool isOpen = false;
    std::atomic<std::uint32_t> changes{0};
};

namespace posix {
namespace {

using State = LocalPort::State;

std::mutex portsLock;
auto& ports = *new std::vector<std::shared_ptr<State>>;

std::shared_ptr<State> FindPort(unsigned number) {
    const std::lock_guard hold(portsLock);
    const auto found =
        std::ranges::find(ports, number, [](const auto& one) { return one->number; });
    return found == ports.end() ? nullptr : *found;
}

void Change(State& port) {
    port.changes.fetch_add(1);
    FutexWakeAll(port.changes);
}

class LocalLine : public SerialLine {
  public:
    explicit LocalLine(std::shared_ptr<State> port) : port_(std::move(port)) {}
    ~LocalLine() override {
        const std::lock_guard hold(port_->lock);
        port_->isOpen = false;
    }

    ssize_t Read(char* buffer, std::size_t size) override {
        const std::lock_guard hold(port_->lock);
        if (port_->peer == nullptr) {
            return -1;
        }
        const std::string came = port_->peer->TakeDue(size, std::chrono::nanoseconds(Now()));
        return static_cast<ssize_t>(came.copy(buffer, size));
    }

    ssize_t Write(const char* bytes, std::size_t size) override {
        const std::lock_guard hold(port_->lock);
        if (port_->peer == nullptr) {
            return -1;
        }
        port_->peer->Receive({bytes, size}, std::chrono::nanoseconds(Now()));
        return static_cast<ssize_t>(size);
    }

    bool AwaitBytes(Deadline deadline) override {
        const std::uint32_t seen = port_->changes.load();
        const Deadline due = NextDue();
        return FutexWaitUntil(port_->changes, seen, std::min(deadline, due)) || due <= deadline;
    }

    bool AwaitRoom(Deadline /*deadline*/) override { return true; }

    DWORD Apply(const DCB& settings) override {
        const std::lock_guard hold(port_->lock);
        if (port_->peer == nullptr) {
            return ERROR_BAD_COMMAND;
        }
        return AreAcceptable(settings) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    }

  private:
    Deadline NextDue() const {
        const std::lock_guard hold(port_->lock);
        const auto due = port_->peer != nullptr ? port_->peer->NextDue() : std::nullopt;
        return port_->peer == nullptr ? 0 : due ? due->count() : Never;
    }

    const std::shared_ptr<State> port_;
};

}  // namespace

DWORD OpenLocalLine(unsigned number, std::unique_ptr<SerialLine>& line, DCB& settings) {
    const std::shared_ptr<State> port = FindPort(number);
    if (port == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::lock_guard hold(port->lock);
    if (std::exchange(port->isOpen, true)) {
        return ERROR_ACCESS_DENIED;
    }
    line = std::make_unique<LocalLine>(port);
    settings = PlainSettings();
    return ERROR_SUCCESS;
}

}  // namespace posix

LocalPort::LocalPort(unsigned number, LocalPeer& peer)
    : state_(std::make_shared<State>(number, peer)) {
    const std::lock_guard hold(posix::portsLock);
    posix::ports.push_back(state_);
}

LocalPort::~LocalPort() {
    {
        const std::lock_guard hold(posix::portsLock);
        std::erase(posix::ports, state_);
    }
    const std::lock_guard hold(state_->lock);
    state_->peer = nullptr;
    posix::Change(*state_);
}

void LocalPort::Changed() {
    posix::Change(*state_);
}
