#include "metadata/XmlText.h"

wchar_t FirstOfElementName(Utf16View name) noexcept {
    for (size_t i = 0; i < name.Size(); ++i) {
        if (!IsLeftOutOfNames(name[i])) {
            return name[i];
        }
    }
    return 0;
}

bool SplitValues::Next(Utf16View& piece) noexcept {
    if (m_ended) {
        return false;
    }
    const size_t size = m_rest.Find(L'\r');
    piece = m_rest.First(size);
    m_ended = size == m_rest.Size();
    m_rest = m_ended ? Utf16View() : m_rest.After(size + 1);
    return true;
}
