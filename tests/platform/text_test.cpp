#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <string>

#include "platform/win32.h"

namespace {

using Text = std::basic_string<WCHAR>;

constexpr DWORD TextFlags =
    FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;

TEST(ErrorText, IsOneLineForKnownCodesAndNothingForOthers) {
    for (const DWORD code :
         {2U, 3U, 5U, 6U, 8U, 22U, 31U, 50U, 87U, 183U, 206U, 288U, 487U, 1117U, 1450U}) {
        LPWSTR text = nullptr;
        const DWORD length = FormatMessageW(TextFlags, nullptr, code, 0x400,
                                            reinterpret_cast<LPWSTR>(&text), 0, nullptr);
        ASSERT_GT(length, 2U) << code;
        const Text copy(text);
        EXPECT_EQ(copy.size(), length) << code;
        EXPECT_EQ(copy.find(WIDE("\r\n")), length - 2) << code;
        EXPECT_EQ(LocalFree(text), nullptr);
    }
    LPWSTR text = nullptr;
    EXPECT_EQ(FormatMessageW(TextFlags, nullptr, 0xDEAD, 0x400, reinterpret_cast<LPWSTR>(&text), 0,
                             nullptr),
              0U);
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
}

TEST(NumberToText, WritesDecimalOrAnEmptyText) {
    struct Case {
        LONG value;
        errno_t result;
        std::size_t size;
        const WCHAR* text;
    };
    constexpr Case Cases[] = {
        {0, 0, 16, WIDE("0")},
        {-7, 0, 16, WIDE("-7")},
        {2147483647, 0, 11, WIDE("2147483647")},
        {-2147483647 - 1, 0, 12, WIDE("-2147483648")},
        {123, ERANGE, 3, WIDE("")},
        {-1, ERANGE, 2, WIDE("")},
    };
    for (const Case& test : Cases) {
        std::array<WCHAR, 16> text{'x', 'x'};
        EXPECT_EQ(_ltow_s(test.value, text.data(), test.size, 10), test.result) << test.value;
        EXPECT_EQ(Text(text.data()), test.text) << test.value;
        text = {'x', 'x'};
        EXPECT_EQ(_itow_s(test.value, text.data(), test.size, 10), test.result) << test.value;
        EXPECT_EQ(Text(text.data()), test.text) << test.value;
    }
}

TEST(TextToNumber, ReadsTheDecimalAtTheStart) {
    struct Case {
        const WCHAR* text;
        double value;
    };
    constexpr Case Cases[] = {
        {WIDE(""), 0.0},
        {WIDE("abc"), 0.0},
        {WIDE("-"), 0.0},
        {WIDE("."), 0.0},
        {WIDE("12"), 12.0},
        {WIDE(" \t-1.5mm"), -1.5},
        {WIDE("+.5"), 0.5},
        {WIDE("5."), 5.0},
        {WIDE("1e3"), 1000.0},
        {WIDE("1e"), 1.0},
        {WIDE("2E-2x"), 0.02},
        {WIDE("1,5"), 1.0},
        {WIDE("0.1"), 0.1},
        {WIDE("1.2.3"), 1.2},
        {WIDE("- 1"), 0.0},
        {WIDE("\u00b5 5"), 0.0},
        {WIDE("123456789012345678"), 123456789012345678.0},
    };
    for (const Case& test : Cases) {
        EXPECT_EQ(_wtof(test.text), test.value) << testing::PrintToString(Text(test.text));
    }
}

}  // namespace
