// Compiled into a test program that asks for more memory than there is: the allocation then fails
// as it does without the address sanitizer, which would otherwise end the program.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
