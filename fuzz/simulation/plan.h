#pragma once

#include <cstdint>
#include <string>

#include "native/virtual_time.h"
#include "simulator/axis.h"

namespace simulation {

using simulator::Time;
using Milliseconds = std::chrono::milliseconds;
using Seconds = std::chrono::seconds;

/// What makes one life of the module: all of it follows from the seed and the number of the life.
struct Plan {
    virtual_time::Settings clock;
    std::uint64_t chance;    ///< the seed of everything that happens in the world
    Time length;             ///< until the faults stop
    std::int64_t percent;    ///< of the replies that are spoilt
    bool automatic;          ///< homing
    bool portComesLate;      ///< there is no port at the start
    bool endsInTrouble;      ///< the module is stopped while the faults go on
    bool portIsPulled;       ///< ... and its port pulled out just before
    bool viewerRuns;         ///< somebody reads the log
    bool bothKeys;           ///< `Reopen` and `StrictReplies` are on
    unsigned bitsPerSecond;  ///< of the line
    Time latency;            ///< of the controller
    double scaleFactor;
    std::string settings;  ///< the settings file

    /// Of the machine; 0 if it makes none.
    Time LongestPause() const {
        return clock.pauseEvery != 0 ? Time(clock.longestPause) : Time::zero();
    }
};

/// Half of the lives have both keys on, or all of them.
Plan MakePlan(std::uint64_t seed, std::uint64_t life, bool allWithKeys);

}  // namespace simulation
