#pragma once

#include <mutex>

namespace tessarin {

/// Lock that its holder may take again.
class CCritSection {
public:
    CCritSection() = default;
    CCritSection(const CCritSection&) = delete;
    CCritSection& operator=(const CCritSection&) = delete;
    virtual ~CCritSection() = default;

    virtual void Lock();
    virtual void Unlock();

private:
    std::recursive_mutex mutex;
};

/// Holds a lock for a scope.
class crit_section_scope {
public:
    explicit crit_section_scope(CCritSection& section) : held(section) { held.Lock(); }
    crit_section_scope(const crit_section_scope&) = delete;
    crit_section_scope& operator=(const crit_section_scope&) = delete;
    ~crit_section_scope() { held.Unlock(); }

private:
    CCritSection& held;
};

} // namespace tessarin
