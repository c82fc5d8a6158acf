#include "targets/fuzz_module.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "host/process_attach.h"
#include "native/machine.h"
#include "native/virtual_time.h"

namespace fuzz {

namespace {

constexpr unsigned PortNumber = 3;

}  // namespace

void Peer::Receive(std::string_view bytes, std::chrono::nanoseconds now) {
    std::chrono::nanoseconds due = now;
    for (Piece& piece : answer(std::string(bytes))) {
        due += piece.delay;
        outgoing_.push_back({due, std::move(piece.bytes)});
    }
}

std::string Peer::TakeDue(std::size_t most, std::chrono::nanoseconds now) {
    std::string taken;
    while (!outgoing_.empty() && outgoing_.front().due <= now && taken.size() < most) {
        std::string& bytes = outgoing_.front().bytes;
        const std::size_t count = std::min(bytes.size(), most - taken.size());
        taken += bytes.substr(0, count);
        bytes.erase(0, count);
        if (bytes.empty()) {
            outgoing_.pop_front();
        }
    }
    return taken;
}

std::optional<std::chrono::nanoseconds> Peer::NextDue() {
    return outgoing_.empty() ? std::nullopt : std::optional(outgoing_.front().due);
}

Peer& BringUp() {
    static Peer peer;
    static const bool isUp = [] {
        virtual_time::Start();
        std::filesystem::create_directories(std::filesystem::path(SettingsPath()).parent_path());
        static LocalPort port(PortNumber, peer);
        AttachProcess(nullptr);
        return true;
    }();
    static_cast<void>(isUp);
    return peer;
}

std::string SettingsPath() {
    return MachineRoot() + "/drive_c/Users/Public/Documents/Zembra/Settings/zembra.ini";
}

}  // namespace fuzz
