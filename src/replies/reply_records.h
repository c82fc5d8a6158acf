#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// What the controller's replies hold, one record per reply. The host compiles these records too,
/// so their layout is fixed: byte-packed, every field right behind the one before it. Texts are
/// std::string objects, owned by the record; host and module have to share one string type and one
/// heap.
///
/// `replyError` and `replyErrorText` tell why a reply failed as a whole. Only good replies reach
/// the host, so there they are always 0 and empty.

#pragma pack(push, 1)

/// The switches. A switch is active when its number is exactly 1. Fields named after their place in
/// the reply are carried as they came.
struct SswcReply {
    std::uint8_t replyError = 0;
    std::string replyErrorText;
    std::int32_t EMER_SW = 0;  ///< emergency switch; a latch in the host's copy
    std::int32_t sswc2 = 0;
    std::int32_t SW_Y = 0;  ///< a latch in the host's copy
    std::int32_t sswc4 = 0;
    std::int32_t DATA_SW = 0;  ///< data switch; a latch in the host's copy
    std::int32_t sswc6 = 0;
    std::int32_t sswc7 = 0;
    std::int32_t sswc8 = 0;
    std::int32_t sswc9 = 0;
    std::int32_t sswc10 = 0;
    std::int32_t sswc11 = 0;
    std::int32_t FOOT_SW = 0;    ///< foot switch; a latch in the host's copy
    std::int32_t MEAS_MODE = 0;  ///< measuring mode, as the controller has it
    std::int32_t sswc14 = 0;
    std::int32_t sswc15 = 0;
    std::int32_t sswc16 = 0;
};

/// The lamps: six values, opaque to the module. The reply's third field is not kept.
struct LabrReply {
    std::uint8_t lampChanged = 0;  ///< latch: a value has changed since it was last cleared
    std::uint8_t labrSpare = 0;    ///< always 0
    std::uint8_t replyError = 0;
    std::string replyErrorText;
    std::int32_t labr1 = 0;
    std::int32_t labr2 = 0;
    std::int32_t labr4 = 0;
    std::int32_t labr5 = 0;
    std::int32_t labr6 = 0;
    std::int32_t labr7 = 0;
};

/// The position. Look at an axis's error flag first: with the flag set the axis's number is no
/// position, and its text holds the controller's error code.
struct CposmrReply {
    std::int32_t x = 0;  ///< counts on the module's side, counts / `ScaleFactor` in the host's copy
    std::int32_t y = 0;
    std::int32_t z = 0;
    std::uint8_t xError = 0;  ///< 1: the controller gave an error code for X in place of a position
    std::uint8_t yError = 0;
    std::uint8_t zError = 0;
    std::uint8_t replyError = 0;
    std::string xErrorText;
    std::string yErrorText;
    std::string zErrorText;
    std::string replyErrorText;
};

/// How a move stands. `cancelled` and the moving flags count when they are exactly 1, a result when
/// it is exactly 2 (the axis's move failed), a limit when it is anything but 0.
struct McndReply {
    std::uint8_t mcndSpare = 0;  ///< always 0
    std::uint8_t replyError = 0;
    std::string replyErrorText;
    std::int32_t cancelled = 0;
    std::int32_t xMoving = 0;
    std::int32_t yMoving = 0;
    std::int32_t zMoving = 0;
    std::int32_t xResult = 0;
    std::int32_t yResult = 0;
    std::int32_t zResult = 0;
    std::int32_t xHwLimit = 0;
    std::int32_t yHwLimit = 0;
    std::int32_t zHwLimit = 0;
    std::int32_t xSwLimit = 0;
    std::int32_t ySwLimit = 0;
    std::int32_t zSwLimit = 0;
};

#pragma pack(pop)

static_assert(offsetof(SswcReply, replyErrorText) == 1);
static_assert(offsetof(SswcReply, EMER_SW) == 1 + sizeof(std::string));
static_assert(offsetof(SswcReply, FOOT_SW) == 45 + sizeof(std::string));
static_assert(sizeof(SswcReply) == 65 + sizeof(std::string));
static_assert(offsetof(LabrReply, replyError) == 2);
static_assert(offsetof(LabrReply, labr1) == 3 + sizeof(std::string));
static_assert(sizeof(LabrReply) == 27 + sizeof(std::string));
static_assert(offsetof(CposmrReply, xError) == 12);
static_assert(offsetof(CposmrReply, xErrorText) == 16);
static_assert(offsetof(McndReply, cancelled) == 2 + sizeof(std::string));
static_assert(sizeof(McndReply) == 54 + sizeof(std::string));
static_assert(sizeof(CposmrReply) == 16 + 4 * sizeof(std::string));
