#include "log_viewer/channel.h"
#include "log_viewer/presence.h"
#include "native/machine.h"

namespace log_viewer {

struct Presence::State {
    WindowTitle title{WindowTitleText};
};

Presence::Presence() : state_(std::make_unique<State>()) {}

Presence::~Presence() = default;

}  // namespace log_viewer
