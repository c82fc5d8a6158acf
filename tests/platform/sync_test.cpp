#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <vector>

#include "platform/lock_hold.h"
#include "platform/win32.h"

namespace {

constexpr DWORD Long = 60'000;

struct Waiter {
    HANDLE event;
    std::atomic<int>* released;
};

DWORD WINAPI WaitOnce(LPVOID argument) {
    const auto& waiter = *static_cast<const Waiter*>(argument);
    if (WaitForSingleObject(waiter.event, Long) == WAIT_OBJECT_0) {
        ++*waiter.released;
    }
    return 0;
}

HANDLE Start(LPTHREAD_START_ROUTINE function, LPVOID argument) {
    const HANDLE thread = CreateThread(nullptr, 0, function, argument, 0, nullptr);
    EXPECT_NE(thread, nullptr);
    return thread;
}

void Join(HANDLE thread) {
    EXPECT_EQ(WaitForSingleObject(thread, Long), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
}

TEST(Handles, RefuseWhatIsNotOpen) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_NE(event, nullptr);
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(CloseHandle(event));
    EXPECT_FALSE(CloseHandle(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    const auto foreign = reinterpret_cast<HANDLE>(std::uintptr_t{0x7FFF0});
    for (const HANDLE handle : {event, foreign, HANDLE{nullptr}}) {
        EXPECT_FALSE(SetEvent(handle));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        char byte = 0;
        DWORD count = 0;
        EXPECT_FALSE(ReadFile(handle, &byte, 1, &count, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
}

TEST(Events, StaySetUntilOneWaitConsumesThem) {
    const HANDLE event = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 1), WAIT_TIMEOUT);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Events, ReleaseOneWaiterPerSetThroughAnyHandle) {
    const WCHAR* name = WIDE("Zembra/test \u00b5 event");
    const HANDLE first = CreateEventW(nullptr, FALSE, FALSE, name);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const HANDLE second = CreateEventW(nullptr, FALSE, TRUE, name);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(CreateMutexW(nullptr, FALSE, name), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    std::atomic<int> released = 0;
    Waiter waiter{.event = second, .released = &released};
    std::vector<HANDLE> threads(4);
    for (HANDLE& thread : threads) {
        thread = Start(WaitOnce, &waiter);
    }
    for (int i = 1; i <= 4; ++i) {
        EXPECT_TRUE(SetEvent(first));
        for (DWORD waited = 0; released < i && waited < Long; ++waited) {
            Sleep(1);
        }
        Sleep(2);
        EXPECT_EQ(released, i);
    }
    for (const HANDLE thread : threads) {
        Join(thread);
    }
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
}

TEST(Waits, TakeAtLeastTheirTime) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto takes = [](DWORD time, const auto& wait) {
        const auto start = std::chrono::steady_clock::now();
        wait();
        // Windows counts its waits in ticks and may end within the last one.
        return std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(time) * 0.9;
    };
    for (const DWORD time : {0U, 1U, 40U}) {
        EXPECT_TRUE(
            takes(time, [&] { EXPECT_EQ(WaitForSingleObject(event, time), WAIT_TIMEOUT); }));
        EXPECT_TRUE(takes(time, [&] { Sleep(time); }));
    }
    const ULONGLONG before = GetTickCount64();
    Sleep(60);
    EXPECT_GE(GetTickCount64() - before, 40U);
    const auto difference = GetTickCount() - static_cast<DWORD>(GetTickCount64());
    EXPECT_LT(difference + 1000, 2000U);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Threads, RunWithTheirHandleClosedAndCanBeWaitedFor) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::atomic<int> released = 0;
    Waiter waiter{.event = event, .released = &released};
    const HANDLE unwatched = Start(WaitOnce, &waiter);
    EXPECT_TRUE(CloseHandle(unwatched));
    DWORD id = 0;
    const HANDLE watched = CreateThread(nullptr, 0, WaitOnce, &waiter, 0, &id);
    ASSERT_NE(watched, nullptr);
    EXPECT_NE(id, 0U);
    EXPECT_EQ(WaitForSingleObject(watched, 1), WAIT_TIMEOUT);
    for (DWORD waited = 0; released < 2 && waited < Long; ++waited) {
        SetEvent(event);
        Sleep(1);
    }
    EXPECT_EQ(WaitForSingleObject(watched, Long), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(watched, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(watched));
    EXPECT_TRUE(CloseHandle(event));
}

struct Counter {
    CRITICAL_SECTION section;
    int value ZB_GUARDED_BY(section) = 0;
};

DWORD WINAPI CountUp(LPVOID argument) {
    auto& counter = *static_cast<Counter*>(argument);
    for (int i = 0; i < 10'000; ++i) {
        const LockHold hold(counter.section);
        ++counter.value;
    }
    return 0;
}

struct Attempt {
    CRITICAL_SECTION* section;
    bool entered;
};

DWORD WINAPI TryOnce(LPVOID argument) {
    auto& attempt = *static_cast<Attempt*>(argument);
    attempt.entered = false;
    if (TryEnterCriticalSection(attempt.section)) {
        attempt.entered = true;
        LeaveCriticalSection(attempt.section);
    }
    return 0;
}

/// Whether another thread can enter.
bool IsFree(CRITICAL_SECTION& section) {
    Attempt attempt{.section = &section, .entered = false};
    Join(Start(TryOnce, &attempt));
    return attempt.entered;
}

TEST(CriticalSections, KeepThreadsApartAndTheirOwnerIn) {
    Counter counter;
    InitializeCriticalSection(&counter.section);
    const HANDLE threads[] = {Start(CountUp, &counter), Start(CountUp, &counter)};
    for (const HANDLE thread : threads) {
        Join(thread);
    }
    EnterCriticalSection(&counter.section);
    EXPECT_EQ(counter.value, 20'000);
    LeaveCriticalSection(&counter.section);
    DeleteCriticalSection(&counter.section);
}

// The analysis knows no lock that is taken twice.
void ExpectRecursive(CRITICAL_SECTION& section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    EXPECT_FALSE(IsFree(section));
    LeaveCriticalSection(&section);
    EXPECT_FALSE(IsFree(section));
    LeaveCriticalSection(&section);
    EXPECT_TRUE(IsFree(section));
}

TEST(CriticalSections, TakeAsManyLeavesAsEnters) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    ExpectRecursive(section);
    DeleteCriticalSection(&section);
}

}  // namespace
