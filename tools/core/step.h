/* A step of a replay as a value: setup (register, create, init), one process/trigger/sync cycle
 * per frame, teardown (deinit, destroy). A step is named by the frame directory it read, so that
 * "frame 3" is the cycle that read cfgs/f3 in every output, and a cycle that reads the last
 * directory again says so. Printers name steps from the value; nothing parses a name back. */
#ifndef ISP_CASE_STEP_H
#define ISP_CASE_STEP_H

#include <string>

namespace isp_case {

enum class phase { setup, frame, teardown };

struct step_id {
    phase kind = phase::setup;
    int number = 0; /* the cycle, 1 for the first process; 0 for setup and teardown */
    int dir    = 0; /* the frame directory read: number, or the last one when read again */

    bool again() const { return kind == phase::frame && dir != number; }
    bool operator==(const step_id &o) const {
        return kind == o.kind && number == o.number && dir == o.dir;
    }
    bool operator!=(const step_id &o) const { return !(*this == o); }
};

step_id setup_step();
step_id teardown_step();
/* The cycle `number` (1-based) of a case whose last frame directory is cfgs/f<last_dir>: init
 * read f0, every cycle the next directory while there is one, then the last one again. */
step_id frame_step(int number, int last_dir);

const char *phase_name(phase kind); /* "setup", "frame", "teardown" */
/* "setup", "frame 3", "frame 5 (f3 again)", "teardown" */
std::string step_name(const step_id &step);
/* The step's directory in a dump: "setup", "frame3", "teardown". */
std::string step_dir(const step_id &step);
/* The register files a step read, relative to the case: "cfgs/f3"; "" for teardown. */
std::string step_files(const step_id &step);

}  // namespace isp_case

#endif
