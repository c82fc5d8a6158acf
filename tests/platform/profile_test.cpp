#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/win32.h"
#include "support/machine.h"

namespace {

using Text = std::basic_string<WCHAR>;
using test_support::RemoveSettings;
using test_support::WriteSettings;

constexpr const WCHAR* File = WIDE("C:/Users/Public/Documents/Zembra/Settings/zembra.ini");

Text Read(const WCHAR* section, const WCHAR* key, DWORD size = 100, const WCHAR* file = File) {
    std::vector<WCHAR> buffer(size, 'x');
    const DWORD count =
        GetPrivateProfileStringW(section, key, WIDE("standard"), buffer.data(), size, file);
    EXPECT_EQ(count, Text(buffer.data()).size());
    return buffer.data();
}

class Profile : public testing::Test {
  protected:
    void TearDown() override { RemoveSettings(); }
};

TEST_F(Profile, FindsNumbers) {
    const struct {
        const char* line;
        UINT value;
    } cases[] = {
        {" key \t=  12  ", 12},
        {"KEY=-5", 4294967291U},
        {"Key=12abc", 12},
        {"Key=1.9", 1},
        {"Key=abc", 0},
        {"Key=4294967297", 1},
        {"Key=\"33\"", 33},
        {"Key=", 99},
        {"Key", 99},
        {";Key=5", 99},
        {"Key=1\nKey=2", 1},
        {"[Else]\nKey=3", 99},
    };
    const WCHAR* otherWriting = WIDE(
        "c:\\USERS\\public\\documents/../Documents\\.\\zembra/settings"
        "\\ZEMBRA.INI");
    for (const auto& test : cases) {
        SCOPED_TRACE(test.line);
        WriteSettings(std::string("[Section]\r\n") + test.line + "\r\n[Next]\r\nNone=1\r\n");
        for (const WCHAR* file : {File, otherWriting}) {
            EXPECT_EQ(GetPrivateProfileIntW(WIDE("section"), WIDE("Key"), 99, file), test.value);
        }
    }
}

TEST_F(Profile, FindsTexts) {
    const struct {
        const char* line;
        const WCHAR* value;
    } cases[] = {
        {"Key =\t text ; no comment  ", WIDE("text ; no comment")},
        {"Key=\" quoted \"", WIDE(" quoted ")},
        {"Key='quoted'", WIDE("quoted")},
        {"Key=\"odd'", WIDE("\"odd'")},
        {"Key=a=b", WIDE("a=b")},
        {"Key=", WIDE("")},
        {"Key=\xB5m", WIDE("\u00b5m")},
        {"None=1", WIDE("standard")},
    };
    for (const auto& test : cases) {
        for (const char* end : {"\n", "\r\n", ""}) {
            WriteSettings(std::string("\n[Section]\n") + test.line + end);
            EXPECT_EQ(Read(WIDE("SECTION"), WIDE("key")), test.value) << test.line;
        }
    }
}

TEST_F(Profile, UnderstandsByteOrderMarks) {
    std::string wide = "\xFF\xFE";
    for (const char letter : std::string("[Section]\r\nKey=\xB5m\r\n")) {
        wide += {letter, '\0'};
    }
    for (const std::string& text : {std::string("\xEF\xBB\xBF[Section]\nKey=\xC2\xB5m\n"), wide}) {
        WriteSettings(text);
        EXPECT_EQ(Read(WIDE("Section"), WIDE("Key")), WIDE("\u00b5m"));
    }
}

TEST_F(Profile, CutsOffAtTheBufferAndGivesTheDefaultForWhatIsMissing) {
    WriteSettings("[Section]\nKey=12345\n");
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 6), WIDE("12345"));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 5), WIDE("1234"));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 1), WIDE(""));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("None"), 4), WIDE("sta"));
    EXPECT_EQ(Read(WIDE("None"), WIDE("Key")), WIDE("standard"));
    // A folder in the file's place.
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 100, WIDE("C:/Users/Public")), WIDE("standard"));
    RemoveSettings();
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key")), WIDE("standard"));
}

TEST(TextToNumber, ReadsTheDecimalAtTheStart) {
    const struct {
        const WCHAR* text;
        double value;
    } cases[] = {
        {WIDE(""), 0.0},    {WIDE("."), 0.0},      {WIDE(" \t-1.5mm"), -1.5},
        {WIDE("+.5"), 0.5}, {WIDE("5."), 5.0},     {WIDE("1e"), 1.0},
        {WIDE("1,5"), 1.0}, {WIDE("0.1"), 0.1},    {WIDE("1.2.3"), 1.2},
        {WIDE("- 1"), 0.0}, {WIDE("2E-2x"), 0.02}, {WIDE("\u00b5 5"), 0.0},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(_wtof(test.text), test.value) << testing::PrintToString(Text(test.text));
    }
}

}  // namespace
