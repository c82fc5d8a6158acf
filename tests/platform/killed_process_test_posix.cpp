#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <memory>
#include <utility>

#include "native/machine.h"
#include "platform/win32.h"

namespace {

/// Another process that does its work and then runs `end` until it is killed.
class Child {
  public:
    explicit Child(
        const std::function<void()>& work, const std::function<void()>& end = [] { pause(); }) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        process_ = fork();
        if (process_ == 0) {
            work();
            (void)!write(ready[1], "x", 1);
            for (;;) {
                end();
            }
        }
        char byte = 0;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
        close(ready[1]);
    }

    void Kill() const {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

  private:
    pid_t process_ = 0;
};

TEST(KilledProcess, AbandonsItsMutexEvenToWhoWaitsForIt) {
    const WCHAR* name = u"killed/mutex";
    const Child child([&] { WaitForSingleObject(CreateMutexW(nullptr, FALSE, name), 0); });
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, name);
    EXPECT_EQ(WaitForSingleObject(mutex, 5), WAIT_TIMEOUT);
    child.Kill();
    EXPECT_EQ(WaitForSingleObject(mutex, 60'000), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(KilledProcess, TakesNoEventWithIt) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, u"killed/event");
    const Child child([] {}, [&] { WaitForSingleObject(event, INFINITE); });
    Sleep(20);
    child.Kill();
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(KilledProcess, LeavesNoMemoryBehind) {
    const auto swapFirstByte = [](char written) {
        const HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                                  5000, u"killed/mapping");
        auto* byte = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 1));
        const char old = std::exchange(*byte, written);
        UnmapViewOfFile(byte);
        return std::pair(mapping, old);
    };
    const Child child([&] { swapFirstByte('x'); });
    const auto [shared, fromChild] = swapFirstByte('y');
    EXPECT_EQ(fromChild, 'x');
    EXPECT_TRUE(CloseHandle(shared));
    child.Kill();
    const auto [fresh, fromNobody] = swapFirstByte('z');
    EXPECT_EQ(fromNobody, '\0');
    EXPECT_TRUE(CloseHandle(fresh));
}

TEST(KilledProcess, TakesItsWindowsWithIt) {
    std::unique_ptr<WindowTitle> title;
    const Child child([&] { title = std::make_unique<WindowTitle>(u"killed"); });
    const HWND first = FindWindowW(nullptr, u"killed");
    EXPECT_NE(first, nullptr);
    child.Kill();
    EXPECT_EQ(FindWindowW(nullptr, u"killed"), nullptr);
    const WindowTitle again(u"killed");
    EXPECT_NE(FindWindowW(nullptr, u"killed"), nullptr);
    EXPECT_NE(FindWindowW(nullptr, u"killed"), first);
}

}  // namespace
