// Linked into each of our libraries when GCC builds it: GCC's static runtime allocates some 70 KB for
// exceptions that are thrown when memory is out, and does not free them when the library is unloaded. Hosts
// load and unload their libraries often, a decoder library for every fact that is read.
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
