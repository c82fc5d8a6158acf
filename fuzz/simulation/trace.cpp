#include "simulation/trace.h"

#include <cstdlib>
#include <string>

#include "native/virtual_time.h"
#include "simulation/world.h"

namespace simulation {
namespace {

/// Line ends and other bytes that would spoil a line.
std::string Shown(std::string_view text) {
    std::string shown;
    for (const char byte : text) {
        if (byte >= ' ' && byte < 0x7F && byte != '\\') {
            shown += byte;
        } else {
            constexpr std::string_view Hex = "0123456789ABCDEF";
            const auto code = static_cast<unsigned char>(byte);
            shown += {'\\', Hex[code >> 4], Hex[code & 15]};
        }
    }
    return shown;
}

}  // namespace

void Trace::Note(std::string_view who, std::string_view what) {
    std::string line = std::to_string(virtual_time::Elapsed().count() / 1000) + " ";
    line.append(who).append(": ").append(what);
    for (const char byte : line) {
        digest_ = (digest_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    if (file_ != nullptr) {
        std::fprintf(file_, "%s\n", Shown(line).c_str());
    }
}

void Violate(std::string_view rule, std::string_view text) {
    std::string whole(rule);
    if (!text.empty()) {
        whole.append(": ").append(Shown(text));
    }
    world->trace.Note("VIOLATION", whole);
    std::snprintf(world->report.violation, sizeof world->report.violation, "at %.3f s: %s",
                  std::chrono::duration<double>(virtual_time::Elapsed()).count(), whole.c_str());
    std::fflush(nullptr);
    std::_Exit(3);
}

}  // namespace simulation
