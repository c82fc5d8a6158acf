#include "rooms/room_test.h"

#include <mutex>

#include "host/process_attach.h"
#include "link/com_lock.h"
#include "settings/settings.h"
#include "support/machine.h"

namespace test_support {

namespace {

void BringModuleUp() {
    static const StaticStage stage;
    static std::once_flag once;
    std::call_once(once, [] { AttachProcess(nullptr); });
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
