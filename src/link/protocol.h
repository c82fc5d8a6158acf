#pragma once

#include <array>

#include "link/exchange.h"

/// A reply of 255 characters and its zero. Zero-filled before it is handed to ExchangeChecked.
using ExchangeReplyBuffer = std::array<char, 256>;

/// A request and the beginning of its reply. docs/protocol.md shows the whole of both.
struct Query {
    const char* request;
    const char* prefix;
};

inline constexpr const char* RemoteEnableRequest = "@SMOD=1\r\n";
inline constexpr Query PositionQuery{"@CPOSMR?\r\n", ">CPOSMR="};
inline constexpr Query SwitchQuery{"@SSWC?\r\n", ">SSWC="};
inline constexpr Query LampQuery{"@LABR?\r\n", ">LABR="};
inline constexpr Query MotionQuery{"@MCND?\r\n", ">MCND="};

/// The move to three counts, X, Y and Z, each with its sign.
inline constexpr const char* MoveRequestFormat = "@MMVAL=%+d,%+d,%+d\r\n";
inline constexpr const char* MoveReplyPrefix = ">MMVAL=";

/// The homing condition, and what homing posts: the origin returns by hand, started and stopped,
/// and those that the controller drives.
inline constexpr Query HomingQuery{"@CCND?\r\n", ">CCND="};
inline constexpr const char* ManualXStartRequest = "@CRZMX=1\r\n";
inline constexpr const char* ManualXStopRequest = "@CRZMX=0\r\n";
inline constexpr const char* ManualYStartRequest = "@CRZMY=1\r\n";
inline constexpr const char* ManualYStopRequest = "@CRZMY=0\r\n";
inline constexpr const char* AutoXRequest = "@CRZAX\r\n";
inline constexpr const char* AutoYRequest = "@CRZAY\r\n";

/// A lamp's setting: this, the lamp's number, "=", the value, RequestEnd.
inline constexpr const char* LampRequest = "@LBRT";
inline constexpr const char* RequestEnd = "\r\n";

/// The panel's own way to a lamp: the setting up to its value, and the query, which has no line
/// end.
struct LampRequests {
    const char* setPrefix;
    const char* query;
};
inline constexpr LampRequests PanelLamp1{"@LBRT1=", "@LBRT1?"};
inline constexpr LampRequests PanelLamp2{"@LBRT2=", "@LBRT2?"};

/// Whether a reply has the right form: longer than `prefix` and the line end, beginning with
/// `prefix`, which begins with ">", ending in CR LF, at most 255 characters; with
/// `StrictReplies` one line alone, and no other ">" in it.
bool HasReplyForm(const std::string& reply, const char* prefix);

/// One exchange whose reply has to have the right form; with `StrictReplies` nothing may have
/// waited before its request either. True: the reply is in `replyBuffer`, whole. False, with a log
/// line: the buffer is as it was when no reply came, or holds the bad reply (its first 255
/// characters). `number` is that of ExchangeJudged. Any thread.
bool ExchangeChecked(const char* command, const char* prefix, ExchangeReplyBuffer& replyBuffer,
                     std::uint64_t* number = nullptr);
