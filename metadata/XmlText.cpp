#include "metadata/XmlText.h"

namespace {

constexpr wchar_t kValueSeparator = L'\r';

/// The entity for a unit, or null for one that stands for itself.
const wchar_t* EntityOf(wchar_t unit) noexcept {
    switch (unit) {
    case L'&':
        return L"&amp;";
    case L'"':
        return L"&quot;";
    case L'\'':
        return L"&apos;";
    case L'<':
        return L"&lt;";
    case L'>':
        return L"&gt;";
    default:
        return nullptr;
    }
}

bool IsLeftOutOfNames(wchar_t unit) noexcept {
    for (const wchar_t* left = L"# &\"'<>()/\\:"; *left != 0; ++left) {
        if (*left == unit) {
            return true;
        }
    }
    return false;
}

} // namespace

XString EscapeXmlText(const XString& text) {
    // Measured first, so that the result takes one allocation however large it gets.
    size_t length = text.Length();
    for (size_t pos = 1; pos <= text.Size(); ++pos) {
        if (const wchar_t* entity = EntityOf(text.At(pos)); entity != nullptr) {
            length += TextSize(entity) - 1;
        }
    }
    if (length == text.Length()) {
        return XString(text.Text(), text.Size());
    }
    XString escaped;
    escaped.Reserve(length);
    size_t plainPos = 1; // start of the run not copied yet
    for (size_t pos = 1; pos <= text.Size(); ++pos) {
        if (const wchar_t* entity = EntityOf(text.At(pos)); entity != nullptr) {
            escaped.Append(text.Text() + plainPos - 1, pos - plainPos);
            escaped.Append(entity);
            plainPos = pos + 1;
        }
    }
    escaped.Append(text.Text() + plainPos - 1, text.Length() - plainPos);
    return escaped;
}

XString MakeElementName(const XString& name) {
    XString element;
    element.Reserve(name.Length());
    size_t keptPos = 1; // start of the run not copied yet
    for (size_t pos = 1; pos <= name.Size(); ++pos) {
        if (IsLeftOutOfNames(name.At(pos))) {
            element.Append(name.Text() + keptPos - 1, pos - keptPos);
            keptPos = pos + 1;
        }
    }
    element.Append(name.Text() + keptPos - 1, name.Length() - keptPos);
    return element;
}

void SplitValues(XStringList& out, const XString& text) {
    out.Clear();
    if (text.IsEmpty()) {
        return;
    }
    size_t pos = 1;
    for (size_t separatorPos = text.Find(kValueSeparator, pos); separatorPos != 0;
         separatorPos = text.Find(kValueSeparator, pos)) {
        out.Add(text.Mid(pos, separatorPos - 1));
        pos = separatorPos + 1;
    }
    out.Add(text.Mid(pos, text.Size()));
}
