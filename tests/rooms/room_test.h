#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "controller/controller_line.h"
#include "controller/log_tap.h"

namespace test_support {

/// The module's rooms with default settings, the log tapped, the port closed before and after.
class RoomTest : public testing::Test {
  protected:
    RoomTest();
    ~RoomTest() override;

    LogTap log;
};

/// A room test with a controller on the line.
class LineTest : public RoomTest {
  protected:
    /// The next requests get these replies, one each; later ones the usual replies.
    void Answer(std::vector<simulator::ScriptedReply> replies);

    SimulatedController controller;
};

/// What the log says when the port is opened.
inline const std::string Opening = "ZbComOpen opening: \\\\.\\COM3\n";

}  // namespace test_support
