#pragma once

#include <cstddef>
#include <utility>

namespace tessarin {

/// Owner of one reference to an object that has `AddRef` and `Release`.
template <class T> class counted_ptr {
public:
    counted_ptr() = default;
    counted_ptr(std::nullptr_t) {}
    counted_ptr(const counted_ptr& other) : object(other.object) { AddReference(); }
    counted_ptr(counted_ptr&& other) noexcept : object(other.release()) {}
    template <class U> counted_ptr(const counted_ptr<U>& other) : object(other.get()) {
        AddReference();
    }
    template <class U> counted_ptr(counted_ptr<U>&& other) noexcept : object(other.release()) {}
    ~counted_ptr() { reset(); }

    counted_ptr& operator=(counted_ptr other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    /// Takes over a reference that the caller holds, such as that of a new object.
    [[nodiscard]] static counted_ptr Adopt(T* owned) {
        counted_ptr result;
        result.object = owned;
        return result;
    }

    /// Adds a reference to an object that somebody else holds.
    [[nodiscard]] static counted_ptr Share(T* loaned) {
        counted_ptr result = Adopt(loaned);
        result.AddReference();
        return result;
    }

    T* get() const { return object; }
    T* operator->() const { return object; }
    T& operator*() const { return *object; }
    explicit operator bool() const { return object != nullptr; }

    /// Lets go of the object. The pointer is null before the object learns of it.
    void reset() {
        if (T* last = release()) {
            last->Release();
        }
    }

    /// Hands the reference to the caller.
    [[nodiscard]] T* release() { return std::exchange(object, nullptr); }

private:
    void AddReference() {
        if (object != nullptr) {
            object->AddRef();
        }
    }

    T* object = nullptr;
};

} // namespace tessarin
