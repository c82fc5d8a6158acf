#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace log_viewer {

/// The text as UTF-8 that neither steers a terminal nor loses anything: a backslash becomes `\\`,
/// control characters `\r`, `\t`, `\0` and else `\xNN`, and single halves of surrogate pairs
/// `\uNNNN`, digits in capitals. Line-feeds stay. The way back is unique, also for a text that was
/// escaped in pieces.
std::string Escape(std::u16string_view text);

/// A stretch of one line: escaped text, and whether a line-feed came behind it.
struct Fragment {
    std::string text;
    bool endsLine;
};

/// Cuts a text at its line-feeds. What stands behind the last one is a fragment that ends no line.
std::vector<Fragment> SplitLines(std::u16string_view text);

}  // namespace log_viewer
