/* The simulated platform's state: what every platform function records and checks. Everything
 * runs on the caller's thread, one call at a time under the platform's lock: pipes and blocks may
 * call from threads of their own, the library under test has none. */
#ifndef ISP_SIM_STATE_H
#define ISP_SIM_STATE_H

#include <stdint.h>

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "isp_sim.h"

/* The library is built with hidden visibility; the platform interfaces must be seen by
 * libisp_json and the executables that load both. */
#define ISP_SIM_EXPORT extern "C" __attribute__((visibility("default")))

namespace isp_sim {
namespace internal {

struct injected_failure {
    unsigned at_call;  // 1-based count of the function's calls since reset
    int32_t result;
};

struct dma_buffer {
    void *virt;
    uint32_t size;
};

struct state {
    std::vector<call> calls;
    std::vector<log_line> log;
    std::vector<std::string> problems;
    size_t forgotten_calls = 0, forgotten_log_lines = 0;
    size_t peak_held_bytes = 0;

    std::map<std::string, unsigned> call_counts;
    std::multimap<std::string, injected_failure> failures;
    std::function<void(uint32_t, const VinHalSetupCmd *)> setup_hook;

    std::map<void *, uint32_t> tagged;   // live QV_OS_MEM_Calloc blocks and their tags
    std::map<uint64_t, dma_buffer> dma;  // live DMA buffers by physical address
    std::set<uint64_t> freed_dma;        // released physical addresses, for double frees
    uint64_t next_phys = first_phys;

    std::map<uint32_t, wrapper_state> wrappers;  // every handle issued, destroyed ones too
    uint32_t next_handle = first_handle;

    static constexpr uint64_t first_phys   = 0x10000000;
    static constexpr uint32_t first_handle = 0x100;
};

/* Every function of the platform, interface or control, holds the lock of the platform in use
 * on its thread while it runs. It is recursive: the setup hook runs inside the setup call and
 * may call back into the platform. A thread with a platform of its own takes no lock another
 * thread takes, so that a checker of data races sees the library's calls on two such threads
 * as unordered, which they are. */
std::recursive_mutex &platform_lock();
using guard = std::lock_guard<std::recursive_mutex>;

/* The calling thread's own state while it has a thread_platform, otherwise the shared one. */
state &sim();

/* Appends a call record for function and returns it; the reference is valid until the next
 * call is recorded. */
call &record(const char *function);

/* Counts this call of function and tells whether an injected failure is due now; if so, its
 * result is stored in the call record. */
bool failing_now(const char *function, call &record);

void problem(const std::string &text);
std::string hex(uint64_t value);

/* Memory handed out before a reset of the platform in use: forgotten by the accounting but
 * still owned by someone, so it stays reachable and may be freed later without complaint. */
std::set<void *> &retired_memory();

/* Releases the memory of the allocators, called by reset(). */
void forget_memory();

}  // namespace internal
}  // namespace isp_sim

#endif
