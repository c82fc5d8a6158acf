#pragma once

#include <string>

/// Which way a text went over the line.
enum class LineText { Sent, Received };

/// Hears the texts of every exchange, with ComLock held, on the thread of the exchange: it has to
/// keep what it wants and return at once. It must wait for no window and take no lock that is held
/// for longer than a copy.
using LineListener = void (*)(LineText way, const std::string& text) noexcept;

/// Sets the one listener. Any thread; for the life of the module.
void ListenToLine(LineListener listener);

/// Tells the listener, if there is one.
void TellLineListener(LineText way, const std::string& text);
