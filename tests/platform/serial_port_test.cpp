#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "controller/controller_line.h"
#include "platform/win32.h"

namespace {

HANDLE Open(const char* name) {
    return CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

class SerialPort : public testing::Test {
  protected:
    void SetUp() override {
        port = Open(R"(\\.\COM3)");
        ASSERT_NE(port, INVALID_HANDLE_VALUE) << GetLastError();
        SetTimeouts(0, 0, 50);
        while (!Read(256).empty()) {
        }
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

    std::unique_ptr<simulator::Transport> line = test_support::OpenControllerEnd();
    HANDLE port = nullptr;
};

TEST_F(SerialPort, OpensAgainAndUnderNoOtherName) {
    for (const char* none : {R"(\\.\COM77)", R"(\\.\COM)", R"(\\.\COMX)"}) {
        EXPECT_EQ(Open(none), INVALID_HANDLE_VALUE) << none;
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND) << none;
    }
    ASSERT_TRUE(CloseHandle(port));
    port = Open(R"(\\.\com3)");
    EXPECT_NE(port, INVALID_HANDLE_VALUE);
}

TEST_F(SerialPort, KeepsAcceptedSettingsAndRefusesOthers) {
    const struct {
        DWORD speed;
        BYTE bits;
        BYTE parity;
        BYTE stop;
        bool accepted;
    } cases[] = {
        // A pseudo-terminal carries no parity, so that Wine cannot keep one.
        {9600, 8, NOPARITY, ONESTOPBIT, true},    {115200, 8, NOPARITY, TWOSTOPBITS, true},
        {115200, 3, NOPARITY, ONESTOPBIT, false}, {115200, 9, NOPARITY, ONESTOPBIT, false},
        {115200, 8, 5, ONESTOPBIT, false},        {115200, 8, NOPARITY, 7, false},
    };
    DCB accepted{};
    ASSERT_TRUE(GetCommState(port, &accepted));
    for (const auto& test : cases) {
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
        EXPECT_EQ(now.StopBits, accepted.StopBits);
    }
}

TEST_F(SerialPort, CarriesEveryByteBothWays) {
    std::string all;
    for (int i = 0; i < 256; ++i) {
        all += static_cast<char>(i);
    }
    SetTimeouts(0, 0, 60'000);
    EXPECT_TRUE(line->Write(all));
    EXPECT_EQ(Read(256), all);
    DWORD count = 0;
    ASSERT_TRUE(WriteFile(port, all.data(), DWORD{256}, &count, nullptr));
    EXPECT_EQ(count, 256U);
    std::string heard;
    for (std::string part = "x"; heard.size() < 256 && !part.empty();) {
        part = line->Read(std::chrono::seconds(60));
        heard += part;
    }
    EXPECT_EQ(heard, all);
}

TEST_F(SerialPort, ReadsUntilATimeLimitAndSucceedsWithWhatCame) {
    const struct {
        const char* name;
        DWORD interval;
        DWORD multiplier;
        DWORD constant;
        const char* bytes;
        int least;
    } cases[] = {
        {"total time, silence", 0, 2, 60, "", 100},
        {"total time, some bytes", 0, 0, 500, "abc", 500},
        {"idle line", 200, 0, 60'000, "abc", 0},
        {"what is there", MAXDWORD, 0, 0, "", 0},
        {"the first byte", MAXDWORD, MAXDWORD, 500, "a", 0},
        {"no first byte", MAXDWORD, MAXDWORD, 60, "", 60},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        EXPECT_TRUE(line->Write(test.bytes));
        SetTimeouts(test.interval, test.multiplier, test.constant);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Read(20), test.bytes);
        const auto time = std::chrono::steady_clock::now() - start;
        // Wine's own clock ticks coarsely.
        EXPECT_GE(time, std::chrono::milliseconds(test.least - 20));
        EXPECT_LT(time, std::chrono::seconds(30));
    }
}

}  // namespace
