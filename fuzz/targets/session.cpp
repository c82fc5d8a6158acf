// A whole session: the module with its worker, a host that calls the exports, a controller that
// answers badly. Bytes decide about the calls, the replies and the time between them. Whatever
// happened, the module has to show the stage again once the controller answers well.

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cmath>
#include <cstring>

#include "host/zb_ovisk.h"
#include "platform/win32.h"
#include "simulator/protocol.h"
#include "simulator/stage_model.h"
#include "targets/fuzz_module.h"

namespace {

/// The controller, and the bytes that tell where it goes wrong.
struct Controller {
    simulator::StageModel stage;
    simulator::Protocol protocol{stage};
    FuzzedDataProvider* faults = nullptr;

    std::vector<fuzz::Piece> Answer(const std::string& request) {
        FUZZ_REQUIRE(request.size() > 3 && request[0] == '@' && request.ends_with("\r\n"));
        std::string reply = protocol.Answer(request.substr(0, request.size() - 2));
        if (faults == nullptr || faults->remaining_bytes() == 0) {
            return {{{}, reply}};
        }
        const auto delay = std::chrono::milliseconds(faults->ConsumeIntegralInRange(0, 300));
        switch (faults->ConsumeIntegralInRange(0, 7)) {
            case 0:
                return {};
            case 1:
                return {{delay, faults->ConsumeRandomLengthString(400)}};
            case 2:
                return {{delay, reply.substr(0, reply.size() / 2)},
                        {delay, reply.substr(reply.size() / 2)}};
            case 3:
                return {{delay, reply}, {delay, reply}};
            default:
                return {{delay, reply}};
        }
    }
};

Controller controller;

void Note(bool finished, bool, const McndReply* reply, std::intptr_t) {
    FUZZ_REQUIRE(finished && reply != nullptr);
}

void Call(FuzzedDataProvider& input) {
    switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0:
            ZbOvisk_SetLight(input.ConsumeIntegral<std::int32_t>(),
                             input.ConsumeIntegral<std::int32_t>());
            break;
        case 1: {
            double target[3];
            for (double& one : target) {
                const auto bits = input.ConsumeIntegral<std::uint64_t>();
                std::memcpy(&one, &bits, sizeof(one));
            }
            const bool sent =
                ZbOvisk_CncGotoAbsoluteNotifyWorld(target[0], target[1], target[2], Note, 1);
            FUZZ_REQUIRE(!sent || (std::abs(target[0]) < 2148 && std::abs(target[1]) < 2148 &&
                                   std::abs(target[2]) < 2148));
            break;
        }
        case 2: {
            std::array<bool, 3> latches{};
            ZbOvisk_GetAndClearLatches(&latches[0], &latches[1], &latches[2]);
            break;
        }
        case 3:
            OVISK_ZbrCmd(input.ConsumeBool() ? OviskCmd_Startup : 7,
                         input.ConsumeIntegral<std::uint32_t>());
            break;
        case 4: {
            OviskData data;
            FUZZ_REQUIRE(ZbOvisk_GetOviskData(data));
            FUZZ_REQUIRE(data.cposmr.replyError == 0 && data.cposmr.replyErrorText.empty());
            break;
        }
        default:
            Sleep(input.ConsumeIntegralInRange<DWORD>(0, 3000));
    }
}

/// Time for what is under way to end, and for two status polls.
void ComeToLife() {
    constexpr DWORD Calm = 12'000;
    controller.faults = nullptr;
    Sleep(Calm);
    controller.stage.Place({12'300, -400, 100});
    controller.stage.SetLamp(5, 77);
    Sleep(Calm);
    OviskData data;
    FUZZ_REQUIRE(ZbOvisk_GetOviskData(data));
    FUZZ_REQUIRE(data.cposmr.x == 123 && data.cposmr.y == -4 && data.cposmr.z == 1);
    FUZZ_REQUIRE(data.labr.labr5 == 77);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Peer& peer = fuzz::BringUp();
    static const bool isStarted = [&] {
        peer.answer = [](const std::string& request) { return controller.Answer(request); };
        return OVISK_ZbrCmd(OviskCmd_Startup, 0);
    }();
    FUZZ_REQUIRE(isStarted);
    FuzzedDataProvider input(data, size);
    const std::vector<std::uint8_t> faultBytes =
        input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 2000));
    FuzzedDataProvider faults(faultBytes.data(), faultBytes.size());
    controller.faults = &faults;
    for (int calls = 0; calls < 60 && input.remaining_bytes() > 0; ++calls) {
        Call(input);
    }
    ComeToLife();
    return 0;
}
