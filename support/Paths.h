#pragma once

#include "support/XString.h"

// Splitting and joining of paths. The backslash is the only separator: a forward slash is an ordinary
// character. Pure code.

/// Lengths, in characters, from which a path gets the "\\?\" prefix: to be opened, and to be scanned.
inline constexpr size_t kOpenPathLimit = 260;
inline constexpr size_t kScanPathLimit = 248;

/// What follows the last backslash: the whole path when there is none, empty when it is the last character.
XString GetFileName(const XString& path);

/// The file name without its last "." and what follows; ".hidden" gives the empty string.
XString GetFileNameNoExt(const XString& path);

/// The file name from its last "." on, the dot included; "." when the name has none.
XString GetFileExt(const XString& path);

/// Everything up to and including the last backslash; the whole path, unchanged, when there is none.
XString GetFilePath(const XString& path);

/// Appends a backslash unless the last character is one; an empty path becomes "\".
void EnsureTrailingBackslash(XString& path);

/// Removes every backslash at the end.
void StripBackslashes(XString& path);

/// The path with "\\?\" in front when it has at least `limit` characters and does not begin with two
/// backslashes. Nothing else is changed: relative paths and forward slashes stay as they are.
XString MakeLongPath(const XString& path, size_t limit);
