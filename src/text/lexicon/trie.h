#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace tessarin {

/// A map from strings to values in which every object is a node, so that the longest key at some
/// place of a text is found in one walk.
template <class Value, class Char> class trie {
public:
    trie() = default;
    trie(const trie&) = delete;
    trie& operator=(const trie&) = delete;
    virtual ~trie();

    /// The node where the key of `length` characters ends, or null when it is not a key.
    virtual const trie* Find(const Char* key, int32_t length) const;

    /// The deepest node of a key that the zero-terminated text begins with, or null.
    virtual const trie* FindLongestPrefix(const Char* key) const;

    /// The same, read from `key` towards lower addresses up to a character `stop`, which must lie
    /// there.
    virtual const trie* FindLongestPrefixBackward(const Char* key, Char stop) const;

    /// Sets the value of a zero-terminated key.
    virtual void Insert(const Char* key, Value keyValue);

    virtual bool IsTerminal() const { return terminal; }

    /// The value of the key that ends here.
    Value GetValue() const { return value; }

private:
    const trie* Child(Char character) const;
    const trie* LongestPrefix(const Char* key, ptrdiff_t step, Char stop) const;

    std::map<Char, std::unique_ptr<trie>> children;
    Value value = {};
    bool terminal = false;
};

/// Nodes are taken apart one by one: a chain as deep as a long key would exhaust the stack.
template <class Value, class Char> trie<Value, Char>::~trie() {
    std::vector<std::unique_ptr<trie>> doomed;
    const auto adopt = [&doomed](trie& node) {
        for (auto& [character, child] : node.children) {
            doomed.push_back(std::move(child));
        }
        node.children.clear();
    };
    adopt(*this);
    while (!doomed.empty()) {
        const std::unique_ptr<trie> node = std::move(doomed.back());
        doomed.pop_back();
        adopt(*node);
    }
}

template <class Value, class Char>
const trie<Value, Char>* trie<Value, Char>::Child(Char character) const {
    const auto found = children.find(character);
    return found == children.end() ? nullptr : found->second.get();
}

template <class Value, class Char>
const trie<Value, Char>* trie<Value, Char>::Find(const Char* key, int32_t length) const {
    const trie* node = this;
    for (int32_t index = 0; index < length && node != nullptr; ++index) {
        node = node->Child(key[index]);
    }
    return node != nullptr && node->terminal ? node : nullptr;
}

template <class Value, class Char>
const trie<Value, Char>* trie<Value, Char>::LongestPrefix(const Char* key, ptrdiff_t step,
                                                          Char stop) const {
    const trie* longest = nullptr;
    for (const trie* node = this; node != nullptr; key += step) {
        if (node->terminal) {
            longest = node;
        }
        if (*key == stop) {
            break;
        }
        node = node->Child(*key);
    }
    return longest;
}

template <class Value, class Char>
const trie<Value, Char>* trie<Value, Char>::FindLongestPrefix(const Char* key) const {
    return LongestPrefix(key, 1, Char{});
}

template <class Value, class Char>
const trie<Value, Char>* trie<Value, Char>::FindLongestPrefixBackward(const Char* key,
                                                                      Char stop) const {
    return LongestPrefix(key, -1, stop);
}

template <class Value, class Char> void trie<Value, Char>::Insert(const Char* key, Value keyValue) {
    trie* node = this;
    for (; *key != Char{}; ++key) {
        std::unique_ptr<trie>& child = node->children[*key];
        if (child == nullptr) {
            child = std::make_unique<trie>();
        }
        node = child.get();
    }
    node->value = keyValue;
    node->terminal = true;
}

} // namespace tessarin
