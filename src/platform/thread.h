#pragma once

#include <cstddef>
#include <memory>

namespace tessarin {

/// Whether the system has threads: WebAssembly mostly has none.
bool HasThreads();

/// A thread of the system with a chosen stack size, which the standard one does not offer. Starts
/// once. The destructor waits for the thread, unless it runs in it.
class NativeThread {
public:
    NativeThread();
    NativeThread(const NativeThread&) = delete;
    NativeThread& operator=(const NativeThread&) = delete;
    ~NativeThread();

    /// Runs `body(argument)`, which does not throw, in a thread of at least `stackBytes` of stack.
    /// Returns whether the system gave one.
    [[nodiscard]] bool Start(void (*body)(void*), void* argument, size_t stackBytes);

    /// Waits for the end of the thread. Returns at once when none was started or when called in
    /// the thread itself. Any number of threads may wait.
    void Join();

    /// -1 below normal, 0 normal, 1 above normal. Best effort. The thread has not been joined.
    void SetPriority(int level);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace tessarin
