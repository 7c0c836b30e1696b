#pragma once

#include "support/CreateRecord.h"

/// Beginnings of messages that change the indentation, which all instances of the process share: kEnter
/// indents the lines after it one level more, kLeave indents its own line and those after it one level less.
inline constexpr const wchar_t* kEnter = L"->->";
inline constexpr const wchar_t* kLeave = L"<-<-";

/// Writes one trace line to the owner's `debugFile`: the prefix, or the indentation where there is none, the
/// message, and the scope as "  [scope]" unless it is null. UTF-16 without byte-order mark, ended by CR LF,
/// in one WriteFile whose outcome is ignored; a long line for which there is no memory is left out.
/// Serialised by a mutex of the module.
void Log(const wchar_t* message, const CreateRecord& owner, const wchar_t* scope,
         const wchar_t* prefix = nullptr) noexcept;

/// Writes an error: a trace line with the prefix "*** Error: ", then the bare message and scope to the
/// owner's `errorFile`.
void LogError(const wchar_t* message, const CreateRecord& owner, const wchar_t* scope) noexcept;
