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

Text Read(const WCHAR* section, const WCHAR* key, DWORD size = 100,
          const WCHAR* standard = WIDE("standard"), const WCHAR* file = File) {
    std::vector<WCHAR> buffer(size, 'x');
    const DWORD count = GetPrivateProfileStringW(section, key, standard, buffer.data(), size, file);
    EXPECT_EQ(count, Text(buffer.data()).size());
    return buffer.data();
}

class Profile : public testing::Test {
  protected:
    void TearDown() override { RemoveSettings(); }
};

TEST_F(Profile, FindsNumbers) {
    struct Case {
        const char* line;
        UINT value;
    };
    constexpr Case Cases[] = {
        {"Key=12", 12},
        {" key \t=  12  ", 12},
        {"KEY=-5", 4294967291U},
        {"Key=+5", 5},
        {"Key=12abc", 12},
        {"Key=1.9", 1},
        {"Key=abc", 0},
        {"Key=-", 0},
        {"Key=007", 7},
        {"Key=4294967297", 1},
        {"Key=\"33\"", 33},
        {"Key='33'", 33},
        {"Key=", 99},
        {"Key", 99},
        {";Key=5", 99},
        {"Other=5", 99},
        {"Key=1\nKey=2", 1},
        {"[Else]\nKey=3", 99},
    };
    for (const Case& test : Cases) {
        WriteSettings(std::string("[Section]\r\n") + test.line + "\r\n[Next]\r\nNone=1\r\n");
        EXPECT_EQ(GetPrivateProfileIntW(WIDE("section"), WIDE("Key"), 99, File), test.value)
            << test.line;
    }
}

TEST_F(Profile, FindsTexts) {
    struct Case {
        const char* line;
        const WCHAR* value;
    };
    constexpr Case Cases[] = {
        {"Key=some text", WIDE("some text")},
        {"Key =\t text ; no comment  ", WIDE("text ; no comment")},
        {"Key=\" quoted \"", WIDE(" quoted ")},
        {"Key='quoted'", WIDE("quoted")},
        {"Key=\"odd'", WIDE("\"odd'")},
        {"Key=a=b", WIDE("a=b")},
        {"Key=", WIDE("")},
        {"Key=\xB5m", WIDE("\u00b5m")},
    };
    for (const Case& test : Cases) {
        for (const char* end : {"\n", "\r\n", ""}) {
            WriteSettings(std::string("\n[Section]\n") + test.line + end);
            EXPECT_EQ(Read(WIDE("SECTION"), WIDE("key")), test.value) << test.line;
        }
    }
}

TEST_F(Profile, UnderstandsByteOrderMarks) {
    WriteSettings("\xEF\xBB\xBF[Section]\nKey=\xC2\xB5m\n");
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key")), WIDE("\u00b5m"));
    std::string wide = "\xFF\xFE";
    for (const char letter : std::string("[Section]\r\nKey=\xB5m\r\n")) {
        wide += {letter, '\0'};
    }
    WriteSettings(wide);
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key")), WIDE("\u00b5m"));
}

TEST_F(Profile, CutsOffAtTheBuffer) {
    WriteSettings("[Section]\nKey=12345\n");
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 6), WIDE("12345"));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 5), WIDE("1234"));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 1), WIDE(""));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("None"), 4), WIDE("sta"));
}

TEST_F(Profile, GivesTheDefaultForWhatIsMissing) {
    WriteSettings("[Section]\nKey=1\n");
    EXPECT_EQ(Read(WIDE("Section"), WIDE("None"), 100, WIDE("with blanks  ")), WIDE("with blanks"));
    EXPECT_EQ(Read(WIDE("None"), WIDE("Key")), WIDE("standard"));
    EXPECT_EQ(GetPrivateProfileIntW(WIDE("None"), WIDE("Key"), -1, File), 0xFFFFFFFFU);
    RemoveSettings();
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key")), WIDE("standard"));
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 100, WIDE("x"), WIDE("C:/none/such/file.ini")),
              WIDE("x"));
    // A folder in the file's place.
    EXPECT_EQ(Read(WIDE("Section"), WIDE("Key"), 100, WIDE("x"), WIDE("C:/Users/Public")),
              WIDE("x"));
}

TEST_F(Profile, ReadsTheFileAfreshByAnyWritingOfItsPath) {
    for (const char* value : {"1", "22", "3"}) {
        WriteSettings(std::string("[Section]\nKey=") + value + "\n");
        const UINT number = static_cast<UINT>(std::stoi(value));
        for (const WCHAR* file : {File, WIDE("c:\\USERS\\public\\documents/../Documents\\.\\zembra"
                                             "/settings\\ZEMBRA.INI")}) {
            EXPECT_EQ(GetPrivateProfileIntW(WIDE("Section"), WIDE("Key"), 99, file), number);
        }
    }
}

}  // namespace
