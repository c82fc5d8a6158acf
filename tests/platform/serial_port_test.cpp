#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "platform/win32.h"
#include "support/serial_line.h"

namespace {

using test_support::SerialLine;

constexpr DWORD ReadWrite = GENERIC_READ | GENERIC_WRITE;

HANDLE Open(const std::string& name) {
    return CreateFileA(name.c_str(), ReadWrite, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

class SerialPort : public testing::Test {
  protected:
    void SetUp() override {
        name = R"(\\.\COM)" + std::to_string(line.Port());
        port = Open(name);
        ASSERT_NE(port, INVALID_HANDLE_VALUE) << GetLastError();
    }
    void TearDown() override { EXPECT_TRUE(CloseHandle(port)); }

    void SetTimeouts(DWORD interval, DWORD multiplier, DWORD constant) const {
        COMMTIMEOUTS timeouts{};
        timeouts.ReadIntervalTimeout = interval;
        timeouts.ReadTotalTimeoutMultiplier = multiplier;
        timeouts.ReadTotalTimeoutConstant = constant;
        ASSERT_TRUE(SetCommTimeouts(port, &timeouts));
    }

    std::string Read(DWORD size) const {
        std::string bytes(size, '?');
        DWORD count = MAXDWORD;
        EXPECT_TRUE(ReadFile(port, bytes.data(), size, &count, nullptr)) << GetLastError();
        return bytes.substr(0, count);
    }

    SerialLine line;
    std::string name;
    HANDLE port = nullptr;
};

TEST_F(SerialPort, OpensAgainAndNoOtherName) {
    for (const char* none : {R"(\\.\COM77)", R"(\\.\COM)", R"(\\.\COMX)"}) {
        EXPECT_EQ(Open(none), INVALID_HANDLE_VALUE) << none;
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND) << none;
    }
    ASSERT_TRUE(CloseHandle(port));
    port = Open(name);
    EXPECT_NE(port, INVALID_HANDLE_VALUE);
}

TEST_F(SerialPort, KeepsAcceptedSettingsAndRefusesOthers) {
    struct Case {
        DWORD speed;
        BYTE bits;
        BYTE parity;
        BYTE stop;
        bool accepted;
    };
    // A pseudo-terminal carries no parity, so that Wine cannot keep one.
    constexpr Case Cases[] = {
        {9600, 8, NOPARITY, ONESTOPBIT, true},    {115200, 8, NOPARITY, TWOSTOPBITS, true},
        {115200, 3, NOPARITY, ONESTOPBIT, false}, {115200, 9, NOPARITY, ONESTOPBIT, false},
        {115200, 8, 5, ONESTOPBIT, false},        {115200, 8, NOPARITY, 7, false},
    };
    DCB accepted{};
    ASSERT_TRUE(GetCommState(port, &accepted));
    EXPECT_EQ(accepted.DCBlength, sizeof(DCB));
    for (const Case& test : Cases) {
        DCB wanted = accepted;
        wanted.BaudRate = test.speed;
        wanted.ByteSize = test.bits;
        wanted.Parity = test.parity;
        wanted.StopBits = test.stop;
        EXPECT_EQ(SetCommState(port, &wanted) != FALSE, test.accepted);
        if (test.accepted) {
            accepted = wanted;
        }
        DCB now{};
        ASSERT_TRUE(GetCommState(port, &now));
        EXPECT_EQ(now.BaudRate, accepted.BaudRate);
        EXPECT_EQ(now.ByteSize, accepted.ByteSize);
        EXPECT_EQ(now.Parity, accepted.Parity);
        EXPECT_EQ(now.StopBits, accepted.StopBits);
    }
}

TEST_F(SerialPort, CarriesEveryByteBothWays) {
    std::string all;
    for (int i = 0; i < 256; ++i) {
        all += static_cast<char>(i);
    }
    SetTimeouts(0, 0, 60'000);
    line.Write(all);
    EXPECT_EQ(Read(256), all);
    DWORD count = 0;
    ASSERT_TRUE(WriteFile(port, all.data(), DWORD{256}, &count, nullptr));
    EXPECT_EQ(count, 256U);
    std::string heard;
    for (std::string part = "x"; heard.size() < 256 && !part.empty();) {
        part = line.Read(std::chrono::seconds(60));
        heard += part;
    }
    EXPECT_EQ(heard, all);
}

TEST_F(SerialPort, ReadsForTheTotalTimeThenSucceedsWithWhatCame) {
    struct Case {
        DWORD multiplier;
        DWORD constant;
        const char* bytes;
    };
    for (const Case& test : {Case{2, 60, ""}, Case{0, 500, "abc"}}) {
        line.Write(test.bytes);
        SetTimeouts(0, test.multiplier, test.constant);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Read(20), test.bytes);
        const std::chrono::milliseconds total(test.constant + 20 * test.multiplier);
        // Wine's own clock ticks coarsely.
        EXPECT_GE(std::chrono::steady_clock::now() - start, total - std::chrono::milliseconds(20));
    }
}

TEST_F(SerialPort, EndsAReadOnceTheLineIsIdle) {
    SetTimeouts(200, 0, 60'000);
    line.Write("abc");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Read(20), "abc");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(SerialPort, TakesWhatIsThereWithoutWaiting) {
    SetTimeouts(MAXDWORD, 0, 0);
    EXPECT_EQ(Read(20), "");
    SetTimeouts(MAXDWORD, MAXDWORD, 500);
    line.Write("a");
    EXPECT_EQ(Read(20), "a");
    SetTimeouts(MAXDWORD, MAXDWORD, 5);
    EXPECT_EQ(Read(20), "");
}

}  // namespace
