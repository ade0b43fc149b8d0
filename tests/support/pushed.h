/* The structures and commands pushed to the simulated wrappers, as the module tests compare
 * them: one structure copied out of the platform's records, and the pushes as (wrapper, command)
 * pairs. */
#ifndef ISP_TEST_PUSHED_H
#define ISP_TEST_PUSHED_H

#include <stdint.h>

#include <utility>
#include <vector>

#include "tests/support/test_support.h"

namespace isp_test {

/* The nth structure pushed with a setup command (a cleared one, and a failure, when none). */
template <typename T>
T pushed(uint32_t cmd, size_t nth = 0) {
    T value;
    const std::vector<isp_sim::call> calls = pushes_with(cmd);
    if (nth < calls.size()) {
        copy_bytes(calls[nth].payload, value);
    } else {
        clear(value);
        ADD_FAILURE() << "no push " << nth << " of command " << cmd;
    }
    return value;
}

typedef std::vector<std::pair<uint32_t, uint32_t>> push_list;

/* The setup calls among calls, in order, each as the wrapper it went to and its command. */
inline push_list pushes_of(const std::vector<isp_sim::call> &calls) {
    push_list list;
    for (const isp_sim::call &c : calls)
        if (c.function == "vin_hal_wrapper_setup") list.emplace_back(c.handle, c.cmd);
    return list;
}

/* Appends the commands, each to wrapper. */
inline push_list to(push_list list, uint32_t wrapper, const std::vector<uint32_t> &commands) {
    for (uint32_t cmd : commands) list.emplace_back(wrapper, cmd);
    return list;
}

}  // namespace isp_test

#endif
