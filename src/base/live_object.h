#pragma once

#include <mutex>

namespace tessarin {

/// Member by which an object of class `Object` is known, while it lives, from the `Interface` that
/// hosts hold of it: `live_object<CThing, IThing> self{*this};`. A host may hand over an object of
/// its own instead, of which nothing is known but its virtual operations: it may come from another
/// compiler or carry no type information, so a cast that asks the object would crash.
template <class Object, class Interface> class live_object {
public:
    explicit live_object(Object& object) : owner(&object) {
        const std::lock_guard lock(mutex);
        next = first;
        if (next != nullptr) {
            next->previous = this;
        }
        first = this;
    }
    live_object(const live_object&) = delete;
    live_object& operator=(const live_object&) = delete;
    ~live_object() {
        const std::lock_guard lock(mutex);
        (previous != nullptr ? previous->next : first) = next;
        if (next != nullptr) {
            next->previous = previous;
        }
    }

    /// The object that is held as `held`, or null when that is null or a host's own.
    static Object* Find(const Interface* held) {
        const std::lock_guard lock(mutex);
        for (const live_object* entry = first; entry != nullptr; entry = entry->next) {
            if (static_cast<const Interface*>(entry->owner) == held) {
                return entry->owner;
            }
        }
        return nullptr;
    }

private:
    static inline std::mutex mutex;
    static inline live_object* first = nullptr;

    Object* owner;
    live_object* previous = nullptr;
    live_object* next = nullptr;
};

} // namespace tessarin
