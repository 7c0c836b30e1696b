#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What the values of the tags are made of. Where the characters stand is drawn at random, the same in every
/// run: a processor learns a text that repeats itself, and then is much faster than with real ones.
struct TextKind {
    const char* name;
    double share; ///< of the code units, that are drawn from `characters`; the others are letters and blanks
    std::u32string_view characters;
};

inline constexpr TextKind kOrdinary = {"ordinary text", 0.036, U"é&"};
inline constexpr TextKind kSpecial = {"a tenth special", 0.1, U"&\"'<>"};
inline constexpr TextKind kAccented = {"a tenth accented", 0.1, U"éèàçöüßñåø"};
inline constexpr TextKind kCyrillic = {"Cyrillic", 0.85, U"абвгдежзиклмнопрстуя"};
inline constexpr TextKind kJapanese = {"Japanese", 1, U"あいうえおかきくけこ音楽日本語曲名歌詞"};
inline constexpr TextKind kEmoji = {"a quarter emoji", 0.25, U"😀🎵🎸🎻🎧"};

/// A text of `size` characters.
std::wstring MakeText(const TextKind& kind, size_t size);
