/* Counts the heap handed out through operator new, for the memory report. The replacement
 * operators serve the whole process, the library's picojson trees and frame buffers included. */
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include <cstddef>

#include <new>

#include "bench/heap_meter.h"

namespace {

bool counting        = false;
long long live_bytes = 0, peak_bytes = 0;

/* Each block carries the size asked for in front of it, so that the counts are exactly what the
 * program asked for, whatever the allocator rounds up to. */
const size_t k_header = alignof(std::max_align_t);

void *allocate(size_t size) {
    unsigned char *block = static_cast<unsigned char *>(malloc(k_header + size));
    if (!block) throw std::bad_alloc();
    memcpy(block, &size, sizeof size);
    if (counting) {
        live_bytes += static_cast<long long>(size);
        if (live_bytes > peak_bytes) peak_bytes = live_bytes;
    }
    return block + k_header;
}

void release(void *memory) {
    if (!memory) return;
    unsigned char *block = static_cast<unsigned char *>(memory) - k_header;
    size_t size;
    memcpy(&size, block, sizeof size);
    if (counting) live_bytes -= static_cast<long long>(size);
    free(block);
}

}  // namespace

namespace isp_bench {
namespace heap {

void count(bool on) {
    counting = on;
}
long long live() {
    return live_bytes;
}
long long peak() {
    return peak_bytes;
}
void reset_peak() {
    peak_bytes = live_bytes;
}

}  // namespace heap
}  // namespace isp_bench

void *operator new(size_t size) {
    return allocate(size);
}
void *operator new[](size_t size) {
    return allocate(size);
}
void *operator new(size_t size, const std::nothrow_t &) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}
void *operator new[](size_t size, const std::nothrow_t &) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}
void operator delete(void *memory) noexcept {
    release(memory);
}
void operator delete[](void *memory) noexcept {
    release(memory);
}
void operator delete(void *memory, size_t) noexcept {
    release(memory);
}
void operator delete[](void *memory, size_t) noexcept {
    release(memory);
}
