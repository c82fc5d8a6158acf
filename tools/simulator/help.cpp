#include "simulator/help.h"

#include <iomanip>
#include <sstream>

#include "simulator/console.h"
#include "simulator/faults.h"
#include "simulator/states.h"

namespace simulator {

namespace {

void AddEntry(std::ostream& text, std::string_view name, std::string_view meaning) {
    text << "  " << std::left << std::setw(14) << name << meaning << "\n";
}

}  // namespace

std::string HelpBeforeOptions() {
    return "ovisk-sim - a simulated X/Y/Z stage controller on a serial line\n\n"
           "Answers a host as the controller does: its axes travel, stop at limits and find\n"
           "their origins. It can be commanded while it runs, and made to go wrong.\n"
           "\"ready on\" and the line's name are shown when it answers.\n";
}

std::string HelpAfterOptions(const std::string& line) {
    std::ostringstream text;
    text << "COMMANDS\n"
            "  One a line, on standard input and at the control port. Positions are in counts.\n\n"
         << ConsoleHelp()
         << "\n\n"
            "  On standard input the answer is for people. At the control port it is one line:\n"
            "  \"ok\", \"ok \" and the lines of status or help joined by \"; \", or \"error: \" "
            "and\n"
            "  what is wrong; a line that is wrong changes nothing. The port takes connections\n"
            "  from this machine only, up to 16 at a time, and lines of up to 1000 characters.\n\n"
            "STATES\n";
    for (const NamedState& state : NamedStates()) {
        AddEntry(text, state.name, state.meaning);
    }
    text << "\nFAULTS\n"
            "  Each happens to a request with its own probability; several can happen to one.\n\n";
    for (const FaultText& fault : FaultTexts) {
        AddEntry(text, fault.name, fault.effect);
    }
    text
        << "\n"
           "  Chances come from the seed alone: the same seed, options and requests at the same\n"
           "  times give the same bytes at the same times. A pulled cable makes a pseudo-terminal\n"
           "  hang up and its link go; at a serial port nothing is answered and what the host\n"
           "  sends is lost. After a reset, and after the power was off, the axes stand dead\n"
           "  still, their counters begin at 0 where they stand, and origin returns, lamps and\n"
           "  remote mode are forgotten.\n\n"
           "TIME\n"
           "  The time factor holds for the stage: moves, origin returns, the hand. The line\n"
           "  keeps real time, since the host does: bytes, latency, delays of faults.\n\n"
           "EXAMPLES\n"
        << "  ovisk-sim " << line << " --exercise\n"
        << "  ovisk-sim " << line << " --state unhomed --time-factor 10\n"
        << "  ovisk-sim " << line << " --fault garbled=0.05 --seed 7\n"
        << "  ovisk-sim " << line << " --control 0 --quiet\n\n"
        << "EXIT STATUS\n"
           "  0  after quit, an interrupt, or the end of the input with --exit-on-eof\n"
           "  1  the line or the control port cannot be opened\n"
           "  2  the command line is wrong\n"
           "  A replay: 0 if the record was followed to its end, 3 after departures, 4 if it\n"
           "  stopped before its end without one, 5 if the file holds no exchange";
    return text.str();
}

}  // namespace simulator
