// A damaged header may promise more than the memory holds. Under AddressSanitizer too the allocation then
// fails and the program says so; by default the sanitizer would end the test. (Without it nobody calls this.)
extern "C" const char* __asan_default_options();

extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=4096";
}
