#include "platform/thread.h"

#include <mutex>
#include <new>
#include <process.h>
#include <windows.h>

namespace tessarin {

struct NativeThread::State {
    std::mutex mutex; // held while the thread is waited for
    HANDLE thread = nullptr;
};

namespace {

struct thread_start {
    void (*body)(void*);
    void* argument;
    const void* owner;
};

thread_local const void* ownerOfThisThread = nullptr;

unsigned __stdcall Enter(void* passed) {
    const std::unique_ptr<thread_start> start(static_cast<thread_start*>(passed));
    ownerOfThisThread = start->owner;
    start->body(start->argument);
    return 0;
}

} // namespace

bool HasThreads() {
    return true;
}

NativeThread::NativeThread() : state(std::make_unique<State>()) {}

NativeThread::~NativeThread() {
    Join();
    if (state->thread != nullptr) {
        CloseHandle(state->thread);
    }
}

bool NativeThread::Start(void (*body)(void*), void* argument, size_t stackBytes) {
    const std::lock_guard guard(state->mutex);
    std::unique_ptr<thread_start> start(new (std::nothrow)
                                            thread_start{body, argument, state.get()});
    if (state->thread != nullptr || start == nullptr) {
        return false;
    }
    const uintptr_t handle =
        _beginthreadex(nullptr, static_cast<unsigned>(stackBytes), Enter, start.get(), 0, nullptr);
    if (handle == 0) {
        return false;
    }
    static_cast<void>(start.release()); // the new thread frees it
    state->thread = reinterpret_cast<HANDLE>(handle);
    return true;
}

void NativeThread::Join() {
    if (ownerOfThisThread == state.get()) {
        return;
    }
    const std::lock_guard guard(state->mutex);
    if (state->thread != nullptr) {
        WaitForSingleObject(state->thread, INFINITE);
        CloseHandle(state->thread);
        state->thread = nullptr;
    }
}

void NativeThread::SetPriority(int level) {
    const std::unique_lock guard(state->mutex, std::try_to_lock);
    if (guard && state->thread != nullptr) {
        SetThreadPriority(state->thread, level); // -1, 0 and 1 are the system's own numbers
    }
}

} // namespace tessarin
