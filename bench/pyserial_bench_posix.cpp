#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "exchange_bench.h"
#include "own_line_posix.h"

namespace {

/// A Python program that makes an exchange for each line that it gets, and tells how long it took.
class PySerial {
  public:
    explicit PySerial(const Pace& pace) : line_("pyserial", pace.bitsPerSecond) {
        PlaceFarOut(line_.Controller());
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            throw std::runtime_error("socketpair");
        }
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, ends[1], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
        std::string program = OVISK_BENCH_FOLDER "/exchange-with-pyserial";
        std::string path = line_.Path();
        std::string request = ExchangeRequest;
        char* arguments[] = {program.data(), path.data(), request.data(), nullptr};
        const int error =
            posix_spawn(&child_, program.c_str(), &files, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&files);
        close(ends[1]);
        end_ = ends[0];
        if (error != 0 || Answer().empty()) {
            throw std::runtime_error(program);
        }
    }
    ~PySerial() {
        close(end_);
        waitpid(child_, nullptr, 0);
    }
    PySerial(const PySerial&) = delete;
    PySerial& operator=(const PySerial&) = delete;

    double Exchange() {
        return write(end_, "\n", 1) == 1 ? std::strtod(Answer().c_str(), nullptr) : 0;
    }

  private:
    std::string Answer() const {
        std::string text;
        char byte = 0;
        while (byte != '\n' && read(end_, &byte, 1) == 1) {
            text += byte;
        }
        return text;
    }

    OwnLine line_;
    pid_t child_ = -1;
    int end_ = -1;
};
[[maybe_unused]] const bool registered = RegisterExchange<PySerial>("pyserial");

}  // namespace
