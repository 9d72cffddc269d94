#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "base/allocation.h"

namespace tessarin {

/// Growable array whose elements move as raw bytes. No element constructor or destructor ever
/// runs: an element that owns memory is released by the owner of the array. Growth is linear,
/// by a fixed step. Operations report exhaustion as 0 and never throw. Not copyable.
///
/// The layout (virtual table, data, count, capacity, growth step) and the order of the virtual
/// operations are part of the binary interface.
template <class T> class TArray {
public:
    TArray() = default;
    explicit TArray(int32_t growthStep) : growBy(growthStep) {}
    TArray(const TArray&) = delete;
    TArray& operator=(const TArray&) = delete;

    virtual ~TArray() { Release(); }

    /// Frees the storage; the growth step stays.
    virtual void RemoveAll() { Release(); }

    /// Removes one element and closes the gap. Returns 0 when there is no such element, else 1.
    virtual int16_t RemoveAt(int32_t index);

    /// Makes room for `size` elements, rounded up to whole growth steps and at least one step.
    /// Never shrinks. Returns 0 and changes nothing when that is impossible, else 1.
    virtual int16_t Reserve(int32_t size);

    /// Empties the array, sets the growth step (0: the greater of `size` and 1) and gives it
    /// `size` elements with unset contents. Returns 0 on failure; a size that cannot be
    /// represented changes nothing, exhausted memory leaves the array empty.
    int16_t SetSize(int32_t size, int32_t growthStep);

    /// Inserts before `index`, or at the nearer end when `index` lies outside. Returns 0 when
    /// there is no room, else 1. `element` may be an element of this array.
    int16_t InsertAt(int32_t index, const T& element);

    int16_t Add(const T& element) { return InsertAt(count, element); }

    /// The element, or null when `index` lies outside.
    T* GetAt(int32_t index) { return Holds(index) ? data + index : nullptr; }
    const T* GetAt(int32_t index) const { return Holds(index) ? data + index : nullptr; }

    /// The element, unchecked.
    T& operator[](int32_t index) {
        assert(Holds(index));
        return data[index];
    }
    const T& operator[](int32_t index) const {
        assert(Holds(index));
        return data[index];
    }

    int32_t GetSize() const { return count; }
    int32_t GetCapacity() const { return capacity; }
    bool IsEmpty() const { return count == 0; }

    T* begin() { return data; }
    T* end() { return data + count; }
    const T* begin() const { return data; }
    const T* end() const { return data + count; }

private:
    bool Holds(int32_t index) const { return index >= 0 && index < count; }
    static int64_t RoundedUp(int32_t size, int32_t growthStep);
    void Release();

    T* data = nullptr;
    int32_t count = 0;
    int32_t capacity = 0;
    int32_t growBy = 4;
};

/// The capacity for `size` elements: whole steps, an exact multiple as it is, never none.
template <class T> int64_t TArray<T>::RoundedUp(int32_t size, int32_t growthStep) {
    const int64_t step = std::max(growthStep, 1);
    return size == 0 ? step : (int64_t{size} + step - 1) / step * step;
}

template <class T> void TArray<T>::Release() {
    tessarin::free(data);
    data = nullptr;
    count = 0;
    capacity = 0;
}

template <class T> int16_t TArray<T>::RemoveAt(int32_t index) {
    if (!Holds(index)) {
        return 0;
    }
    const auto tail = static_cast<size_t>(count - index - 1);
    std::memmove(static_cast<void*>(data + index), data + index + 1, tail * sizeof(T));
    --count;
    return 1;
}

template <class T> int16_t TArray<T>::Reserve(int32_t size) {
    static_assert(std::is_trivially_copyable_v<T>, "elements are moved as raw bytes");
    static_assert(alignof(T) <= alignof(std::max_align_t));
    const int64_t wanted = RoundedUp(size, growBy);
    if (size < 0 || wanted > std::numeric_limits<int32_t>::max()) {
        return 0;
    }
    if (wanted <= capacity) {
        return 1;
    }
    void* grown = alloc(static_cast<size_t>(wanted) * sizeof(T), false);
    if (grown == nullptr) {
        return 0;
    }
    if (data != nullptr) {
        std::memcpy(grown, data, static_cast<size_t>(capacity) * sizeof(T));
        tessarin::free(data);
    }
    data = static_cast<T*>(grown);
    capacity = static_cast<int32_t>(wanted);
    return 1;
}

template <class T> int16_t TArray<T>::SetSize(int32_t size, int32_t growthStep) {
    const int32_t step = growthStep != 0 ? growthStep : std::max(size, 1);
    if (size < 0 || RoundedUp(size, step) > std::numeric_limits<int32_t>::max()) {
        return 0;
    }
    growBy = step;
    RemoveAll();
    if (Reserve(size) == 0) {
        return 0;
    }
    count = size;
    return 1;
}

// Kept: room is asked for while one place is left; an array that overrides `Reserve` hears of the
// coming growth one element ahead.
template <class T> int16_t TArray<T>::InsertAt(int32_t index, const T& element) {
    if (count == std::numeric_limits<int32_t>::max()) {
        return 0;
    }
    const T copy = element; // growth may free the storage that `element` lies in
    const int32_t place = std::clamp(index, 0, count);
    if (count + 1 >= capacity && Reserve(count + 1) == 0) {
        return 0;
    }
    T* slot = data + place;
    std::memmove(static_cast<void*>(slot + 1), slot,
                 static_cast<size_t>(count - place) * sizeof(T));
    std::memcpy(static_cast<void*>(slot), &copy, sizeof(T));
    ++count;
    return 1;
}

/// Doubles the room of an array that is about to grow. By its steps alone an array that is filled
/// element by element copies itself in a time that is quadratic in its length. Without memory
/// nothing changes, and the next element asks for a step.
template <class T> void ReserveAhead(TArray<T>& array) {
    const int32_t count = array.GetSize();
    if (count + int64_t{1} >= array.GetCapacity() &&
        count < std::numeric_limits<int32_t>::max() / 2) {
        static_cast<void>(array.Reserve(2 * count));
    }
}

} // namespace tessarin
