#include "platform/thread.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sched.h>

namespace tessarin {

struct NativeThread::State {
    std::mutex mutex; // held while the thread is waited for
    pthread_t thread = {};
    bool joinable = false;
};

namespace {

struct thread_start {
    void (*body)(void*);
    void* argument;
    const void* owner;
};

thread_local const void* ownerOfThisThread = nullptr;

void* Enter(void* passed) {
    const std::unique_ptr<thread_start> start(static_cast<thread_start*>(passed));
    ownerOfThisThread = start->owner;
    start->body(start->argument);
    return nullptr;
}

} // namespace

bool HasThreads() {
#if defined(__EMSCRIPTEN__) && !defined(__EMSCRIPTEN_PTHREADS__)
    return false;
#else
    return true;
#endif
}

NativeThread::NativeThread() : state(std::make_unique<State>()) {}

NativeThread::~NativeThread() {
    Join();
    if (state->joinable) {
        pthread_detach(state->thread);
    }
}

bool NativeThread::Start(void (*body)(void*), void* argument, size_t stackBytes) {
    const std::lock_guard guard(state->mutex);
    std::unique_ptr<thread_start> start(new (std::nothrow)
                                            thread_start{body, argument, state.get()});
    pthread_attr_t attributes;
    if (state->joinable || start == nullptr || pthread_attr_init(&attributes) != 0) {
        return false;
    }
    pthread_attr_setstacksize(&attributes, stackBytes); // a size that is refused leaves the default
    state->joinable = pthread_create(&state->thread, &attributes, Enter, start.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (state->joinable) {
        static_cast<void>(start.release()); // the new thread frees it
    }
    return state->joinable;
}

void NativeThread::Join() {
    if (ownerOfThisThread == state.get()) {
        return;
    }
    const std::lock_guard guard(state->mutex);
    if (state->joinable) {
        pthread_join(state->thread, nullptr);
        state->joinable = false;
    }
}

void NativeThread::SetPriority(int level) {
    const std::unique_lock guard(state->mutex, std::try_to_lock);
    int policy = 0;
    sched_param parameters = {};
    if (!guard || !state->joinable ||
        pthread_getschedparam(state->thread, &policy, &parameters) != 0) {
        return; // a thread that is waited for keeps its priority
    }
    // Where ordinary threads have a single priority, all levels are the same.
    const int lowest = sched_get_priority_min(policy);
    const int highest = sched_get_priority_max(policy);
    parameters.sched_priority = std::clamp((lowest + highest) / 2 + level, lowest, highest);
    pthread_setschedparam(state->thread, policy, &parameters);
}

} // namespace tessarin
