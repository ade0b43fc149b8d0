/* Shared helpers of the test suite: temporary case directories, captured standard error, the
 * simulated platform's records and modules run on a pipeline context wired to it. */
#ifndef ISP_TEST_SUPPORT_H
#define ISP_TEST_SUPPORT_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <picojson.h>

#include "isp_framework.h"
#include "isp_sim.h"

namespace isp_test {

/* A fresh directory under the system's temporary directory, removed with everything in it. */
class temp_dir {
  public:
    temp_dir();
    ~temp_dir();
    temp_dir(const temp_dir &)            = delete;
    temp_dir &operator=(const temp_dir &) = delete;

    const std::string &path() const { return path_; }
    /* Writes text to path()/relative, creating the directories on the way; returns the path. */
    std::string write(const std::string &relative, const std::string &text) const;
    std::string mkdir(const std::string &relative) const;

  private:
    std::string path_;
};

std::string read_file(const std::string &path);
/* A fixture under tests/data ("wbc/rtl_wbc_p0.json"); parse_object fails the test on bad JSON. */
std::string data_text(const std::string &relative);
picojson::object parse_object(const std::string &text);
inline picojson::object data_object(const std::string &relative) {
    return parse_object(data_text(relative));
}
inline std::string serialized(const picojson::object &object) {
    return picojson::value(object).serialize();
}
std::vector<std::string> split_lines(const std::string &text);

/* What body writes to standard error (captured at the descriptor level), whole or by line. */
std::string stderr_of(const std::function<void()> &body);
inline std::vector<std::string> stderr_lines_of(const std::function<void()> &body) {
    return split_lines(stderr_of(body));
}
/* The converters' report of each field of one register, in the order given, times times. */
void add_failed(std::vector<std::string> &lines, const std::string &reg,
                const std::vector<std::string> &fields, int times = 1);

/* What the std::runtime_error raised by body says, "no exception" when it returns. */
std::string runtime_error_of(const std::function<void()> &body);
/* picojson's text for a checked access that finds another type ("object", "array", "double"). */
std::string type_error(const char *type);

std::string format(const char *fmt, ...) __attribute__((format(printf, 1, 2)));
/* A module's error report: "[E][%32s][%4d]: Error [%x]: %s\n". */
std::string error_line(const std::string &function, int line, uint32_t code,
                       const std::string &text);
/* The last log line, which must be the one at index: level, tag "ISP", flag 1 and text. */
void expect_log(size_t index, const std::string &text, int32_t level = 3);

/* The bytes of a driver structure as the wrapper receives them. */
template <typename T>
std::vector<uint8_t> bytes_of(const T &value) {
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(&value);
    return std::vector<uint8_t>(bytes, bytes + sizeof value);
}

/* Clears a structure in place, padding included (a copy need not keep padding bytes). */
template <typename T>
void clear(T &value) {
    memset(&value, 0, sizeof value);
}

/* A member array's codes, for comparing with a written-out table. */
template <typename T, size_t N>
std::vector<uint32_t> codes(const T (&member)[N]) {
    return std::vector<uint32_t>(member, member + N);
}

/* A recorded structure or record copied into out, which is cleared in place first. */
template <typename T>
void copy_bytes(const std::vector<uint8_t> &bytes, T &out) {
    clear(out);
    EXPECT_EQ(bytes.size(), sizeof out);
    memcpy(&out, bytes.data(), bytes.size() < sizeof out ? bytes.size() : sizeof out);
}

/* The simulated platform's records. */
std::vector<std::string> names_of(const std::vector<isp_sim::call> &calls);
std::vector<isp_sim::call> calls_since(size_t mark);
/* Setup calls in order: all of them, or those of one command. */
inline std::vector<isp_sim::call> pushes() {
    return isp_sim::calls_of("vin_hal_wrapper_setup");
}
std::vector<isp_sim::call> pushes_with(uint32_t cmd);
std::vector<uint32_t> commands_of(const std::vector<isp_sim::call> &calls);

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

/* A pipeline context with a grid, a case path and its own register shadow. */
struct pipe {
    PipeContext ctx{};
    IspRegShadow shadow{};
    pipe(uint8_t part_h, uint8_t part_v, const std::string &case_path, int32_t channels = 1);
    JsonModuleHandle handle(uint32_t trigger_arg = 0);
};

typedef int32_t (*register_fn)(JsonModuleOps **);
JsonModuleOps *ops_of(register_fn reg);

/* One module instance on a pipe: the operations its registration hands out and its handle. */
struct module_instance {
    module_instance(register_fn reg, pipe &p, uint32_t trigger_arg = 0)
        : ops(ops_of(reg)), h(p.handle(trigger_arg)) {}
    JsonModuleOps *ops;
    JsonModuleHandle h;

    int32_t create() { return ops->create(&h); }
    int32_t destroy() { return ops->destroy(&h); }
    int32_t init() { return ops->init(&h); }
    int32_t deinit() { return ops->deinit(&h); }
    int32_t process() { return ops->process(&h); }
    int32_t trigger() { return ops->trigger(&h); }
    int32_t sync() { return ops->sync(&h); }
    template <typename Context>
    Context *context() const {
        return static_cast<Context *>(h.priv);
    }
    /* The first word of every context: the wrapper handle. */
    uint32_t wrapper() const { return *context<uint32_t>(); }
};

/* Replays one module over case_dir on a fresh simulated platform: create, init, deinit and
 * destroy with no problem seen by the platform. Returns the setup calls of init. */
std::vector<isp_sim::call> replay(register_fn reg, const temp_dir &case_dir, uint8_t part_h = 1,
                                  uint8_t part_v = 1, int32_t channels = 1);

/* A fresh simulated platform per test, log lines not echoed; at the end the platform must have
 * seen no problem but the expected ones. */
class platform_test : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
    /* Captures standard error until the end of the test. */
    void quiet_stderr();
    /* Writes text as cfgs/f<frame>/<name> of the case. */
    std::string frame_file(int frame, const std::string &name, const std::string &text) const;

    temp_dir case_dir;
    std::vector<std::string> expected_problems;

  private:
    bool quiet_ = false;
};

}  // namespace isp_test

#endif
