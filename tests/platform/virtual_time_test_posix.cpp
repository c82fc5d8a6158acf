#include "native/virtual_time.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "native/headless.h"
#include "native/local_port.h"
#include "platform/win32.h"

namespace {

constexpr std::uint64_t FirstTick = 0xFFFFFFFF - 999;

/// All tests of the process share the clock.
class VirtualTime : public testing::Test {
  protected:
    VirtualTime() {
        static const bool started = (virtual_time::Start({.firstTick = FirstTick}), true);
        EXPECT_TRUE(started);
    }

    static ULONGLONG Took(const std::function<void()>& work) {
        const ULONGLONG start = GetTickCount64();
        work();
        return GetTickCount64() - start;
    }
};

/// Answers a write after a while, in two pieces.
class SlowPeer : public LocalPeer {
  public:
    void Receive(std::string_view /*bytes*/, std::chrono::nanoseconds now) override {
        due_ = {now + std::chrono::milliseconds(700), now + std::chrono::milliseconds(800)};
    }
    std::string TakeDue(std::size_t /*most*/, std::chrono::nanoseconds now) override {
        std::string bytes;
        while (!due_.empty() && due_.front() <= now) {
            due_.erase(due_.begin());
            bytes += "piece";
        }
        return bytes;
    }
    std::optional<std::chrono::nanoseconds> NextDue() override {
        return due_.empty() ? std::nullopt : std::optional(due_.front());
    }

  private:
    std::vector<std::chrono::nanoseconds> due_;
};

TEST_F(VirtualTime, JumpsOverEveryKindOfWait) {
    const DWORD before = GetTickCount();
    EXPECT_EQ(Took([] { Sleep(1000); }), 1000U);
    EXPECT_EQ(GetTickCount() - before, 1000U) << "over the end of its 32 bits";
    EXPECT_GT(GetTickCount64(), FirstTick);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const DWORD hour = 3'600'000;
    EXPECT_EQ(Took([&] { EXPECT_EQ(WaitForSingleObject(event, hour), WAIT_TIMEOUT); }), hour);
    EXPECT_EQ(Took([] { headless::WaitForDialog(1, std::chrono::milliseconds(500)); }), 500U);
    EXPECT_DEATH(WaitForSingleObject(event, INFINITE), "nothing will end it");
    CloseHandle(event);
}

TEST_F(VirtualTime, KeepsAPortsTimeOuts) {
    SlowPeer peer;
    std::optional<LocalPort> port(std::in_place, 3U, peer);
    const HANDLE file = CreateFileA(R"(\\.\COM3)", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    COMMTIMEOUTS timeouts{.ReadIntervalTimeout = 20,
                          .ReadTotalTimeoutMultiplier = 10,
                          .ReadTotalTimeoutConstant = 100,
                          .WriteTotalTimeoutMultiplier = 0,
                          .WriteTotalTimeoutConstant = 0};
    ASSERT_TRUE(SetCommTimeouts(file, &timeouts));
    char buffer[255];
    DWORD count = 0;
    const auto read = [&] { EXPECT_TRUE(ReadFile(file, buffer, 255, &count, nullptr)); };
    EXPECT_EQ(Took(read), 2650U);
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(WriteFile(file, "x", 1, &count, nullptr));
    EXPECT_EQ(Took(read), 720U);
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(Took(read), 100U);
    EXPECT_EQ(std::string(buffer, count), "piece");
    port.reset();
    EXPECT_FALSE(ReadFile(file, buffer, 255, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_BAD_COMMAND);
    CloseHandle(file);
}

/// What two threads do with one lock and one event, each with handles of its own.
struct Meeting {
    CRITICAL_SECTION section;
    std::vector<std::string> events;
    ULONGLONG start = GetTickCount64();

    void Note(const std::string& what) {
        events.push_back(std::to_string(GetTickCount64() - start) + " " + what);
    }
};

DWORD WINAPI Guest(LPVOID argument) {
    auto& meeting = *static_cast<Meeting*>(argument);
    Sleep(5);
    meeting.Note("guest wants the lock");
    EnterCriticalSection(&meeting.section);
    meeting.Note("guest has the lock");
    LeaveCriticalSection(&meeting.section);
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, WIDE("meeting_mutex"));
    EXPECT_EQ(WaitForSingleObject(mutex, 7), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    meeting.Note("guest has the mutex");
    ReleaseMutex(mutex);
    CloseHandle(mutex);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, WIDE("meeting_event"));
    SetEvent(event);
    CloseHandle(event);
    Sleep(3);
    return 0;
}

TEST_F(VirtualTime, RunsOneThreadAtATimeInTheOrderOfTheirDues) {
    Meeting meeting;
    InitializeCriticalSection(&meeting.section);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, WIDE("meeting_event"));
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, WIDE("meeting_mutex"));
    EnterCriticalSection(&meeting.section);
    const HANDLE guest = CreateThread(nullptr, 0, Guest, &meeting, 0, nullptr);
    meeting.Note("host goes on");
    Sleep(10);
    LeaveCriticalSection(&meeting.section);
    meeting.Note("host has left the lock");
    Sleep(20);
    ReleaseMutex(mutex);
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    meeting.Note("host has the event");
    EXPECT_EQ(WaitForSingleObject(guest, INFINITE), WAIT_OBJECT_0);
    meeting.Note("guest has gone");
    const std::vector<std::string> expected{
        "0 host goes on",        "5 guest wants the lock", "10 host has left the lock",
        "10 guest has the lock", "30 guest has the mutex", "30 host has the event",
        "33 guest has gone"};
    EXPECT_EQ(meeting.events, expected);
    for (const HANDLE handle : {guest, event, mutex}) {
        CloseHandle(handle);
    }
}

}  // namespace
