#include "metadata/TransformDocument.h"

bool TransformDocument(const CreateRecord& log, const wchar_t* scope, const XStringList&, const XString&,
                       ByteBuffer&) {
    LogError(L"not built yet", log, scope);
    return false;
}
