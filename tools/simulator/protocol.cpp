#include "simulator/protocol.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

namespace simulator {

namespace {

/// A request taken apart: "@MMVAL=1,2,3" has the mnemonic "MMVAL", the form '=' and "1,2,3".
struct Request {
    std::string_view mnemonic;
    /// '?' for a query, '=' for a setting, 0 for an action.
    char form = 0;
    std::string_view values;
};

using Handler = std::string (*)(StageModel& model, const Request& request);

struct Command {
    std::string_view mnemonic;
    char form;
    std::size_t fields;
    Handler handler;
};

std::string ErrorFields(const std::string& error) {
    return "#," + error;
}

bool IsMnemonicByte(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

/// Nothing if the text has not the shape of a request.
std::optional<Request> Parse(std::string_view text) {
    if (!text.starts_with('@')) {
        return std::nullopt;
    }
    const auto end = std::find_if_not(text.begin() + 1, text.end(), IsMnemonicByte);
    const auto length = static_cast<std::size_t>(end - text.begin()) - 1;
    Request request{text.substr(1, length), 0, {}};
    const std::string_view rest = text.substr(1 + length);
    if (!rest.empty()) {
        request.form = rest.front();
        request.values = rest.substr(1);
    }
    const bool query = request.form == '?' && request.values.empty();
    const bool good = rest.empty() || query || request.form == '=';
    return length > 0 && good ? std::optional(request) : std::nullopt;
}

/// The mnemonic is empty in the reply to what has not the shape of a request.
std::string Reply(const std::optional<Request>& request, const std::string& fields) {
    return ">" + std::string(request ? request->mnemonic : "") + "=" + fields + "\r\n";
}

/// The decimal number that is the whole text, with an optional sign; nothing otherwise.
std::optional<std::int32_t> ParseNumber(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc{} && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

std::string Join(const std::vector<std::string>& fields) {
    std::string joined;
    for (const std::string& field : fields) {
        joined += (joined.empty() ? "" : ",") + field;
    }
    return joined;
}

std::string ReadPositions(StageModel& model, const Request& /*request*/) {
    std::vector<std::string> fields;
    for (const AxisName name : {AxisName::X, AxisName::Y, AxisName::Z}) {
        const Axis& axis = model.At(name);
        const std::string& error = axis.Settings().error;
        fields.push_back(error.empty() ? std::to_string(axis.Counts()) : error);
    }
    return Join(fields);
}

std::string ReadSwitches(StageModel& model, const Request& /*request*/) {
    std::vector<std::string> fields;
    for (int number = 1; number <= SwitchCount; ++number) {
        fields.push_back(std::to_string(model.Switch(number)));
    }
    return Join(fields);
}

std::string ReadLamps(StageModel& model, const Request& /*request*/) {
    std::vector<std::string> fields;
    for (int lamp = 1; lamp <= 7; ++lamp) {
        fields.push_back(std::to_string(model.Lamp(lamp)));
    }
    return Join(fields);
}

std::string ReadMotion(StageModel& model, const Request& /*request*/) {
    std::vector<std::string> fields{model.Cancelled() ? "1" : "0"};
    const auto add = [&](auto read) {
        for (const AxisName name : {AxisName::X, AxisName::Y, AxisName::Z}) {
            fields.push_back(std::to_string(read(model.At(name))));
        }
    };
    add([](const Axis& axis) { return axis.Moving() ? 1 : 0; });
    add([](const Axis& axis) { return axis.Condition().result; });
    add([](const Axis& axis) { return axis.Condition().hardLimit; });
    add([](const Axis& axis) { return axis.Condition().softLimit; });
    return Join(fields);
}

std::string ReadHoming(StageModel& model, const Request& /*request*/) {
    const auto status = [&](AxisName axis) {
        return std::to_string(static_cast<int>(model.At(axis).Home()));
    };
    return "0,0,0," + status(AxisName::X) + "," + status(AxisName::Y);
}

std::string ReadRemote(StageModel& model, const Request& /*request*/) {
    return model.Remote() ? "1" : "0";
}

std::string SetRemote(StageModel& model, const Request& request) {
    if (request.values != "0" && request.values != "1") {
        return ErrorFields(BadValue);
    }
    model.SetRemote(request.values == "1");
    return ReadRemote(model, request);
}

std::string Move(StageModel& model, const Request& request) {
    std::array<std::int32_t, AxisCount> target{};
    std::string_view rest = request.values;
    for (std::size_t i = 0; i < target.size(); ++i) {
        const bool last = i + 1 == target.size();
        const std::size_t end = last ? rest.size() : rest.find(',');
        const auto number = ParseNumber(rest.substr(0, end));
        if (end == std::string_view::npos || !number) {
            return ErrorFields(BadValue);
        }
        target[i] = *number;
        rest.remove_prefix(last ? end : end + 1);
    }
    return model.MoveTo(target) ? "0" : ErrorFields(RefusedRequest);
}

AxisName HomingAxis(const Request& request) {
    return request.mnemonic.back() == 'X' ? AxisName::X : AxisName::Y;
}

std::string HomeByHand(StageModel& model, const Request& request) {
    Axis& axis = model.At(HomingAxis(request));
    if (request.values == "0") {
        axis.StopManualHome();
    } else if (request.values != "1") {
        return ErrorFields(BadValue);
    } else if (!axis.StartManualHome()) {
        return ErrorFields(RefusedRequest);
    }
    return std::string(request.values);
}

std::string HomeByMotor(StageModel& model, const Request& request) {
    return model.At(HomingAxis(request)).StartAutomaticHome() ? "0" : ErrorFields(RefusedRequest);
}

constexpr std::string_view LampPrefix = "LBRT";

/// The lamp that the mnemonic names, or -1. Numbers have no leading zeros.
int LampNumber(std::string_view mnemonic) {
    for (int lamp = 0; lamp < LampCount; ++lamp) {
        if (mnemonic.substr(LampPrefix.size()) == std::to_string(lamp)) {
            return lamp;
        }
    }
    return -1;
}

std::string Light(StageModel& model, const Request& request) {
    const int lamp = LampNumber(request.mnemonic);
    if (lamp < 0) {
        return ErrorFields(UnknownRequest);
    }
    if (request.form == '=') {
        const auto value = ParseNumber(request.values);
        if (!value || !model.SetLamp(lamp, *value)) {
            return ErrorFields(BadValue);
        }
    }
    return std::to_string(model.Lamp(lamp));
}

constexpr std::array Commands{
    Command{"CPOSMR", '?', AxisCount, ReadPositions},
    Command{"SSWC", '?', SwitchCount, ReadSwitches},
    Command{"LABR", '?', 7, ReadLamps},
    Command{"MCND", '?', 13, ReadMotion},
    Command{"CCND", '?', 5, ReadHoming},
    Command{"SMOD", '?', 1, ReadRemote},
    Command{"SMOD", '=', 1, SetRemote},
    Command{"MMVAL", '=', 1, Move},
    Command{"CRZMX", '=', 1, HomeByHand},
    Command{"CRZMY", '=', 1, HomeByHand},
    Command{"CRZAX", 0, 1, HomeByMotor},
    Command{"CRZAY", 0, 1, HomeByMotor},
    Command{LampPrefix, '?', 1, Light},
    Command{LampPrefix, '=', 1, Light},
};

const Command* Find(const Request& request) {
    const bool lamp = request.mnemonic.starts_with(LampPrefix);
    const std::string_view name = lamp ? LampPrefix : request.mnemonic;
    const auto found = std::ranges::find_if(Commands, [&](const Command& command) {
        return command.mnemonic == name && command.form == request.form;
    });
    return found == Commands.end() ? nullptr : &*found;
}

}  // namespace

void Protocol::Refuse(const std::string& mnemonic, const std::string& error) {
    if (error.empty()) {
        refusals_.erase(mnemonic);
    } else {
        refusals_[mnemonic] = error;
    }
}

bool Protocol::AsksPosition(std::string_view request) {
    const auto parsed = Parse(request);
    const Command* command = parsed ? Find(*parsed) : nullptr;
    return command != nullptr && command->handler == ReadPositions;
}

std::string Protocol::Refusal(std::string_view request, const std::string& error) const {
    const auto parsed = Parse(request);
    const Command* command = parsed ? Find(*parsed) : nullptr;
    const std::size_t usual = fillRefusals_ && command != nullptr ? command->fields : 0;
    std::string fields = ErrorFields(error);
    for (std::size_t count = 2; count < usual; ++count) {
        fields += ",0";
    }
    return Reply(parsed, fields);
}

std::string Protocol::Answer(std::string_view request) {
    const auto parsed = Parse(request);
    const Command* command = parsed ? Find(*parsed) : nullptr;
    if (command == nullptr) {
        return Reply(parsed, ErrorFields(UnknownRequest));
    }
    const auto refusal = refusals_.find(parsed->mnemonic);
    return refusal == refusals_.end() ? Reply(parsed, command->handler(model_, *parsed))
                                      : Refusal(request, refusal->second);
}

}  // namespace simulator
