#include "log/log_line.h"

void WritePiece(const char* text) {
    LogChannel.WriteText(text);
}

void WritePiece(const std::string& text) {
    LogChannel.WriteText(text.c_str());
}

void WritePiece(Decimal number) {
    WCHAR digits[349];
    _ltow_s(number.value, digits, sizeof(digits) / sizeof(digits[0]), 10);
    LogChannel.WriteWideText(digits);
}
