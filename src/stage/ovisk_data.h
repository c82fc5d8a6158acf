#pragma once

#include <array>

#include "replies/reply_records.h"

#pragma pack(push, 1)

/// The stage as the worker has last seen it: the record that the host reads. Every part holds the
/// values of the last good reply, zeros before the first. A silent controller and a stage that
/// stands still look alike in it.
struct OviskData {
    SswcReply sswc;                           ///< switches and their latches
    LabrReply labr;                           ///< lamps and their latch
    CposmrReply cposmr;                       ///< position
    std::array<std::uint8_t, 24> reserved{};  ///< carried with the record, always 0
};

#pragma pack(pop)

static_assert(offsetof(OviskData, sswc) == 0);
static_assert(offsetof(OviskData, labr) == sizeof(SswcReply));
static_assert(offsetof(OviskData, cposmr) == sizeof(SswcReply) + sizeof(LabrReply));
static_assert(offsetof(OviskData, reserved) ==
              sizeof(SswcReply) + sizeof(LabrReply) + sizeof(CposmrReply));
static_assert(sizeof(OviskData) == 132 + 6 * sizeof(std::string));
