#include "simulator/pty_transport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <string>

#include "simulator/controller.h"

namespace simulator {
namespace {

using namespace std::chrono_literals;

/// Text up to a line-feed, or what came before the line hung up or ten seconds had passed.
std::string Ask(int host, std::string_view request) {
    std::string text;
    pollfd source{host, POLLIN, 0};
    char byte = 0;
    [[maybe_unused]] const ssize_t written = write(host, request.data(), request.size());
    while (!text.ends_with('\n') && poll(&source, 1, 10'000) > 0 && read(host, &byte, 1) == 1) {
        text += byte;
    }
    return text;
}

TEST(PtyTransport, ControllerOutlivesHostsAndPulledCables) {
    const std::string link = testing::TempDir() + "simulator." + std::to_string(getpid());
    const auto openHost = [&] { return open(link.c_str(), O_RDWR | O_NOCTTY); };
    PtyTransport line(link);
    Controller controller(line);
    controller.Start();
    for (std::size_t round = 1; round <= 3; ++round) {
        const int host = openHost();
        EXPECT_EQ(Ask(host, "@LBRT1?"), ">LBRT1=0\r\n");
        EXPECT_TRUE(controller.WaitForRequest("@LBRT1?", round, 10s));
        close(host);
    }
    const int before = openHost();
    EXPECT_EQ(Ask(before, "@SMOD=1\r\n"), ">SMOD=1\r\n");
    controller.With([](Device& device) { device.PullCable(); });
    EXPECT_EQ(Ask(before, "@SMOD?\r\n"), "") << "the line has hung up";
    EXPECT_LT(openHost(), 0);
    controller.With([](Device& device) { device.PlugCable(); });
    int after = -1;
    for (int i = 0; i < 10'000 && after < 0; ++i) {
        std::this_thread::sleep_for(1ms);
        after = openHost();
    }
    EXPECT_EQ(Ask(after, "@SMOD?\r\n"), ">SMOD=1\r\n");
    close(before);
    close(after);
}

}  // namespace
}  // namespace simulator
