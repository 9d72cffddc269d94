#pragma once
#pragma clang system_header // a part of the library, with its names

// What the sources use of C++20 and the standard library of emscripten 3.1 lacks: included before
// every source of this build. A newer library has all of it, and then this file is empty.

#include <version>

#if defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 15000

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace std {

#if _LIBCPP_VERSION < 14000
template <class To, class From> constexpr To bit_cast(const From& from) noexcept {
    return __builtin_bit_cast(To, from);
}
#endif

template <class T> unique_ptr<T> make_unique_for_overwrite(size_t count) {
    return unique_ptr<T>(new remove_extent_t<T>[count]);
}

/// Of a number in plain notation; the one locale of this C library is C. What strtod takes beyond
/// that is not a number: blanks, a plus, hexadecimal.
template <class Number>
from_chars_result from_chars(const char* first, const char* last,
                             Number& out) requires is_floating_point_v<Number> {
    const auto isOfNumber = [](char c) {
        return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E';
    };
    const char* const begin = first != last && *first == '-' ? first + 1 : first;
    if (begin == last || !((*begin >= '0' && *begin <= '9') || *begin == '.')) {
        return {first, errc::invalid_argument};
    }
    const string text(first, std::find_if_not(begin, last, isOfNumber));
    char* end = nullptr;
    const double value = strtod(text.c_str(), &end);
    if (end == text.c_str()) {
        return {first, errc::invalid_argument};
    }
    out = static_cast<Number>(value);
    return {first + (end - text.c_str()), errc{}};
}

namespace ranges {

template <class In, class Out> struct in_out_result {
    In in;
    Out out;
};

template <class R, class F, class P = identity> bool any_of(R&& range, F test, P of = {}) {
    return std::any_of(std::begin(range), std::end(range),
                       [&](auto&& each) { return std::invoke(test, std::invoke(of, each)); });
}

template <class R, class F, class P = identity> bool all_of(R&& range, F test, P of = {}) {
    return std::all_of(std::begin(range), std::end(range),
                       [&](auto&& each) { return std::invoke(test, std::invoke(of, each)); });
}

template <class R, class F, class P = identity> bool none_of(R&& range, F test, P of = {}) {
    return !ranges::any_of(range, test, of);
}

template <class R, class F, class P = identity> auto find_if(R&& range, F test, P of = {}) {
    return std::find_if(std::begin(range), std::end(range),
                        [&](auto&& each) { return std::invoke(test, std::invoke(of, each)); });
}

template <class I, class S, class T, class P = identity>
I find(I first, S last, const T& value,
       P of = {}) requires input_or_output_iterator<I> && requires {
    first != last;
}
{
    while (first != last && !(std::invoke(of, *first) == value)) {
        ++first;
    }
    return first;
}

template <class R, class T, class P = identity>
auto find(R&& range, const T& value,
          P of = {}) requires(!input_or_output_iterator<remove_cvref_t<R>>) {
    return ranges::find_if(
        range, [&](auto&& each) { return each == value; }, of);
}

template <class R, class F, class P = identity> auto count_if(R&& range, F test, P of = {}) {
    return std::count_if(std::begin(range), std::end(range),
                         [&](auto&& each) { return std::invoke(test, std::invoke(of, each)); });
}

template <class R, class T, class P = identity> auto count(R&& range, const T& value, P of = {}) {
    return ranges::count_if(
        range, [&](auto&& each) { return each == value; }, of);
}

template <class R, class T> void fill(R&& range, const T& value) {
    std::fill(std::begin(range), std::end(range), value);
}

template <class R, class Out> auto copy(R&& range, Out out) {
    Out end = std::copy(std::begin(range), std::end(range), out);
    return in_out_result<decltype(std::end(range)), Out>{std::end(range), end};
}

template <class R, class Out, class F> auto copy_if(R&& range, Out out, F test) {
    Out end = std::copy_if(std::begin(range), std::end(range), out, test);
    return in_out_result<decltype(std::end(range)), Out>{std::end(range), end};
}

template <class R, class Out, class F> auto remove_copy_if(R&& range, Out out, F test) {
    Out end = std::remove_copy_if(std::begin(range), std::end(range), out, test);
    return in_out_result<decltype(std::end(range)), Out>{std::end(range), end};
}

template <class R, class Out, class T> auto remove_copy(R&& range, Out out, const T& value) {
    Out end = std::remove_copy(std::begin(range), std::end(range), out, value);
    return in_out_result<decltype(std::end(range)), Out>{std::end(range), end};
}

template <class R, class Out, class F>
auto transform(R&& range, Out out, F make) requires invocable<F&, decltype(*std::begin(range))> {
    Out end = std::transform(std::begin(range), std::end(range), out,
                             [&](auto&& each) { return std::invoke(make, each); });
    return in_out_result<decltype(std::end(range)), Out>{std::end(range), end};
}

template <class R, class S, class Out, class F>
Out transform(R&& first, S&& second, Out out, F make) {
    auto other = std::begin(second);
    for (auto at = std::begin(first); at != std::end(first) && other != std::end(second);
         ++at, ++other) {
        *out++ = std::invoke(make, *at, *other);
    }
    return out;
}

template <class Less, class P> auto in_order(Less& less, P& of) {
    return [&](auto&& a, auto&& b) {
        return std::invoke(less, std::invoke(of, a), std::invoke(of, b));
    };
}

template <class R, class Less = std::less<>, class P = identity>
void sort(R&& range, Less order = {}, P of = {}) {
    std::sort(std::begin(range), std::end(range), in_order(order, of));
}

template <class R, class Less = std::less<>, class P = identity>
void stable_sort(R&& range, Less order = {}, P of = {}) {
    std::stable_sort(std::begin(range), std::end(range), in_order(order, of));
}

/// What `unique` returns: the rest, which is to be dropped.
template <class I> struct leftover {
    I first;
    I last;
    I begin() const { return first; }
    I end() const { return last; }
};

template <class R, class Equal = std::equal_to<>> auto unique(R&& range, Equal same = {}) {
    return leftover<decltype(std::begin(range))>{
        std::unique(std::begin(range), std::end(range), same), std::end(range)};
}

template <class R, class Less = std::less<>, class P = identity>
bool is_sorted(R&& range, Less order = {}, P of = {}) {
    return std::is_sorted(std::begin(range), std::end(range), in_order(order, of));
}

template <class R, class Less = std::less<>, class P = identity>
auto min_element(R&& range, Less order = {}, P of = {}) {
    return std::min_element(std::begin(range), std::end(range), in_order(order, of));
}

template <class R, class Less = std::less<>, class P = identity>
auto max_element(R&& range, Less order = {}, P of = {}) {
    return std::max_element(std::begin(range), std::end(range), in_order(order, of));
}

template <class R, class T, class Less = std::less<>, class P = identity>
auto lower_bound(R&& range, const T& value, Less order = {}, P of = {}) {
    return std::lower_bound(std::begin(range), std::end(range), value,
                            [&](auto&& each, const T& bound) {
                                return std::invoke(order, std::invoke(of, each), bound);
                            });
}

template <class R, class T, class Less = std::less<>, class P = identity>
auto upper_bound(R&& range, const T& value, Less order = {}, P of = {}) {
    return std::upper_bound(std::begin(range), std::end(range), value,
                            [&](const T& bound, auto&& each) {
                                return std::invoke(order, bound, std::invoke(of, each));
                            });
}

template <class R, class S, class Equal = std::equal_to<>, class P = identity, class Q = identity>
bool equal(R&& first, S&& second, Equal same = {}, P of = {}, Q ofOther = {}) {
    return std::equal(std::begin(first), std::end(first), std::begin(second), std::end(second),
                      [&](auto&& a, auto&& b) {
                          return std::invoke(same, std::invoke(of, a), std::invoke(ofOther, b));
                      });
}

template <class R, class S, class Less = std::less<>, class P = identity, class Q = identity>
bool lexicographical_compare(R&& first, S&& second, Less order = {}, P of = {}, Q ofOther = {}) {
    // The two projections may differ, so each pair is compared in both directions by hand.
    auto a = std::begin(first);
    auto b = std::begin(second);
    for (; a != std::end(first) && b != std::end(second); ++a, ++b) {
        auto&& left = std::invoke(of, *a);
        auto&& right = std::invoke(ofOther, *b);
        if (std::invoke(order, left, right)) {
            return true;
        }
        if (std::invoke(order, right, left)) {
            return false;
        }
    }
    return a == std::end(first) && b != std::end(second);
}

} // namespace ranges
} // namespace std

#endif
