// Linked into every library of ours that GCC builds: the runtime that it links statically takes some 70 KB
// for exceptions that are thrown when memory is out, and keeps them when the library is unloaded. Hosts load
// and unload their libraries as they please, a decoder library even for every fact that is read.
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
