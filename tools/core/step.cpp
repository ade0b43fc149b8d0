/* Step names, dump directories and the frame directory a step read. */
#include "tools/core/step.h"

#include <algorithm>

namespace isp_case {

step_id setup_step() {
    return {phase::setup, 0, 0};
}

step_id teardown_step() {
    return {phase::teardown, 0, 0};
}

step_id frame_step(int number, int last_dir) {
    return {phase::frame, number, std::min(number, std::max(last_dir, 0))};
}

const char *phase_name(phase kind) {
    switch (kind) {
        case phase::setup:
            return "setup";
        case phase::frame:
            return "frame";
        case phase::teardown:
            return "teardown";
    }
    return "";
}

std::string step_name(const step_id &step) {
    if (step.kind != phase::frame) return phase_name(step.kind);
    std::string name = "frame " + std::to_string(step.number);
    if (step.again()) name += " (f" + std::to_string(step.dir) + " again)";
    return name;
}

std::string step_dir(const step_id &step) {
    if (step.kind != phase::frame) return phase_name(step.kind);
    return "frame" + std::to_string(step.number);
}

std::string step_files(const step_id &step) {
    return step.kind == phase::teardown ? "" : "cfgs/f" + std::to_string(step.dir);
}

}  // namespace isp_case
