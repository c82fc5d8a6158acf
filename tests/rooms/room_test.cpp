#include "rooms/room_test.h"

#include "host/process_attach.h"
#include "link/com_lock.h"
#include "settings/settings.h"
#include "support/machine.h"

namespace test_support {

namespace {

/// The process's one module, which goes with it.
void BringModuleUp() {
    static const struct Module {
        Module() { AttachProcess(nullptr); }
        ~Module() { DetachProcess(); }
    } module;
}

}  // namespace

RoomTest::RoomTest() {
    RemoveSettings();
    BringModuleUp();
    ReadSettingsAtLoad();
    log.Take();
}

RoomTest::~RoomTest() {
    ClosePortWhenFree();
}

void LineTest::Answer(std::vector<simulator::ScriptedReply> replies) {
    controller->SetScript(
        [replies = std::move(replies), next = std::size_t{0}](
            const std::string&) mutable -> std::optional<simulator::ScriptedReply> {
            if (next == replies.size()) {
                return std::nullopt;
            }
            return replies[next++];
        });
}

}  // namespace test_support
