#pragma once

/// Keeps a copy of the user's registry cache of decoder libraries, which tests empty, and puts it back at its
/// end. The copy is a key of its own, so that a check that was killed loses nothing: the next one puts back
/// what it finds.
class SavedCache {
public:
    /// Throws std::runtime_error when the cache cannot be copied.
    SavedCache();
    ~SavedCache();
    SavedCache(const SavedCache&) = delete;
    SavedCache& operator=(const SavedCache&) = delete;

private:
    bool m_hadMaker;
    bool m_hadProduct;
    bool m_hadCache;
};
