#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"
#include "support/window.h"

namespace {

constexpr DWORD Size = 6000;

HANDLE OpenMapping() {
    return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, Size,
                              WIDE("Zembra/test mapping"));
}

TEST(Mapping, IsOneMemoryPerNameUntilTheLastHandleGoes) {
    const HANDLE first = OpenMapping();
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const HANDLE second = OpenMapping();
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

    // A view keeps its memory, but the name goes with the last handle.
    const HANDLE third = OpenMapping();
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    auto* fresh = static_cast<char*>(MapViewOfFile(third, FILE_MAP_READ, 0, 0, Size));
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(std::string(fresh, Size), std::string(Size, '\0'));
    EXPECT_EQ(right[Size - 1], 'x');
    EXPECT_TRUE(UnmapViewOfFile(right));
    EXPECT_TRUE(UnmapViewOfFile(fresh));
    EXPECT_TRUE(CloseHandle(third));
}

TEST(Windows, AreFoundByTitleWhileTheyLive) {
    const WCHAR* title = WIDE("Zembra test \u00b5");
    {
        const test_support::Window other(WIDE("Zembra test"));
        EXPECT_EQ(FindWindowW(nullptr, title), nullptr);
        const test_support::Window window(title);
        const HWND found = FindWindowW(nullptr, title);
        EXPECT_NE(found, nullptr);
        EXPECT_EQ(found, FindWindowW(nullptr, WIDE("ZEMBRA TEST \u00b5")));
        EXPECT_NE(found, FindWindowW(nullptr, WIDE("Zembra test")));
        EXPECT_EQ(FindWindowW(nullptr, WIDE("Zembra tes")), nullptr);
    }
    EXPECT_EQ(FindWindowW(nullptr, title), nullptr);
}

}  // namespace
