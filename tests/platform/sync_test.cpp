#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/lock_hold.h"
#include "platform/win32.h"

namespace {

constexpr DWORD Long = 60'000;

template <typename Work>
void OnThread(const Work& work) {
    std::thread(work).join();
}

TEST(Handles, RefuseWhatIsNotOpen) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(CloseHandle(event));
    EXPECT_FALSE(CloseHandle(event));
    for (const HANDLE handle : {event, HANDLE{nullptr}}) {
        EXPECT_FALSE(SetEvent(handle));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED);
        char byte = 0;
        DWORD count = 0;
        EXPECT_FALSE(ReadFile(handle, &byte, 1, &count, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
}

TEST(Events, ReleaseOneWaiterPerSetThroughAnyHandle) {
    const WCHAR* name = WIDE("Zembra/test \u00b5 event");
    const HANDLE first = CreateEventW(nullptr, FALSE, FALSE, name);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const HANDLE second = CreateEventW(nullptr, FALSE, TRUE, name);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_TRUE(SetEvent(first));
    EXPECT_TRUE(SetEvent(first));
    EXPECT_EQ(WaitForSingleObject(second, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(second, 1), WAIT_TIMEOUT);

    std::atomic<int> released = 0;
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            EXPECT_EQ(WaitForSingleObject(second, Long), WAIT_OBJECT_0);
            ++released;
        });
    }
    for (int i = 1; i <= 4; ++i) {
        EXPECT_TRUE(SetEvent(first));
        for (DWORD waited = 0; released < i && waited < Long; ++waited) {
            Sleep(1);
        }
        Sleep(2);
        EXPECT_EQ(released, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
}

TEST(Waits, TakeAtLeastTheirTime) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto start = std::chrono::steady_clock::now();
    const ULONGLONG ticks = GetTickCount64();
    EXPECT_EQ(WaitForSingleObject(event, 60), WAIT_TIMEOUT);
    Sleep(60);
    // Windows counts its waits in ticks and may end within the last one.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_GE(GetTickCount64() - ticks, 90U);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Threads, RunWithTheirHandleClosedAndCanBeWaitedFor) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const LPTHREAD_START_ROUTINE wait = [](LPVOID handle) -> DWORD {
        return WaitForSingleObject(handle, Long);
    };
    const HANDLE thread = CreateThread(nullptr, 0, wait, event, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 1), WAIT_TIMEOUT);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WaitForSingleObject(thread, Long), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));

    const LPTHREAD_START_ROUTINE raise = [](LPVOID handle) -> DWORD {
        Sleep(20);
        return SetEvent(handle) ? 0U : 1U;
    };
    EXPECT_TRUE(CloseHandle(CreateThread(nullptr, 0, raise, event, 0, nullptr)));
    EXPECT_EQ(WaitForSingleObject(event, Long), WAIT_OBJECT_0);
}

TEST(Mutex, BelongsToItsThreadAsOftenAsItWasTaken) {
    for (const WCHAR* name : {static_cast<const WCHAR*>(nullptr), WIDE("Zembra/test mutex")}) {
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, name);
        EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
        for (int held = 2; held > 0; --held) {
            OnThread([mutex] {
                EXPECT_FALSE(ReleaseMutex(mutex));
                EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
                EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT);
                EXPECT_EQ(WaitForSingleObject(mutex, 5), WAIT_TIMEOUT);
            });
            EXPECT_TRUE(ReleaseMutex(mutex));
        }
        EXPECT_FALSE(ReleaseMutex(mutex));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
        EXPECT_TRUE(CloseHandle(mutex));
    }
}

TEST(Mutex, SaysThatItsOwnerEnded) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, WIDE("Zembra/test mutex"));
    for (const DWORD limit : {0U, 1000U, INFINITE}) {
        OnThread([mutex] { EXPECT_EQ(WaitForSingleObject(mutex, Long), WAIT_OBJECT_0); });
        EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_ABANDONED);
        EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex));
    }
    EXPECT_TRUE(CloseHandle(mutex));
}

/// Whether another thread can enter.
bool IsFree(CRITICAL_SECTION& section) {
    bool entered = false;
    OnThread([&] {
        if (TryEnterCriticalSection(&section)) {
            entered = true;
            LeaveCriticalSection(&section);
        }
    });
    return entered;
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

TEST(CriticalSections, KeepThreadsApartAndTheirOwnerIn) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    ExpectRecursive(section);
    int value = 0;
    const auto countUp = [&] {
        for (int i = 0; i < 10'000; ++i) {
            const LockHold hold(section);
            ++value;
        }
    };
    std::thread other(countUp);
    countUp();
    other.join();
    EXPECT_EQ(value, 20'000);
    DeleteCriticalSection(&section);
}

}  // namespace
