/* Tagged private-context memory and physically contiguous DMA buffers, with the accounting a
 * test needs: live blocks per tag, frees under the wrong tag, fake bus addresses. */
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "sim_state.h"

namespace {

using isp_sim::call;
using namespace isp_sim::internal;

const uint64_t page_size = 4096;

uint64_t round_up(uint64_t value, uint64_t alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

/* posix_memalign wants a power of two no smaller than a pointer; any requested alignment is
 * widened to the next one. */
size_t memory_alignment(uint32_t requested) {
    size_t alignment = 16;
    while (alignment < requested && alignment < (size_t{1} << 30)) alignment <<= 1;
    return alignment;
}

}  // namespace

namespace isp_sim {
namespace internal {

void forget_memory() {
    for (const auto &block : sim().tagged) retired_memory().insert(block.first);
    for (const auto &buffer : sim().dma) retired_memory().insert(buffer.second.virt);
}

}  // namespace internal

ISP_SIM_API std::map<uint32_t, int> live_allocations() {
    const internal::guard locked(internal::platform_lock());
    std::map<uint32_t, int> per_tag;
    for (const auto &block : sim().tagged) ++per_tag[block.second];
    return per_tag;
}

ISP_SIM_API size_t live_dma_buffers() {
    const internal::guard locked(internal::platform_lock());
    return sim().dma.size();
}

}  // namespace isp_sim

ISP_SIM_EXPORT void *QV_OS_MEM_Calloc(uint32_t tag, size_t count, size_t size) {
    const guard locked(platform_lock());
    call &c = record("QV_OS_MEM_Calloc");
    c.tag   = tag;
    c.size  = count * size;
    if (failing_now("QV_OS_MEM_Calloc", c)) return nullptr;
    /* A zero-sized request still gets a distinct block, so it can be told apart and freed. */
    void *memory = calloc(count ? count : 1, size ? size : 1);
    if (!memory) {
        c.result = -1;
        return nullptr;
    }
    sim().tagged[memory] = tag;
    return memory;
}

ISP_SIM_EXPORT void QV_OS_MEM_Free(uint32_t tag, void *ptr) {
    const guard locked(platform_lock());
    call &c = record("QV_OS_MEM_Free");
    c.tag   = tag;
    if (failing_now("QV_OS_MEM_Free", c) || !ptr) return;
    if (retired_memory().erase(ptr)) {
        free(ptr);
        return;
    }
    auto block = sim().tagged.find(ptr);
    if (block == sim().tagged.end()) {
        /* Not ours, or freed already: handing it to free() could bring the host down. */
        problem("QV_OS_MEM_Free: unknown or already freed pointer " +
                hex(reinterpret_cast<uintptr_t>(ptr)) + " under tag " + hex(tag));
        c.result = -1;
        return;
    }
    if (block->second != tag)
        problem("QV_OS_MEM_Free: block allocated under tag " + hex(block->second) +
                " freed under tag " + hex(tag));
    sim().tagged.erase(block);
    free(ptr);
}

ISP_SIM_EXPORT int32_t qv_hal_sys_mem_alloc_cached(uint8_t pipe_id, uint64_t *phys, void **virt,
                                                   uint32_t size, uint32_t align,
                                                   const char *name) {
    const guard locked(platform_lock());
    call &c   = record("qv_hal_sys_mem_alloc_cached");
    c.pipe_id = pipe_id;
    c.size    = size;
    c.align   = align;
    c.name    = name ? name : "";
    /* A failed allocation writes neither output, so a zeroed context keeps physical address 0. */
    if (failing_now("qv_hal_sys_mem_alloc_cached", c)) return c.result;
    if (!phys || !virt) {
        problem("qv_hal_sys_mem_alloc_cached: null output pointer for buffer \"" + c.name + "\"");
        return c.result = -1;
    }
    const size_t alignment = memory_alignment(align);
    void *memory           = nullptr;
    if (posix_memalign(&memory, alignment, size ? size : 1) != 0) return c.result = -1;
    memset(memory, 0, size);

    state &s               = sim();
    const uint64_t address = round_up(s.next_phys, std::max<uint64_t>(page_size, alignment));
    s.next_phys            = round_up(address + std::max<uint64_t>(size, 1), page_size);
    s.dma[address]         = dma_buffer{memory, size};
    *phys                  = address;
    *virt                  = memory;
    c.phys                 = address;
    return 0;
}

ISP_SIM_EXPORT int32_t QV_SYS_MemFree(uint64_t phys, void *virt) {
    const guard locked(platform_lock());
    call &c = record("QV_SYS_MemFree");
    c.phys  = phys;
    if (failing_now("QV_SYS_MemFree", c)) return c.result;
    if (virt && retired_memory().erase(virt)) {
        free(virt);
        return 0;
    }
    state &s    = sim();
    auto buffer = s.dma.find(phys);
    if (buffer == s.dma.end()) {
        problem(s.freed_dma.count(phys) ? "QV_SYS_MemFree: buffer at " + hex(phys) + " freed twice"
                                        : "QV_SYS_MemFree: unknown buffer at " + hex(phys));
        return c.result = -1;
    }
    if (buffer->second.virt != virt)
        problem("QV_SYS_MemFree: buffer at " + hex(phys) + " freed with virtual address " +
                hex(reinterpret_cast<uintptr_t>(virt)) + " instead of " +
                hex(reinterpret_cast<uintptr_t>(buffer->second.virt)));
    c.size = buffer->second.size;
    free(buffer->second.virt);
    s.freed_dma.insert(phys);
    s.dma.erase(buffer);
    return 0;
}
