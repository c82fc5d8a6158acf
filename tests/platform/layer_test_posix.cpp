#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "platform/posix/machine.h"
#include "platform/win32.h"
#include "support/machine.h"
#include "support/serial_line.h"

// What only this layer promises.

namespace {

using test_support::SerialLine;

HANDLE OpenPort3() {
    return CreateFileA(R"(\\.\com3)", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
}

TEST(Layer, FailsAReadAndAWriteOnceTheLineHasHungUp) {
    auto line = std::make_unique<SerialLine>();
    const HANDLE port = OpenPort3();
    ASSERT_NE(port, INVALID_HANDLE_VALUE);
    std::string bytes(10, '?');
    DWORD count = 0;
    line->Write("abc");
    std::atomic<bool> heard = false;
    std::thread end([&] {
        while (!heard) {
            Sleep(1);
        }
        line.reset();
    });
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = 20;
    SetCommTimeouts(port, &timeouts);
    EXPECT_TRUE(ReadFile(port, bytes.data(), 10, &count, nullptr));
    EXPECT_EQ(bytes.substr(0, count), "abc");
    timeouts = {};
    SetCommTimeouts(port, &timeouts);
    heard = true;
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(ReadFile(port, bytes.data(), 10, &count, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_BAD_COMMAND);
        EXPECT_EQ(count, 0U);
    }
    end.join();
    EXPECT_FALSE(WriteFile(port, bytes.data(), 10, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_BAD_COMMAND);
    EXPECT_TRUE(CloseHandle(port));
}

TEST(Layer, RefusesAPortThatIsNoSerialLine) {
    const std::filesystem::path link = MachineRoot() + "/dosdevices/com3";
    std::filesystem::create_symlink("/dev/null", link);
    EXPECT_EQ(OpenPort3(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FUNCTION);
    std::filesystem::remove(link);
    std::filesystem::create_symlink("/nowhere", link);
    EXPECT_EQ(OpenPort3(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    std::filesystem::remove(link);
}

TEST(Layer, GivesAPortToOneAtATime) {
    const SerialLine line;
    const HANDLE port = OpenPort3();
    EXPECT_EQ(OpenPort3(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(port));
}

TEST(Layer, RefusesFramingsThatNoLineHas) {
    const SerialLine line;
    const HANDLE port = OpenPort3();
    DCB settings{};
    ASSERT_TRUE(GetCommState(port, &settings));
    const auto refuses = [&](const auto& change) {
        DCB wanted = settings;
        change(wanted);
        return !SetCommState(port, &wanted) && GetLastError() == ERROR_INVALID_PARAMETER;
    };
    EXPECT_TRUE(refuses([](DCB& wanted) { wanted.BaudRate = 0; }));
    EXPECT_TRUE(refuses([](DCB& wanted) { wanted.StopBits = ONE5STOPBITS; }));
    EXPECT_TRUE(refuses([](DCB& wanted) { wanted.XonChar = wanted.XoffChar; }));
    EXPECT_TRUE(refuses([](DCB& wanted) {
        wanted.ByteSize = 5;
        wanted.StopBits = TWOSTOPBITS;
    }));
    EXPECT_TRUE(CloseHandle(port));
}

TEST(Layer, WritesForTheTotalTimeThenSucceedsWithWhatWent) {
    const SerialLine line;
    const HANDLE port = OpenPort3();
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

TEST(Layer, ReadsNoSettingsFromWhatIsNoSaneFile) {
    const std::string path = test_support::SettingsFilePath().string();
    const auto read = [] {
        return GetPrivateProfileIntW(u"S", u"K", 7,
                                     u"C:/Users/Public/Documents/Zembra/Settings/zembra.ini");
    };
    test_support::WriteSettings("[S]\nK=1\n" + std::string(std::size_t{2} << 20, ';'));
    EXPECT_EQ(read(), 7U);
    test_support::RemoveSettings();
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(read(), 7U);
    test_support::RemoveSettings();
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

TEST(Layer, RefusesWhatItDoesNotKnow) {
    EXPECT_EQ(CreateEventW(nullptr, TRUE, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(FindWindowW(u"class", u"title"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(CreateMutexW(nullptr, FALSE, std::u16string(300, 'x').c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILENAME_EXCED_RANGE);
    WCHAR text[4];
    EXPECT_EQ(_ltow_s(255, text, 4, 16), EINVAL);
}

}  // namespace
