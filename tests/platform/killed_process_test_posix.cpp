#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <memory>

#include "platform/posix/machine.h"
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
    ~Child() { Kill(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void Kill() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
            process_ = 0;
        }
    }

  private:
    pid_t process_ = 0;
};

TEST(KilledProcess, AbandonsItsMutexEvenToWhoWaitsForIt) {
    const WCHAR* name = u"killed/mutex";
    Child child([&] { WaitForSingleObject(CreateMutexW(nullptr, FALSE, name), 0); });
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, name);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(WaitForSingleObject(mutex, 5), WAIT_TIMEOUT);
    child.Kill();
    EXPECT_EQ(WaitForSingleObject(mutex, 60'000), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(KilledProcess, TakesNoEventWithIt) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, u"killed/event");
    Child child([] {}, [&] { WaitForSingleObject(event, INFINITE); });
    Sleep(20);
    child.Kill();
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(KilledProcess, LeavesNoMemoryBehind) {
    const WCHAR* name = u"killed/mapping";
    const auto open = [&] {
        return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 5000, name);
    };
    const auto firstByte = [&](HANDLE mapping) {
        return static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 1));
    };
    Child child([&] { *firstByte(open()) = 'x'; });
    HANDLE mapping = open();
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    char* byte = firstByte(mapping);
    ASSERT_NE(byte, nullptr);
    EXPECT_EQ(*byte, 'x');
    EXPECT_TRUE(UnmapViewOfFile(byte));
    EXPECT_TRUE(CloseHandle(mapping));
    child.Kill();
    mapping = open();
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    byte = firstByte(mapping);
    ASSERT_NE(byte, nullptr);
    EXPECT_EQ(*byte, '\0');
    EXPECT_TRUE(UnmapViewOfFile(byte));
    EXPECT_TRUE(CloseHandle(mapping));
}

TEST(KilledProcess, TakesItsWindowsWithIt) {
    EXPECT_EQ(FindWindowW(nullptr, u"killed"), nullptr);
    std::unique_ptr<WindowTitle> title;
    Child child([&] { title = std::make_unique<WindowTitle>(u"killed"); });
    const HWND first = FindWindowW(nullptr, u"killed");
    EXPECT_NE(first, nullptr);
    child.Kill();
    EXPECT_EQ(FindWindowW(nullptr, u"killed"), nullptr);
    const WindowTitle again(u"killed");
    EXPECT_NE(FindWindowW(nullptr, u"killed"), nullptr);
    EXPECT_NE(FindWindowW(nullptr, u"killed"), first);
}

}  // namespace
