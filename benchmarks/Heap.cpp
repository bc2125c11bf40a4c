// SPDX-License-Identifier: Apache-2.0
#include <benchmarks/Heap.h>

#include <errno.h>
#include <malloc.h>

namespace {

// Constant-initialised, because memory is allocated before any constructor runs.
thread_local android::bench::HeapUse tUse;

void* taken(void* memory) {
    if (memory == nullptr) return nullptr;
    ++tUse.allocations;
    tUse.bytes += static_cast<int64_t>(malloc_usable_size(memory));
    return memory;
}

void given(void* memory) {
    if (memory != nullptr) tUse.bytes -= static_cast<int64_t>(malloc_usable_size(memory));
}

}  // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);

void* malloc(size_t size) {
    return taken(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
    return taken(__libc_calloc(count, size));
}

void* realloc(void* memory, size_t size) {
    given(memory);
    return taken(__libc_realloc(memory, size));
}

void* memalign(size_t alignment, size_t size) {
    return taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size) {
    *memory = memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

void free(void* memory) {
    given(memory);
    __libc_free(memory);
}

}  // extern "C"

namespace android::bench {

HeapUse heapUse() {
    return tUse;
}

}  // namespace android::bench
