#include <libserialport.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <asio.hpp>
#include <cstdarg>
#include <stdexcept>
#include <string>

#include "exchange_bench.h"
#include "own_line_posix.h"

// The same exchange through libraries that others would take, written as their user would write it
// by hand: send the request, read until the line-feed.

/// libserialport opens no port without modem lines, and a pseudo-terminal has none: they are off
/// here. Takes the place of the C library's function for this program.
extern "C" __attribute__((visibility("default"))) int ioctl(int file, unsigned long request,
                                                            ...) noexcept {
    std::va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const long result = syscall(SYS_ioctl, file, request, argument);
    if (result < 0 && request == TIOCMGET) {
        *static_cast<int*>(argument) = 0;
        return 0;
    }
    const bool setsModemLines = request == TIOCMSET || request == TIOCMBIS || request == TIOCMBIC;
    return setsModemLines ? 0 : static_cast<int>(result);
}

namespace {

constexpr unsigned BitsPerSecond = 38'400;
constexpr unsigned LimitMilliseconds = 1000;
const std::string Request = ExchangeRequest;

class LibSerialPort {
  public:
    explicit LibSerialPort(const Pace& pace) : line_("libserialport", pace.bitsPerSecond) {
        PlaceFarOut(line_.Controller());
        // It takes only names that the system lists as serial ports; this one leads up to the root,
        // both from there and from the list.
        const std::string name = "/dev/../../.." + line_.Path();
        if (sp_get_port_by_name(name.c_str(), &port_) != SP_OK ||
            sp_open(port_, SP_MODE_READ_WRITE) != SP_OK ||
            sp_set_baudrate(port_, BitsPerSecond) != SP_OK) {
            throw std::runtime_error("libserialport");
        }
    }
    ~LibSerialPort() {
        sp_close(port_);
        sp_free_port(port_);
    }
    LibSerialPort(const LibSerialPort&) = delete;
    LibSerialPort& operator=(const LibSerialPort&) = delete;

    double Exchange() {
        return SecondsOf([this] {
            sp_blocking_write(port_, Request.data(), Request.size(), LimitMilliseconds);
            std::string reply;
            char byte = 0;
            while (byte != '\n' && sp_blocking_read(port_, &byte, 1, LimitMilliseconds) == 1) {
                reply += byte;
            }
            return byte == '\n';
        });
    }

  private:
    OwnLine line_;
    sp_port* port_ = nullptr;
};

class Asio {
  public:
    explicit Asio(const Pace& pace)
        : line_("asio", pace.bitsPerSecond), port_(context_, line_.Path()) {
        PlaceFarOut(line_.Controller());
        port_.set_option(asio::serial_port::baud_rate(BitsPerSecond));
    }
    double Exchange() {
        return SecondsOf([this] {
            asio::write(port_, asio::buffer(Request));
            std::string reply;
            return asio::read_until(port_, asio::dynamic_buffer(reply), '\n') > 0;
        });
    }

  private:
    OwnLine line_;
    asio::io_context context_;
    asio::serial_port port_;
};

[[maybe_unused]] const bool registered =
    RegisterExchange<LibSerialPort>("libserialport") && RegisterExchange<Asio>("asio");

}  // namespace
