// The GCC runtime that a library links statically takes some 70 KB for exceptions that are thrown when memory
// is out, and keeps them when the library is unloaded. A decoder library is loaded and unloaded for every
// fact that is read, so they are given back.
// NOLINTBEGIN(bugprone-reserved-identifier)
namespace __gnu_cxx {
void __freeres(); // part of the runtime, declared in none of its headers
} // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier)

namespace {

struct AtUnload {
    AtUnload() = default;
    AtUnload(const AtUnload&) = delete;
    AtUnload& operator=(const AtUnload&) = delete;
    ~AtUnload() { __gnu_cxx::__freeres(); }
};

const AtUnload atUnload;

} // namespace
