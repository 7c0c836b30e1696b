#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Text of audio files as UTF-16. `text` holds at most INT32_MAX bytes.

/// From UTF-8; what is not valid becomes U+FFFD (MultiByteToWideChar).
std::wstring FromUtf8(std::string_view text);

/// From UTF-8 when all of it is valid UTF-8, else from the ANSI code page of the system.
std::wstring FromUtf8OrAnsi(std::string_view text);

/// The last `digits` hexadecimal digits of a number, in lower case.
std::wstring Hex(uint32_t value, int digits);
