#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/module_library.h"
#include "platform/win32.h"
#include "support/machine.h"

/// Ends processes that never stopped the module, at many moments: each of them has to end well.
/// With a number of milliseconds it is such a process itself. In real time: as the process ends,
/// its worker runs on.
int main(int argc, char** argv) {
    if (argc > 1) {
        // No port, and no pause: the worker is busy with its locks and the log.
        test_support::WriteSettings("[Ovisk]\nCmdPoll=0\nDelay=0\nPort=77\n");
        static const auto* const module = new host_tool::ModuleLibrary(OVISK_LIBRARY);
        module->OVISK_ZbrCmd(OviskCmd_Startup, 0);
        Sleep(static_cast<DWORD>(std::atoi(argv[1])));
        return EXIT_SUCCESS;
    }
    int failed = 0;
    for (int process = 0; process < PROCESSES; ++process) {
        const std::string command = std::string(argv[0]) + " " + std::to_string(process % 7);
        failed += std::system(command.c_str()) != 0 ? 1 : 0;  // NOLINT(*-mt-unsafe): one thread
    }
    std::printf("%d of %d processes ended badly\n", failed, PROCESSES);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
