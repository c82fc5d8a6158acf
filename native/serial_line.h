#pragma once

#include <sys/types.h>

#include <memory>

#include "native/clock.h"
#include "platform/win32.h"

namespace posix {

/// The bytes of an open serial line, without the time-outs of its port.
class SerialLine {
  public:
    SerialLine() = default;
    virtual ~SerialLine() = default;
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    /// How many bytes were there, or went, at once; -1 from a line that is dead.
    virtual ssize_t Read(char* buffer, std::size_t size) = 0;
    virtual ssize_t Write(const char* bytes, std::size_t size) = 0;
    /// Wait until it is worth trying again; false at the deadline.
    virtual bool AwaitBytes(Deadline deadline) = 0;
    virtual bool AwaitRoom(Deadline deadline) = 0;
    /// Puts settings into force; an error code.
    virtual DWORD Apply(const DCB& settings) = 0;
};

/// Opens the line of COM<number>, for one owner at a time, and reads its settings; an error code.
DWORD OpenLine(unsigned number, std::unique_ptr<SerialLine>& line, DCB& settings);

/// The same for a port of this process; ERROR_FILE_NOT_FOUND if there is none of that number.
DWORD OpenLocalLine(unsigned number, std::unique_ptr<SerialLine>& line, DCB& settings);

}  // namespace posix
