#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/win32.h"
#include "support/window.h"

namespace {

constexpr DWORD Size = 6000;

HANDLE OpenMapping(const WCHAR* name, DWORD size = Size) {
    return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name);
}

DWORD WINAPI TakeAndKeep(LPVOID mutex) {
    return WaitForSingleObject(mutex, 60'000);
}

DWORD WINAPI ReleaseForeign(LPVOID mutex) {
    EXPECT_FALSE(ReleaseMutex(mutex));
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(mutex, 5), WAIT_TIMEOUT);
    return 0;
}

void RunThread(LPTHREAD_START_ROUTINE function, LPVOID argument) {
    const HANDLE thread = CreateThread(nullptr, 0, function, argument, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 60'000), WAIT_OBJECT_0);
    CloseHandle(thread);
}

TEST(Mapping, IsOneMemoryPerNameUntilTheLastHandleGoes) {
    const WCHAR* name = WIDE("Zembra/test mapping");
    const HANDLE first = OpenMapping(name);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const HANDLE second = OpenMapping(name, 10);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    auto* left = static_cast<char*>(MapViewOfFile(first, FILE_MAP_ALL_ACCESS, 0, 0, Size));
    auto* right = static_cast<char*>(MapViewOfFile(second, FILE_MAP_WRITE, 0, 0, 0));
    ASSERT_NE(left, nullptr);
    ASSERT_NE(right, nullptr);
    EXPECT_EQ(std::string(left, Size), std::string(Size, '\0'));
    left[Size - 1] = 'x';
    EXPECT_EQ(right[Size - 1], 'x');

    EXPECT_EQ(MapViewOfFile(first, FILE_MAP_WRITE, 0, 0, SIZE_T{3} * Size), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
    EXPECT_TRUE(UnmapViewOfFile(left));
    EXPECT_FALSE(UnmapViewOfFile(left));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_ADDRESS);

    // A view keeps its memory, but the name goes with the last handle.
    const HANDLE third = OpenMapping(name);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    auto* fresh = static_cast<char*>(MapViewOfFile(third, FILE_MAP_READ, 0, 0, Size));
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(std::string(fresh, Size), std::string(Size, '\0'));
    EXPECT_EQ(right[Size - 1], 'x');
    EXPECT_TRUE(UnmapViewOfFile(right));
    EXPECT_TRUE(UnmapViewOfFile(fresh));
    EXPECT_TRUE(CloseHandle(third));
}

TEST(Mapping, RefusesWhatItCannotBe) {
    EXPECT_EQ(OpenMapping(WIDE("Zembra empty"), 0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(OpenMapping(WIDE("No such folder\\name")), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

TEST(Names, AreOneByOneAndMayBeLong) {
    using Text = std::basic_string<WCHAR>;
    const Text longName(250, '/');
    const Text names[] = {longName,       longName + WIDE("x"), Text(200, 'a'),
                          Text(201, 'a'), WIDE("zembra case"),  WIDE("Zembra Case")};
    HANDLE handles[std::size(names)];
    for (std::size_t i = 0; i < std::size(names); ++i) {
        handles[i] = CreateMutexW(nullptr, FALSE, names[i].c_str());
        EXPECT_NE(handles[i], nullptr) << i;
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS) << i;
    }
    const HANDLE same = CreateMutexW(nullptr, FALSE, WIDE("Local\\zembra case"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    CloseHandle(same);
    for (const HANDLE handle : handles) {
        EXPECT_TRUE(CloseHandle(handle));
    }
}

TEST(Mutex, BelongsToItsThreadAsOftenAsItWasTaken) {
    for (const WCHAR* name : {static_cast<const WCHAR*>(nullptr), WIDE("Zembra/test mutex")}) {
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, name);
        ASSERT_NE(mutex, nullptr);
        EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
        RunThread(ReleaseForeign, mutex);
        EXPECT_TRUE(ReleaseMutex(mutex));
        RunThread(ReleaseForeign, mutex);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
        EXPECT_TRUE(CloseHandle(mutex));
    }
}

TEST(Mutex, SaysThatItsOwnerEnded) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, WIDE("Zembra/test mutex"));
    for (const DWORD limit : {0U, 1000U, INFINITE}) {
        RunThread(TakeAndKeep, mutex);
        EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_ABANDONED);
        EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex));
    }
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(Mutex, GivesItsNameUpEvenIfItIsClosedByItsOwner) {
    for (int i = 0; i < 3; ++i) {
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, WIDE("Zembra/test closed"));
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
        EXPECT_TRUE(CloseHandle(mutex));
    }
}

TEST(Windows, AreFoundByTitleWhileTheyLive) {
    const WCHAR* title = WIDE("Zembra test \u00b5");
    EXPECT_EQ(FindWindowW(nullptr, title), nullptr);
    {
        const test_support::Window other(WIDE("Zembra test"));
        const test_support::Window window(title);
        EXPECT_NE(FindWindowW(nullptr, title), nullptr);
        EXPECT_EQ(FindWindowW(nullptr, title), FindWindowW(nullptr, WIDE("ZEMBRA TEST \u00b5")));
        EXPECT_NE(FindWindowW(nullptr, title), FindWindowW(nullptr, WIDE("Zembra test")));
        EXPECT_EQ(FindWindowW(nullptr, WIDE("Zembra tes")), nullptr);
        EXPECT_EQ(FindWindowW(nullptr, WIDE("Zembra test \u00b5s")), nullptr);
    }
    EXPECT_EQ(FindWindowW(nullptr, title), nullptr);
}

}  // namespace
