// Compiled into a test program that asks for more memory than there is: the allocation then fails
// as it does without a sanitizer, which would otherwise end the program.

#if defined(__GNUC__)
#define SANITIZER_HOOK extern "C" __attribute__((visibility("default")))
#else
#define SANITIZER_HOOK extern "C"
#endif

SANITIZER_HOOK const char* __asan_default_options();
SANITIZER_HOOK const char* __tsan_default_options();

const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}
