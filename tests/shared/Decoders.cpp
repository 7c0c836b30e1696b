#include "tests/shared/Decoders.h"

FixtureBehaviour* FixtureBehaviourOf(const wchar_t* libraryName) {
    return &Decoders::current->Of(libraryName);
}

void FixtureCalled(const wchar_t* libraryName, const wchar_t* call) {
    if (Decoders::current != nullptr) {
        Decoders::current->Record(libraryName, call);
    }
}
