#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <thread>

#include "controller/controller_line.h"
#include "native/machine.h"
#include "platform/win32.h"
#include "simulator/pty_transport.h"

// What only this layer promises.

namespace {

HANDLE OpenPort() {
    return CreateFileA(R"(\\.\COM3)", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
}

TEST(Layer, FailsAReadAndAWriteOnceTheLineHasHungUp) {
    const auto line = test_support::OpenControllerEnd();
    const HANDLE port = OpenPort();
    ASSERT_NE(port, INVALID_HANDLE_VALUE);
    char byte = 0;
    DWORD count = 0;
    std::thread puller([&] {
        Sleep(20);
        dynamic_cast<simulator::PtyTransport&>(*line).Unplug();
    });
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(ReadFile(port, &byte, 1, &count, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_BAD_COMMAND);
        EXPECT_EQ(count, 0U);
    }
    puller.join();
    EXPECT_FALSE(WriteFile(port, &byte, 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_BAD_COMMAND);
    EXPECT_TRUE(CloseHandle(port));
}

TEST(Layer, RefusesAPortThatIsTakenOrNoSerialLine) {
    const std::filesystem::path link = MachineRoot() + "/dosdevices/com3";
    const auto line = test_support::OpenControllerEnd();
    const HANDLE port = OpenPort();
    EXPECT_EQ(OpenPort(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(port));
    std::filesystem::remove(link);
    std::filesystem::create_symlink("/dev/null", link);
    EXPECT_EQ(OpenPort(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FUNCTION);
    std::filesystem::remove(link);
}

TEST(Layer, RefusesFramingsThatNoLineHas) {
    const auto line = test_support::OpenControllerEnd();
    const HANDLE port = OpenPort();
    DCB settings{};
    ASSERT_TRUE(GetCommState(port, &settings));
    const auto refuses = [&](DWORD speed, BYTE bits, BYTE stop) {
        DCB wanted = settings;
        wanted.BaudRate = speed;
        wanted.ByteSize = bits;
        wanted.StopBits = stop;
        return !SetCommState(port, &wanted) && GetLastError() == ERROR_INVALID_PARAMETER;
    };
    EXPECT_TRUE(refuses(0, 8, ONESTOPBIT));
    EXPECT_TRUE(refuses(9600, 8, ONE5STOPBITS));
    EXPECT_TRUE(refuses(9600, 5, TWOSTOPBITS));
    EXPECT_TRUE(CloseHandle(port));
}

TEST(Layer, WritesForTheTotalTimeThenSucceedsWithWhatWent) {
    const auto line = test_support::OpenControllerEnd();
    const HANDLE port = OpenPort();
    COMMTIMEOUTS timeouts{};
    timeouts.WriteTotalTimeoutConstant = 20;
    ASSERT_TRUE(SetCommTimeouts(port, &timeouts));
    const std::string much(1'000'000, 'x');
    DWORD count = 0;
    EXPECT_TRUE(WriteFile(port, much.data(), DWORD{1'000'000}, &count, nullptr));
    EXPECT_GT(count, 0U);
    EXPECT_LT(count, 1'000'000U);
    EXPECT_TRUE(CloseHandle(port));
}

TEST(Layer, LetsACallEndThoughItsHandleIsClosed) {
    for (int round = 0; round < 200; ++round) {
        const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        const auto use = [event] {
            while (SetEvent(event) && WaitForSingleObject(event, 1) != WAIT_FAILED) {
            }
        };
        std::array<std::thread, 2> users{std::thread(use), std::thread(use)};
        EXPECT_TRUE(CloseHandle(event));
        for (std::thread& user : users) {
            user.join();
        }
    }
}

}  // namespace
