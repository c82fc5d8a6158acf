#include "log_viewer/lines.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "log_viewer/file_saver.h"
#include "log_viewer/line_store.h"
#include "support/machine.h"

using log_viewer::Escape;
using log_viewer::FileSaver;
using log_viewer::LineStore;
using log_viewer::SplitLines;
using log_viewer::TimeOfDay;

namespace {

constexpr TimeOfDay Early{.hour = 7, .minute = 8, .second = 9, .millisecond = 1};
constexpr TimeOfDay Late{.hour = 23, .minute = 59, .second = 58, .millisecond = 999};

/// The way back, as a reader of the file goes it: over the plain characters of the basic plane.
std::u16string Unescaped(const std::string& text) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += static_cast<unsigned char>(text[i]);
            continue;
        }
        const char kind = text[++i];
        const std::size_t digits = kind == 'x' ? 2 : kind == 'u' ? 4 : 0;
        const std::size_t letter = std::string("\\rt0").find(kind);
        out += digits != 0 ? static_cast<char16_t>(std::stoi(text.substr(i + 1, digits), {}, 16))
                           : u"\\\r\t\0"[letter];
        i += digits;
    }
    return out;
}

TEST(Escape, WritesWhatCannotStandInALine) {
    using namespace std::string_literals;
    const struct {
        std::u16string text;
        std::string escaped;
    } cases[] = {
        {u"@CPOSMR?\r", R"(@CPOSMR?\r)"},
        {u"\\\\.\\COM3", R"(\\\\.\\COM3)"},
        {u"\\r is no \r", R"(\\r is no \r)"},
        {u"\0\x30\t\x1b[2J\x7f\x9b~"s, R"(\00\t\x1B[2J\x7F\x9B~)"},
        {u"a\nb", "a\nb"},
        {u"\u00a0\u00e9\u07ff\u0800\uffee", "\u00a0\u00e9\u07ff\u0800\uffee"},
        {u"\U00010000\U0010ffff", "\U00010000\U0010ffff"},
        {{0xD83D, u'x', 0xDE00, 0xFFFF, 0xD83D},
         R"(\uD83Dx\uDE00)"
         "\uffff"
         R"(\uD83D)"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(Escape(test.text), test.escaped);
    }
}

TEST(Escape, CanBeTakenBackAlsoWhenItWasDoneInPieces) {
    std::u16string all;
    for (char16_t unit = 0; unit < 0xA0; ++unit) {
        all += {unit, u'\\', u'0', unit, u'x'};
    }
    all += {0xD83D, 0xDE00};
    std::string inPieces;
    for (const char16_t unit : all) {
        inPieces += Escape({&unit, 1});
    }
    EXPECT_EQ(Unescaped(inPieces), all);
}

TEST(Store, JoinsPiecesToLinesAndStampsTheirBeginning) {
    LineStore store(10);
    LineStore::Place place;
    LineStore::Place lateReader;
    const auto add = [&](std::u16string_view text, const TimeOfDay& time) {
        store.Append(SplitLines(text), time);
        return store.ReadOn(place, {.stamps = true, .lineEnd = "|"}).text;
    };
    EXPECT_EQ(add(u"one", Early), "[07:08:09.001] one");
    EXPECT_EQ(add(u"", Late), "");
    EXPECT_EQ(add(u" line", Late), " line");
    EXPECT_EQ(add(u"\n", Late), "|");
    EXPECT_EQ(add(u"\nthird\nfour", Late),
              "[23:59:58.999] |[23:59:58.999] third|[23:59:58.999] four");
    EXPECT_EQ(store.ReadOn(lateReader, {.stamps = false, .lineEnd = "\r\n"}).text,
              "one line\r\n\r\nthird\r\nfour");
    place = store.Clear();
    EXPECT_EQ(add(u"th\n", Late), "[23:59:58.999] th|");
    EXPECT_EQ(store.Received(), 5U);
}

TEST(Store, KeepsTheNewestLinesOnlyAndTellsWhatAReaderMissed) {
    LineStore store(3);
    LineStore::Place place;
    const LineStore::Form plain{.stamps = false, .lineEnd = "\n"};
    store.Append(SplitLines(u"0\n1 beg"), Early);
    store.ReadOn(place, plain);
    store.Append(SplitLines(u"un\n2\n3\n4\n"), Early);
    const LineStore::Reading reading = store.ReadOn(place, plain);
    EXPECT_EQ(reading.text, "\n2\n3\n4\n") << "the line that it was in ends";
    EXPECT_EQ(reading.skipped, 1U);

    // One line without an end must not grow without one.
    for (int i = 0; i < 100; ++i) {
        store.Append(SplitLines(std::u16string(4999, u'\r')), Early);
    }
    LineStore::Place start;
    EXPECT_EQ(store.Held(), 3U);
    EXPECT_LT(store.ReadOn(start, plain).text.size(), 100'000U);
}

TEST(Saver, GoesOnWhereTheFileBreaksOff) {
    const std::filesystem::path file =
        test_support::SettingsFilePath().replace_filename("saved.log");
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::remove(file);
    FileSaver(file, true).Write(SplitLines(u"a\r\n\nb"), Early);
    FileSaver(file, true).Write(SplitLines(u"c\n"), Late);
    FileSaver(file, true).Write(SplitLines(u"d"), Late);
    FileSaver(file, false).Write(SplitLines(u"\ne"), Late);
    std::ostringstream held;
    held << std::ifstream(file, std::ios::binary).rdbuf();
    EXPECT_EQ(held.str(),
              "[07:08:09.001] a\\r\n[07:08:09.001] \n[07:08:09.001] bc\n[23:59:58.999] d\ne");
    std::filesystem::remove(file);
    EXPECT_THROW(FileSaver(file / "none", false), std::runtime_error);
}

}  // namespace
