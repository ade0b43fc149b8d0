/* A step of a replay as a value: the phase and, for a process cycle, its frame number and the
 * frame directory it read. Steps are named by the directory they read, never parsed back. */
#ifndef ISP_CASE_STEP_H
#define ISP_CASE_STEP_H

#include <string>

namespace isp_case {

enum class phase { setup, frame, teardown };

struct step_id {
    phase kind = phase::setup;
    int number = 0; /* frame N; 0 for setup and teardown */
    int dir    = 0; /* the frame directory read: N, or the last one when read again; 0 for setup */
};

/* "setup", "frame", "teardown": the manifest's spelling of a phase */
inline const char *phase_name(phase kind) {
    return kind == phase::setup ? "setup" : kind == phase::teardown ? "teardown" : "frame";
}

/* "setup", "frame 3", "frame 5 (f3 again)", "teardown" */
inline std::string step_name(const step_id &step) {
    if (step.kind != phase::frame) return phase_name(step.kind);
    std::string name = "frame " + std::to_string(step.number);
    if (step.dir != step.number) name += " (f" + std::to_string(step.dir) + " again)";
    return name;
}

/* The step's directory in a dump: "setup", "frame3", "teardown" */
inline std::string step_dir(const step_id &step) {
    if (step.kind != phase::frame) return phase_name(step.kind);
    return "frame" + std::to_string(step.number);
}

}  // namespace isp_case

#endif
