#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "simulation/chance.h"

namespace simulation {

/// The threads around the module: its host's, the operator, and those who make trouble.
class Actors {
  public:
    /// Starts them all; they end some time after the world's `stopping` is set.
    explicit Actors(Chance& chance);
    /// Waits for all of them.
    void Join();

  private:
    struct Actor {
        std::string name;
        Chance chance;
        std::function<void(Chance&)> play;
        HANDLE thread;
    };

    static DWORD WINAPI Run(LPVOID actor);
    void Start(const std::string& name, Chance& chance, std::function<void(Chance&)> play);

    std::vector<std::unique_ptr<Actor>> actors_;
};

// What each of them does:
void PlayHost(Chance& chance);      ///< reads the record and the latches
void PlayMover(Chance& chance);     ///< moves the stage
void PlayLighter(Chance& chance);   ///< sets lamps
void PlayHomer(Chance& chance);     ///< sends the Home command
void PlayOperator(Chance& chance);  ///< presses the buttons and moves the stage by hand
void PlayVisitor(Chance& chance);   ///< presses switches, turns lamps, stops moves
void PlayTrouble(Chance& chance);   ///< cable, reset, axis errors
void PlayViewer(Chance& chance);    ///< reads the log

/// Pauses of the clock, in milliseconds, both ends included.
void Wait(Chance& chance, std::int64_t least, std::int64_t most);

}  // namespace simulation
