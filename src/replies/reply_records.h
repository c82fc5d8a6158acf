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

/// The switches. A switch is active when its number is exactly 1.
struct SswcReply {
    std::uint8_t replyError = 0;  ///< 1: the reply failed
    std::string replyErrorText;   ///< why
    std::int32_t EMER_SW = 0;     ///< emergency switch; a latch in the host's copy
    std::int32_t sswc2 = 0;       ///< field 2, as it came
    std::int32_t SW_Y = 0;        ///< a latch in the host's copy
    std::int32_t sswc4 = 0;       ///< field 4, as it came
    std::int32_t DATA_SW = 0;     ///< data switch; a latch in the host's copy
    std::int32_t sswc6 = 0;       ///< field 6, as it came
    std::int32_t sswc7 = 0;       ///< field 7, as it came
    std::int32_t sswc8 = 0;       ///< field 8, as it came
    std::int32_t sswc9 = 0;       ///< field 9, as it came
    std::int32_t sswc10 = 0;      ///< field 10, as it came
    std::int32_t sswc11 = 0;      ///< field 11, as it came
    std::int32_t FOOT_SW = 0;     ///< foot switch; a latch in the host's copy
    std::int32_t MEAS_MODE = 0;   ///< measuring mode, as the controller has it
    std::int32_t sswc14 = 0;      ///< field 14, as it came
    std::int32_t sswc15 = 0;      ///< field 15, as it came
    std::int32_t sswc16 = 0;      ///< field 16, as it came
};

/// The lamps: six values, opaque to the module. The reply's third field is not kept.
struct LabrReply {
    std::uint8_t lampChanged = 0;  ///< latch: a value has changed since it was last cleared
    std::uint8_t labrSpare = 0;    ///< always 0
    std::uint8_t replyError = 0;   ///< 1: the reply failed
    std::string replyErrorText;    ///< why
    std::int32_t labr1 = 0;        ///< field 1, as it came
    std::int32_t labr2 = 0;        ///< field 2, as it came
    std::int32_t labr4 = 0;        ///< field 4, as it came
    std::int32_t labr5 = 0;        ///< field 5, as it came
    std::int32_t labr6 = 0;        ///< field 6, as it came
    std::int32_t labr7 = 0;        ///< field 7, as it came
};

/// The position. Look at an axis's error flag first: with the flag set the axis's number is no
/// position, and its text holds the controller's error code.
struct CposmrReply {
    std::int32_t x = 0;  ///< counts on the module's side, counts / `ScaleFactor` in the host's copy
    std::int32_t y = 0;  ///< as `x`
    std::int32_t z = 0;  ///< as `x`
    std::uint8_t xError = 0;  ///< 1: the controller gave an error code for X in place of a position
    std::uint8_t yError = 0;  ///< the same for Y
    std::uint8_t zError = 0;  ///< the same for Z
    std::uint8_t replyError = 0;  ///< 1: the reply failed
    std::string xErrorText;       ///< the code, for example "E1"
    std::string yErrorText;       ///< as `xErrorText`
    std::string zErrorText;       ///< as `xErrorText`
    std::string replyErrorText;   ///< why the reply failed
};

/// How a move stands. `cancelled` and the moving flags count when they are exactly 1, a result when
/// it is exactly 2 (the axis's move failed), a limit when it is anything but 0.
struct McndReply {
    std::uint8_t mcndSpare = 0;   ///< always 0
    std::uint8_t replyError = 0;  ///< 1: the reply failed
    std::string replyErrorText;   ///< why
    std::int32_t cancelled = 0;   ///< 1: the move was cancelled
    std::int32_t xMoving = 0;     ///< 1: X still moves
    std::int32_t yMoving = 0;     ///< 1: Y still moves
    std::int32_t zMoving = 0;     ///< 1: Z still moves
    std::int32_t xResult = 0;     ///< 2: the move of X failed
    std::int32_t yResult = 0;     ///< 2: the move of Y failed
    std::int32_t zResult = 0;     ///< 2: the move of Z failed
    std::int32_t xHwLimit = 0;    ///< not 0: X is at a hardware limit
    std::int32_t yHwLimit = 0;    ///< not 0: Y is at a hardware limit
    std::int32_t zHwLimit = 0;    ///< not 0: Z is at a hardware limit
    std::int32_t xSwLimit = 0;    ///< not 0: X is at a software limit
    std::int32_t ySwLimit = 0;    ///< not 0: Y is at a software limit
    std::int32_t zSwLimit = 0;    ///< not 0: Z is at a software limit
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
