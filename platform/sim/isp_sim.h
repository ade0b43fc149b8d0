/* Control and inspection of the simulated platform, for tests and workstation tools. The
 * platform interfaces themselves are declared in isp_platform.h.
 *
 * Threads: every platform interface and every function below may be called from any thread, and
 * a platform runs one call at a time. What calls(), log_lines() and problems() return is read
 * while no other thread calls the same platform (after joining the threads that did, or on a
 * thread with a platform of its own, see thread_platform). */
#ifndef ISP_SIM_H
#define ISP_SIM_H

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "isp_platform.h"

#define ISP_SIM_API __attribute__((visibility("default")))

namespace isp_sim {

/* One recorded call of a platform function, in call order. */
struct call {
    std::string function;          /* "vin_hal_wrapper_setup", "QV_OS_MEM_Calloc", ... */
    uint32_t handle = 0;           /* wrapper handle argument (or the handle created) */
    int32_t result = 0;            /* what the call returned (0 = success) */
    std::vector<uint8_t> record;   /* byte copy of the creation or register I/O record */
    uint32_t cmd = 0;              /* setup: command number */
    bool has_data = false;         /* setup: data pointer was not null */
    std::vector<uint8_t> payload;  /* setup: byte copy of the pushed structure (size known
                                      from the block's command table; empty when unknown) */
    uint32_t mode = 0, arg = 0, channel = 0; /* trigger arguments */
    uint32_t tag = 0;              /* allocator tag */
    size_t size = 0;               /* allocation size in bytes (count * size, or DMA size) */
    uint32_t align = 0;            /* DMA alignment */
    uint64_t phys = 0;             /* DMA physical address handed out or freed */
    std::string name;              /* DMA buffer name */
    uint8_t pipe_id = 0;           /* DMA pipe id */
};

/* One line given to QV_SYS_LogPrint, formatted. */
struct log_line {
    int32_t level = 0;
    std::string tag;
    int32_t flag = 0;
    std::string text;
};

/* Forgets every recorded call, log line, wrapper, allocation and injected failure; handles
 * and physical addresses start again from their first values. */
ISP_SIM_API void reset();

ISP_SIM_API const std::vector<call> &calls();
/* Recorded calls of one function only, in order. */
ISP_SIM_API std::vector<call> calls_of(const std::string &function);

/* How much has been recorded since the reset, and how much of it is still held. */
struct record_counters {
    size_t calls           = 0; /* every call recorded, the forgotten ones included */
    size_t log_lines       = 0;
    size_t held_calls      = 0; /* what calls() holds now */
    size_t held_log_lines  = 0; /* what log_lines() holds now */
    size_t held_bytes      = 0; /* their records and byte copies */
    size_t peak_held_bytes = 0; /* the most they held at once */
};
ISP_SIM_API record_counters counters();
/* Drops every call and log line recorded so far; they stay counted. Handles, wrappers,
 * allocations, problems and injected failures are kept. A tool that reads the records after each
 * operation and then forgets them holds one operation's records at most, however long it runs. */
ISP_SIM_API void forget_records();

/* Log lines: by default each is also written to stderr; echo can be switched off. Lines with a
 * level above the threshold are recorded but not echoed (default 7 = everything). */
ISP_SIM_API const std::vector<log_line> &log_lines();
ISP_SIM_API void set_log_echo(bool echo);
ISP_SIM_API void set_log_level(int32_t max_level);

/* Makes the nth call (1-based, counted from now) of function fail with result (non-zero
 * result; for QV_OS_MEM_Calloc the call returns null). */
ISP_SIM_API void fail_call(const std::string &function, unsigned nth, int32_t result = -1);

/* Called during every vin_hal_wrapper_setup with its handle and record, before the copy is
 * taken; lets a tool or test look through pointers inside a pushed structure. It runs under the
 * platform's lock, so never on two threads at once, and may call the platform itself. */
ISP_SIM_API void on_setup(std::function<void(uint32_t handle, const VinHalSetupCmd *cmd)> hook);

/* Live tagged allocations per tag (QV_OS_MEM_Calloc minus QV_OS_MEM_Free). */
ISP_SIM_API std::map<uint32_t, int> live_allocations();
/* Problems seen by the simulated platform, each as one readable line: frees under another tag
 * or of unknown pointers, double destroys, use of destroyed or unknown wrapper handles, setup
 * on a wrapper without a register I/O, double frees of DMA buffers. */
ISP_SIM_API const std::vector<std::string> &problems();

/* State of one wrapper, by handle. */
struct wrapper_state {
    bool exists = false;      /* created and not destroyed */
    bool regio = false;       /* register I/O created and not destroyed */
    uint32_t type = 0;        /* wrapper type from the creation record */
    std::string block;        /* register I/O name without "mod_" ("clc", "dem", ...) */
    uint8_t channel = 0;      /* register I/O channel */
};
ISP_SIM_API wrapper_state wrapper(uint32_t handle);
ISP_SIM_API size_t live_wrappers();
ISP_SIM_API size_t live_dma_buffers();

/* A platform of the calling thread's own, for running pipes on threads of their own and reading
 * each one's records as if it had run alone. While the object lives, the platform interfaces
 * called on the constructing thread record, count, fail and check in a state of that thread
 * only, fresh as after reset(): handles and physical addresses start from their first values,
 * and the functions above, called on that thread, read and control that state. Other threads
 * go on with the shared platform or their own. Log echo and level stay common. Create and
 * destroy it on the same thread; what the thread still holds at the end is forgotten as by
 * reset(). */
class ISP_SIM_API thread_platform {
  public:
    thread_platform();
    ~thread_platform();
    thread_platform(const thread_platform &)            = delete;
    thread_platform &operator=(const thread_platform &) = delete;

  private:
    void *outer_; /* the state the thread used before, in use again afterwards */
};

/* Size of the structure pushed with a setup command to a wrapper of a block ("clc", 3), 0 when
 * the block has no such command. */
ISP_SIM_API size_t payload_size(const std::string &block, uint32_t cmd);

}  // namespace isp_sim

#endif
