#pragma once

#include <string>
#include <string_view>

#include "simulator/transport.h"

namespace simulator {

/// A serial port of the machine, 8 data bits, no parity, 1 stop bit. Windows builds only.
class ComTransport : public Transport {
  public:
    /// Opens COM`number`. `bitsPerSecond` 0 leaves the speed as it is. Throws std::system_error.
    ComTransport(int number, unsigned bitsPerSecond);
    ~ComTransport() override;

    /// `limit` is rounded up to whole milliseconds.
    std::string Read(std::chrono::nanoseconds limit) override;
    bool Write(std::string_view bytes) override;

  private:
    void SetUp(unsigned bitsPerSecond);
    bool SetReadLimit(std::chrono::milliseconds limit);

    /// A Win32 handle; its type stays out of this header.
    void* port_;
    std::chrono::milliseconds readLimit_{-1};
};

}  // namespace simulator
