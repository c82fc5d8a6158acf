#include "native/serial_line.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "native/comm_settings.h"
#include "native/handle.h"
#include "native/machine.h"

namespace posix {
namespace {

/// A device of the machine.
class DeviceLine : public SerialLine {
  public:
    explicit DeviceLine(File file) : file_(std::move(file)) {}

    ssize_t Read(char* buffer, std::size_t size) override {
        ssize_t got = 0;
        do {
            got = read(file_.Get(), buffer, size);
        } while (got < 0 && errno == EINTR);
        // An end of the file is a line that has hung up.
        return got > 0 ? got : got < 0 && errno == EAGAIN ? 0 : -1;
    }

    ssize_t Write(const char* bytes, std::size_t size) override {
        ssize_t put = 0;
        do {
            put = write(file_.Get(), bytes, size);
        } while (put < 0 && errno == EINTR);
        return put >= 0 ? put : errno == EAGAIN ? 0 : -1;
    }

    bool AwaitBytes(Deadline deadline) override {
        return PollUntil(file_.Get(), POLLIN, deadline) != 0;
    }
    bool AwaitRoom(Deadline deadline) override {
        return PollUntil(file_.Get(), POLLOUT, deadline) != 0;
    }
    DWORD Apply(const DCB& settings) override { return ApplySettings(file_.Get(), settings); }

  private:
    const File file_;
};

std::string DeviceOf(unsigned port) {
    const std::string link = MachineRoot() + "/dosdevices/com" + std::to_string(port);
    struct stat status {};
    return lstat(link.c_str(), &status) == 0 ? link : "/dev/ttyS" + std::to_string(port - 1);
}

}  // namespace

DWORD OpenLine(unsigned number, std::unique_ptr<SerialLine>& line, DCB& settings) {
    const DWORD local = OpenLocalLine(number, line, settings);
    if (local != ERROR_FILE_NOT_FOUND) {
        return local;
    }
    File file(open(DeviceOf(number).c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!file) {
        return errno == EIO ? ERROR_FILE_NOT_FOUND : ErrorOf(errno);
    }
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        return ERROR_ACCESS_DENIED;
    }
    const DWORD error = TakeOverLine(file.Get(), settings);
    if (error == ERROR_SUCCESS) {
        line = std::make_unique<DeviceLine>(std::move(file));
    }
    return error;
}

}  // namespace posix
