#include "simulator/pty_transport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "simulator/controller.h"

namespace simulator {
namespace {

using namespace std::chrono_literals;

class PtyTransportTest : public testing::Test {
  protected:
    PtyTransportTest() {
        std::string name = testing::TempDir() + "simulator.XXXXXX";
        folder_ = mkdtemp(name.data());
        link_ = folder_ / "com3";
    }
    ~PtyTransportTest() override { std::filesystem::remove_all(folder_); }

    int OpenHost() const { return open(link_.c_str(), O_RDWR | O_NOCTTY); }

    /// Text up to a line-feed, or what came before the line hung up or ten seconds had passed.
    static std::string ReadLine(int host) {
        std::string text;
        pollfd source{host, POLLIN, 0};
        while (!text.ends_with('\n') && poll(&source, 1, 10'000) > 0) {
            char byte = 0;
            if (read(host, &byte, 1) != 1) {
                break;
            }
            text += byte;
        }
        return text;
    }

    static std::string Ask(int host, std::string_view request) {
        EXPECT_EQ(write(host, request.data(), request.size()), ssize_t(request.size()));
        return ReadLine(host);
    }

    std::filesystem::path folder_;
    std::filesystem::path link_;
};

TEST_F(PtyTransportTest, ControllerAnswersHostsThatComeAndGo) {
    PtyTransport line(link_);
    Controller controller(line);
    controller.Start();
    for (std::size_t round = 1; round <= 3; ++round) {
        const int host = OpenHost();
        ASSERT_GE(host, 0);
        EXPECT_EQ(Ask(host, "@LBRT1?"), ">LBRT1=0\r\n");
        EXPECT_TRUE(controller.WaitForRequest("@LBRT1?", round, 10s));
        controller.With([](StageModel& model) { model.Place({5, 6, 7}); });
        EXPECT_EQ(Ask(host, "@CPOSMR?\r\n"), ">CPOSMR=5,6,7\r\n");
        EXPECT_TRUE(controller.WaitForRequest("@CPOSMR?\r\n", round, 10s));
        close(host);
    }
    EXPECT_FALSE(controller.WaitForRequest("@CPOSMR?\r\n", 4, 1ms));
    EXPECT_EQ(controller.TakeRequestLog().size(), 6U);
    EXPECT_TRUE(controller.RequestLog().empty());
}

TEST_F(PtyTransportTest, PulledCableHangsUpAndComesBack) {
    PtyTransport line(link_);
    Controller controller(line, {.bitsPerSecond = 0});
    controller.Start();
    const int before = OpenHost();
    EXPECT_EQ(Ask(before, "@SMOD=1\r\n"), ">SMOD=1\r\n");
    line.Unplug();
    EXPECT_LT(OpenHost(), 0);
    EXPECT_EQ(ReadLine(before), "");
    line.Replug();
    const int after = OpenHost();
    EXPECT_EQ(Ask(after, "@SMOD?\r\n"), ">SMOD=1\r\n");
    close(before);
    close(after);
}

TEST_F(PtyTransportTest, FullLineDoesNotHoldUpTheController) {
    PtyTransport line(link_);
    Controller controller(line, {.bitsPerSecond = 0});
    controller.SetScript([](const std::string&) { return std::string(1 << 20, 'x'); });
    controller.Start();
    const int host = OpenHost();
    ASSERT_EQ(write(host, "@A?\r\n", 5), 5);
    EXPECT_TRUE(controller.WaitForRequest("@A?\r\n", 1, 10s));
    controller.Stop();
    close(host);
}

TEST_F(PtyTransportTest, LinkReplacesAnOldOneAndNothingElse) {
    std::filesystem::create_symlink("/nowhere", link_);
    {
        const PtyTransport line(link_);
        EXPECT_TRUE(std::filesystem::is_character_file(link_));
    }
    EXPECT_FALSE(std::filesystem::is_symlink(link_));
    std::ofstream(link_) << "precious";
    EXPECT_THROW(PtyTransport{link_}, std::system_error);
    EXPECT_EQ(std::filesystem::file_size(link_), 8U);
    EXPECT_THROW(PtyTransport{folder_ / "no" / "com3"}, std::system_error);
}

}  // namespace
}  // namespace simulator
