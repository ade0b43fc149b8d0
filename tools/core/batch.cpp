/* The batch: cases found and sharded, a pool of child processes read through one pipe each, and
 * the reports. A child is a fork of this process that runs one stage of one case and exits, so a
 * register file that ends a replay ends only that child. */
#include "tools/core/batch.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <stdio_ext.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <map>
#include <sstream>

#include <fmt/format.h>

#include "tools/core/case_layout.h"
#include "tools/core/findings.h"
#include "tools/core/settings.h"
#include "tools/output/escape.h"
#include "tools/output/files.h"
#include "tools/output/json.h"

namespace isp_case {
namespace {

namespace fs     = std::filesystem;
using clock_type = std::chrono::steady_clock;

const size_t k_output_kept = 64 * 1024; /* per stage: the end of what its process wrote */
const size_t k_tail_lines  = 40;        /* lines of output a failure carries */
const int k_max_depth      = 32;        /* directory levels searched under a path */
const size_t k_name_column = 40;        /* longer case names push the rest of their line */
const size_t k_named       = 3;         /* findings a failure reason names */

/* A stopped batch gives its children this long to end on SIGTERM before they are killed. */
const std::chrono::seconds k_grace(2);

/* The signal that asks the batch to stop (SIGINT, SIGTERM), and the pipe whose write end the
 * handler writes into, so that a poll under way wakes up. */
volatile sig_atomic_t g_stop_signal = 0;
volatile int g_wake_fd              = -1;

extern "C" void ask_to_stop(int signal_number) {
    g_stop_signal   = signal_number;
    const int saved = errno;
    if (g_wake_fd >= 0 && write(g_wake_fd, "", 1) < 0) {
    }
    errno = saved;
}

/* From construction to destruction SIGINT and SIGTERM stop the batch instead of ending it, and a
 * closed standard output is an error of the write (EPIPE) rather than a signal. */
class stop_requests {
  public:
    stop_requests() {
        g_stop_signal = 0;
        if (pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) wake_[0] = wake_[1] = -1;
        g_wake_fd = wake_[1];
        struct sigaction action {};
        action.sa_handler = ask_to_stop;
        sigemptyset(&action.sa_mask);
        sigaction(SIGINT, &action, &previous_[0]);
        sigaction(SIGTERM, &action, &previous_[1]);
        action.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &action, &previous_[2]);
    }
    ~stop_requests() {
        sigaction(SIGINT, &previous_[0], nullptr);
        sigaction(SIGTERM, &previous_[1], nullptr);
        sigaction(SIGPIPE, &previous_[2], nullptr);
        g_wake_fd = -1;
        for (int fd : wake_)
            if (fd >= 0) close(fd);
    }
    stop_requests(const stop_requests &)            = delete;
    stop_requests &operator=(const stop_requests &) = delete;

    int wake_fd() const { return wake_[0]; }
    static int signal() { return g_stop_signal; }
    /* In a child: the signals as a process starts with them. */
    static void reset_in_child() {
        signal_default(SIGINT), signal_default(SIGTERM), signal_default(SIGPIPE);
    }

  private:
    static void signal_default(int number) {
        struct sigaction action {};
        action.sa_handler = SIG_DFL;
        sigemptyset(&action.sa_mask);
        sigaction(number, &action, nullptr);
    }
    int wake_[2] = {-1, -1};
    struct sigaction previous_[3];
};

/* Writes a line of the batch's own output; false once the output is gone (a closed pipe, a full
 * disk), so that the batch stops instead of running cases nobody sees. */
bool emit(std::FILE *out, const std::string &text) {
    if (std::fputs(text.c_str(), out) >= 0 && std::fflush(out) == 0 && !std::ferror(out))
        return true;
    /* the batch says so itself; nothing is left to fail again at exit */
    __fpurge(out);
    clearerr(out);
    return false;
}

const char *stage_name(batch_stage stage) {
    return enum_name(batch_stage_names, stage);
}

/* Directories are entered by their real path once per route: a link back to a directory the
 * route already passed through (a loop) is not followed. */
void search(const fs::path &dir, const fs::path &root, const std::string &given, int depth,
            std::vector<fs::path> &route, std::vector<batch_case> &cases) {
    std::error_code error;
    const fs::path real = fs::canonical(dir, error);
    if (error || std::find(route.begin(), route.end(), real) != route.end()) return;
    if (is_directory((dir / "cfgs").string())) {
        cases.push_back(
            {dir.string(), dir == root ? given : dir.lexically_relative(root).string()});
        return;
    }
    if (depth >= k_max_depth) return;
    route.push_back(real);
    fs::directory_iterator it(dir, fs::directory_options::skip_permission_denied, error), end;
    for (; !error && it != end; it.increment(error))
        if (it->is_directory(error)) search(it->path(), root, given, depth + 1, route, cases);
    route.pop_back();
}

/* One stage of one case: the process that runs it and what it wrote. */
struct stage_run {
    pid_t pid       = -1;
    int fd          = -1;
    int wait_status = -1;             /* as waitpid gives it; -1: not run */
    std::string output;               /* the last k_output_kept bytes at least */
    bool cut               = false;   /* the beginning of the output was dropped */
    std::FILE *report_file = nullptr; /* where the child writes its report, unlinked */
    stage_report report;
    bool reported = false; /* the child wrote a report that could be read */
};

struct case_run {
    const batch_case *c = nullptr;
    stage_run stages[2];
    int stage = 0; /* the stage running or next to run; 2 when done */
    clock_type::time_point start;
    double seconds   = 0;
    bool passed      = false;
    bool timed_out   = false;        /* killed at the time limit */
    bool interrupted = false;        /* not finished when the batch was stopped */
    size_t errors = 0, warnings = 0; /* of the last stage that judged the case */
    std::string reason;
    baseline_outcome baseline; /* as the replay reported it */
};

const char *failure_type(const case_run &r) {
    return r.interrupted ? "interrupted" : r.timed_out ? "timed out" : "failed";
}

/* ---- the children's reports: JSON in an unlinked file each, read once the child is reaped ---- */

std::FILE *open_report_file() {
    return std::tmpfile();
}

void close_report_file(stage_run &s) {
    if (s.report_file) std::fclose(s.report_file);
    s.report_file = nullptr;
}

/* In the child: the report, written through the descriptor it shares with the batch. */
void send_report(std::FILE *file, const stage_report &report) {
    if (!file) return;
    const std::string text = stage_report_json(report).serialize();
    const int fd           = fileno(file);
    for (size_t done = 0; done < text.size();) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        done += size_t(n);
    }
}

/* In the batch, after the child ended: its report, when it wrote one that parses. */
void receive_report(stage_run &s) {
    if (!s.report_file) return;
    std::string text;
    char buffer[16384];
    std::rewind(s.report_file); /* the child's writes moved the offset both share */
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, s.report_file)) > 0;)
        text.append(buffer, n);
    close_report_file(s);
    /* parsed from the bytes (not the string's iterators): the library's reader keeps the one
     * instantiation of picojson's parser over strings that the tool links */
    picojson::value value;
    std::string error;
    picojson::parse(value, text.data(), text.data() + text.size(), &error);
    s.reported = error.empty() && stage_report_from_json(value, s.report);
}

/* Errors and warnings of a case: the replay's record holds the check's findings too, so the
 * last stage that judged the case counts them all. */
void count_case(case_run &r) {
    for (const stage_run &s : r.stages)
        if (s.reported && s.report.judged) {
            r.errors   = s.report.run.errors;
            r.warnings = s.report.run.warnings;
        }
}

/* "ok", "ok (2 warnings)", "FAILED" */
std::string case_result(const case_run &r) {
    if (!r.passed) return "FAILED";
    return r.warnings ? fmt::format("ok ({})", counted(r.warnings, "warning")) : "ok";
}

/* Starts one stage of one case in a child process whose standard output and error go into a
 * pipe; false when no process could be started. */
bool spawn(const stage_runner &run, batch_stage stage, const batch_case &c, stage_run &s) {
    int ends[2];
    if (pipe(ends) != 0) return false;
    s.report_file = open_report_file();
    std::fflush(nullptr); /* nothing buffered may be written twice */
    s.pid = fork();
    if (s.pid < 0) {
        close(ends[0]);
        close(ends[1]);
        close_report_file(s);
        return false;
    }
    if (s.pid == 0) {
        close(ends[0]);
        stop_requests::reset_in_child();
        const int null_fd = open("/dev/null", O_RDONLY);
        if (null_fd >= 0) dup2(null_fd, STDIN_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
        stage_report report;
        const int status = run(stage, c, report);
        std::fflush(nullptr);
        send_report(s.report_file, report);
        _exit(status);
    }
    close(ends[1]);
    s.fd = ends[0];
    return true;
}

/* " (A; B; C; and 4 more)": the findings not named yet, at most k_named of them. */
std::string named_findings(const stage_report &report, const std::string &case_path,
                           std::vector<std::string> &named) {
    const std::string prefix = terminal_text(case_path) + "/";
    std::vector<std::string> fresh;
    for (const finding &f : report.findings) {
        /* the replay's entry of a fault the check named, with the replay's steps, is not new */
        finding fault = f;
        fault.places.clear();
        std::string key = finding_line(fault), line = finding_line(f);
        if (line.rfind(prefix, 0) == 0) line = line.substr(prefix.size());
        if (std::find(named.begin(), named.end(), key) == named.end()) {
            fresh.push_back(line);
            named.push_back(key);
        }
    }
    const size_t more = fresh.size() - std::min(fresh.size(), k_named) + report.findings_not_listed;
    if (fresh.empty() && more == 0) return "";
    std::string text;
    for (size_t i = 0; i < fresh.size() && i < k_named; ++i) text += (i ? "; " : "") + fresh[i];
    if (more) text += fmt::format("{}and {} more", text.empty() ? "" : "; ", more);
    return " (" + text + ")";
}

/* Why a stage failed, "" when it passed; the findings it names are added to named, so that a
 * later stage names only new ones. */
std::string stage_reason(batch_stage stage, const stage_run &s, const std::string &case_path,
                         std::vector<std::string> &named) {
    const char *name = stage_name(stage);
    const int st     = s.wait_status;
    if (st == -1) return fmt::format("{}: no process could be started", name);
    if (WIFSIGNALED(st))
        return fmt::format("{} ended by signal {} ({})", name, WTERMSIG(st),
                           strsignal(WTERMSIG(st)));
    const int code = WEXITSTATUS(st);
    if (code == exit_ok) return "";
    if (code == exit_failed && s.reported && s.report.judged)
        return fmt::format("{}: {}{}", name, s.report.run.counts_text(),
                           named_findings(s.report, case_path, named));
    /* the problem that stopped it before it could judge anything */
    const std::string problem = s.reported ? s.report.problem : "";
    if (code == exit_failed)
        return fmt::format("{}: {}", name, problem.empty() ? "failed" : problem);
    if (code == exit_no_case)
        return fmt::format("{}: {}", name, problem.empty() ? "no usable case" : problem);
    return fmt::format("{} exited with status {}", name, code);
}

/* The last lines of both stages' output, each under the command that wrote it. */
std::string output_tail(const case_run &r, const batch_settings &settings) {
    std::string text;
    for (int i = 0; i < 2; ++i) {
        const stage_run &s = r.stages[i];
        if (s.wait_status == -1 && s.output.empty()) continue;
        text += fmt::format("$ isp-case {} {}{}{}\n", stage_name(batch_stage(i)), r.c->path,
                            i == 1 ? " -q" : "",
                            settings.frames ? fmt::format(" --frames {}", *settings.frames) : "");
        text += (s.cut ? "...\n" : "") + s.output;
        if (!s.output.empty() && s.output.back() != '\n') text += '\n';
    }
    size_t at = text.size(), lines = 0;
    while (at > 0 && lines <= k_tail_lines) {
        at = text.rfind('\n', at - 1);
        if (at == std::string::npos) return text;
        ++lines;
    }
    return lines > k_tail_lines ? "...\n" + text.substr(at + 1) : text;
}

double rounded(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

std::string utc_timestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    return text;
}

std::string suite_name(const batch_settings &settings) {
    return settings.shard_count > 1 ? fmt::format("isp-case batch (shard {}/{})",
                                                  settings.shard_index, settings.shard_count)
                                    : std::string("isp-case batch");
}

bool write_junit(const std::string &path, const batch_settings &settings,
                 const std::vector<case_run> &runs, double seconds) {
    std::vector<junit_case> cases;
    for (const case_run &r : runs) {
        junit_case c;
        c.name = r.c->name, c.seconds = r.seconds, c.errors = r.errors, c.warnings = r.warnings;
        if (!r.passed)
            c.failure_type = failure_type(r), c.reason = r.reason,
            c.output = output_tail(r, settings);
        cases.push_back(std::move(c));
    }
    std::string error;
    return write_text_file(path, junit_document(suite_name(settings), cases, seconds), error);
}

/* What the stage's child reported: its verdict and counts, null when it reported none. */
json_fields &report_members(const stage_run &s, json_fields &o) {
    if (!s.reported || !s.report.judged)
        return o.add_null("verdict").add_null("errors").add_null("warnings");
    return o.add("verdict", s.report.run.text())
        .add("errors", s.report.run.errors)
        .add("warnings", s.report.run.warnings);
}

json_fields json_stage(const stage_run &s) {
    json_fields o;
    if (s.wait_status != -1 && WIFEXITED(s.wait_status))
        o.add("exit_status", WEXITSTATUS(s.wait_status)).add_null("signal");
    else if (s.wait_status != -1)
        o.add_null("exit_status").add("signal", WTERMSIG(s.wait_status));
    else
        o.add_null("exit_status").add_null("signal");
    return report_members(s, o);
}

/* The suite beyond this run's cases: what merge needs to put shards together (the suite's
 * identity and every case's name) and the baseline's cases the suite lacks. */
struct suite_facts {
    const std::vector<batch_case> *found = nullptr;
    std::vector<std::string> only_in_baseline;
};

json_fields baseline_json(const batch_settings &settings, const suite_facts &suite,
                          const std::vector<case_run> &runs) {
    std::vector<std::string> rewritten;
    for (const case_run &r : runs)
        if (r.baseline.state == baseline_state::updated ||
            r.baseline.state == baseline_state::added)
            rewritten.push_back(r.c->name);
    return json_fields()
        .add("dir", settings.baseline.dir)
        .add("mode", enum_name(baseline_mode_names, settings.baseline.mode))
        .add("tolerance", settings.baseline.tolerance)
        .add("ignore", json_texts(settings.baseline.ignore))
        .add("update", settings.baseline.update)
        .add("only_in_baseline", json_texts(suite.only_in_baseline))
        .add("rewritten", json_texts(rewritten));
}

/* The cases a baseline holds that the suite (all of it, not only this shard) lacks. */
std::vector<std::string> only_in_baseline(const std::string &dir,
                                          const std::vector<batch_case> &found) {
    std::vector<std::string> names;
    const size_t root = dir.size() + 1;
    for (const batch_case &c : found) names.push_back(baseline_case_dir(dir, c.name).substr(root));
    std::sort(names.begin(), names.end());
    std::vector<std::string> extra;
    for (const std::string &stored : baseline_cases(dir))
        if (!std::binary_search(names.begin(), names.end(), stored)) extra.push_back(stored);
    return extra;
}

/* The summary's lines about the baseline: where it went, what was rewritten, what the suite
 * lacks. */
std::string baseline_summary(const batch_settings &settings, const suite_facts &suite,
                             const std::vector<case_run> &runs) {
    const baseline_settings &b = settings.baseline;
    if (b.mode == baseline_mode::none) return "";
    std::string text;
    for (const std::string &name : suite.only_in_baseline)
        text += fmt::format("  failed      {}: in the baseline, not in the suite\n",
                            terminal_text(name));
    text += fmt::format("  baseline    {} {}\n",
                        b.mode == baseline_mode::save ? "saved into" : "compared with",
                        terminal_text(b.dir));
    std::vector<std::string> rewritten;
    for (const case_run &r : runs)
        if (r.baseline.state == baseline_state::updated ||
            r.baseline.state == baseline_state::added)
            rewritten.push_back(fmt::format("{} ({})", terminal_text(r.c->name),
                                            enum_name(baseline_state_names, r.baseline.state)));
    if (!rewritten.empty()) text += fmt::format("  rewritten   {}\n", fmt::join(rewritten, ", "));
    return text;
}

bool write_json(const std::string &path, const batch_settings &settings,
                const std::vector<case_run> &runs, const suite_facts &suite, double seconds) {
    const size_t found = suite.found->size();
    size_t passed = 0, warned = 0, interrupted = 0;
    std::vector<json_fields> cases;
    for (const case_run &r : runs) {
        passed += r.passed;
        warned += r.passed && r.warnings;
        interrupted += r.interrupted;
        json_fields o;
        o.add("name", r.c->name)
            .add("path", r.c->path)
            .add("result", r.passed ? "passed" : failure_type(r));
        o.add("errors", r.errors).add("warnings", r.warnings).add("verdict", case_result(r));
        o.add("reason", r.reason).add("seconds", rounded(r.seconds));
        o.add("check", json_stage(r.stages[0])).add("replay", json_stage(r.stages[1]));
        if (r.baseline.state != baseline_state::none)
            o.add("baseline", baseline_outcome_json(r.baseline));
        else
            o.add_null("baseline");
        o.add("output_tail", r.passed ? "" : output_tail(r, settings));
        cases.push_back(o);
    }
    json_fields o;
    o.add("type", "batch").add("paths", json_texts(settings.paths));
    if (settings.shard_count > 1)
        o.add("shard",
              json_fields().add("index", settings.shard_index).add("count", settings.shard_count));
    else
        o.add_null("shard");
    if (settings.frames)
        o.add("frames", *settings.frames);
    else
        o.add_null("frames");
    o.add("strict", settings.strict).add("sets", json_texts(settings.sets));
    o.add("cases_found", found);
    std::vector<std::string> names;
    for (const batch_case &c : *suite.found) names.push_back(c.name);
    o.add("suite", json_fields().add("id", suite_id(*suite.found)).add("cases", json_texts(names)));
    if (settings.baseline.mode != baseline_mode::none)
        o.add("baseline", baseline_json(settings, suite, runs));
    else
        o.add_null("baseline");
    o.add("cases", cases);
    const bool ok = passed == runs.size() && suite.only_in_baseline.empty();
    o.add("summary", json_fields()
                         .add("cases", runs.size())
                         .add("passed", passed)
                         .add("failed", runs.size() - passed - interrupted)
                         .add("interrupted", interrupted)
                         .add("passed_with_warnings", warned)
                         .add("seconds", rounded(seconds))
                         .add("result", ok ? "ok" : "failed")
                         .add("exit_status", ok ? exit_ok : exit_failed));
    std::string error;
    return write_text_file(path, o.serialize() + "\n", error);
}

/* Runs every case, at most jobs at a time, and prints a line for each as it finishes; a case
 * over its time limit is killed; a stop request or a closed output ends the children under way,
 * which are reaped, and leaves the cases not finished marked interrupted. */
class pool {
  public:
    pool(const batch_settings &settings, const stage_runner &run, std::vector<case_run> &runs,
         std::FILE *out, size_t name_width, const stop_requests &stop)
        : settings_(settings), run_(run), runs_(runs), out_(out), width_(name_width), stop_(stop) {}

    void run(size_t jobs) {
        size_t next = 0;
        while ((next < runs_.size() || !active_.empty()) && !stopping()) {
            while (next < runs_.size() && active_.size() < jobs && !stopping()) {
                runs_[next].start = clock_type::now();
                start_stage(next++);
            }
            if (!active_.empty() && !stopping()) wait_for_output();
            kill_overdue();
        }
        if (!stopping()) return;
        end_children();
        for (case_run &r : runs_) {
            if (r.stage >= 2) continue;
            r.interrupted = true;
            r.reason      = stop_reason();
        }
    }

    bool output_closed() const { return output_closed_; }
    std::string stop_reason() const {
        const int signal = stop_.signal();
        return signal ? fmt::format("interrupted by {}", signal == SIGINT ? "SIGINT" : "SIGTERM")
                      : std::string("interrupted: the output was closed");
    }

  private:
    bool stopping() const { return stop_.signal() != 0 || output_closed_; }

    /* Starts the current stage of a case, or finishes the case when none is left. */
    void start_stage(size_t index) {
        case_run &r = runs_[index];
        while (r.stage < 2 && !r.timed_out) {
            stage_run &s = r.stages[r.stage];
            if (spawn(run_, batch_stage(r.stage), *r.c, s)) {
                active_.push_back(index);
                return;
            }
            ++r.stage; /* recorded as not started */
        }
        r.stage = 2;
        finish(r);
    }

    clock_type::time_point deadline(const case_run &r) const {
        return r.start + std::chrono::seconds(settings_.timeout);
    }

    /* Milliseconds until the first case under way reaches its limit; -1 without a limit. */
    int poll_timeout() const {
        if (settings_.timeout <= 0) return -1;
        long long first = -1;
        for (size_t index : active_) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                                  deadline(runs_[index]) - clock_type::now())
                                  .count();
            first = first < 0 ? std::max(0LL, (long long)left) : std::min(first, (long long)left);
        }
        return first < 0 ? -1 : int(std::min(std::max(first, 0LL) + 1, 60000LL));
    }

    /* The process of a case over its limit is killed; its output then ends and it is reaped as
     * any other. */
    void kill_overdue() {
        if (settings_.timeout <= 0) return;
        const clock_type::time_point now = clock_type::now();
        for (size_t index : active_) {
            case_run &r = runs_[index];
            if (r.timed_out || now < deadline(r)) continue;
            r.timed_out = true;
            kill(r.stages[r.stage].pid, SIGKILL);
        }
    }

    void wait_for_output() {
        std::vector<pollfd> fds;
        for (size_t index : active_) {
            const case_run &r = runs_[index];
            fds.push_back({r.stages[r.stage].fd, POLLIN, 0});
        }
        fds.push_back({stop_.wake_fd(), POLLIN, 0});
        if (poll(fds.data(), fds.size(), poll_timeout()) < 0 && errno != EINTR) return;
        std::vector<size_t> still;
        for (size_t i = 0; i < active_.size(); ++i) {
            const size_t index = active_[i];
            if (fds[i].revents == 0 || read_some(runs_[index].stages[runs_[index].stage])) {
                still.push_back(index);
                continue;
            }
            case_run &r = runs_[index];
            ++r.stage;
            finished_stage_.push_back(index);
        }
        active_ = still;
        for (size_t index : finished_stage_) start_stage(index);
        finished_stage_.clear();
    }

    /* SIGTERM to every child under way, SIGKILL to those still there after the grace; every
     * one is reaped. What they wrote meanwhile is kept. */
    void end_children() {
        for (size_t index : active_) kill(runs_[index].stages[runs_[index].stage].pid, SIGTERM);
        const clock_type::time_point killed_after = clock_type::now() + k_grace;
        bool killed                               = false;
        while (!active_.empty()) {
            if (!killed && clock_type::now() >= killed_after) {
                for (size_t index : active_)
                    kill(runs_[index].stages[runs_[index].stage].pid, SIGKILL);
                killed = true;
            }
            std::vector<pollfd> fds;
            for (size_t index : active_)
                fds.push_back({runs_[index].stages[runs_[index].stage].fd, POLLIN, 0});
            if (poll(fds.data(), fds.size(), killed ? -1 : 100) < 0 && errno != EINTR) break;
            std::vector<size_t> still;
            for (size_t i = 0; i < active_.size(); ++i) {
                stage_run &s = runs_[active_[i]].stages[runs_[active_[i]].stage];
                if (fds[i].revents == 0 || read_some(s)) still.push_back(active_[i]);
            }
            active_ = still;
        }
    }

    /* Reads what is there; false at the end of the output, once the process is reaped. */
    static bool read_some(stage_run &s) {
        char buffer[16384];
        const ssize_t n = read(s.fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) return true;
        if (n > 0) {
            s.output.append(buffer, size_t(n));
            if (s.output.size() > 2 * k_output_kept) {
                s.output.erase(0, s.output.size() - k_output_kept);
                s.cut = true;
            }
            return true;
        }
        close(s.fd);
        s.fd = -1;
        while (waitpid(s.pid, &s.wait_status, 0) < 0 && errno == EINTR) {
        }
        return false;
    }

    void finish(case_run &r) {
        r.seconds = std::chrono::duration<double>(clock_type::now() - r.start).count();
        for (stage_run &s : r.stages) receive_report(s);
        count_case(r);
        std::string reasons;
        std::vector<std::string> named;
        const int last_run = r.stages[1].wait_status != -1 ? 1 : 0;
        for (int i = 0; i < 2; ++i) {
            if (r.timed_out && i == last_run) {
                reasons += fmt::format("{}{}: timed out after {} s", reasons.empty() ? "" : "; ",
                                       stage_name(batch_stage(i)), settings_.timeout);
                break;
            }
            const std::string reason = stage_reason(batch_stage(i), r.stages[i], r.c->path, named);
            if (!reason.empty()) reasons += (reasons.empty() ? "" : "; ") + reason;
        }
        const stage_run &replay = r.stages[1];
        if (replay.reported) {
            r.baseline                 = replay.report.baseline;
            const std::string baseline = baseline_reason(r.baseline);
            if (!baseline.empty()) reasons += (reasons.empty() ? "" : "; ") + baseline;
        }
        r.reason = reasons;
        r.passed = reasons.empty();
        if (!output_closed_ &&
            !emit(out_, fmt::format("{:<6}  {:<{}}  {:7.2f} s{}\n", case_result(r),
                                    terminal_text(r.c->name), width_, r.seconds,
                                    r.passed ? "" : "  " + terminal_text(r.reason))))
            output_closed_ = true;
    }

    const batch_settings &settings_;
    const stage_runner &run_;
    std::vector<case_run> &runs_;
    std::FILE *out_;
    size_t width_;
    const stop_requests &stop_;
    bool output_closed_ = false;
    std::vector<size_t> active_, finished_stage_;
};

}  // namespace

std::string junit_document(const std::string &suite, const std::vector<junit_case> &cases,
                           double seconds) {
    size_t failures = 0;
    for (const junit_case &c : cases) failures += !c.failure_type.empty();
    std::ostringstream out;
    const std::string name = markup_escape(suite, markup_context::attribute);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    out << fmt::format(
        "<testsuites name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"0\" "
        "time=\"{:.3f}\">\n",
        name, cases.size(), failures, seconds);
    out << fmt::format(
        "  <testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"0\" "
        "skipped=\"0\" time=\"{:.3f}\" timestamp=\"{}\">\n",
        name, cases.size(), failures, seconds, utc_timestamp());
    for (const junit_case &c : cases) {
        out << fmt::format("    <testcase name=\"{}\" classname=\"isp-case\" time=\"{:.3f}\"",
                           markup_escape(c.name, markup_context::attribute), c.seconds);
        /* the counts as testcase properties, which CI servers show beside the case */
        out << fmt::format(
            ">\n      <properties><property name=\"errors\" value=\"{}\"/><property "
            "name=\"warnings\" value=\"{}\"/></properties>\n",
            c.errors, c.warnings);
        if (!c.failure_type.empty())
            out << fmt::format("      <failure message=\"{}\" type=\"{}\">{}</failure>\n",
                               markup_escape(c.reason, markup_context::attribute),
                               markup_escape(c.failure_type, markup_context::attribute),
                               markup_escape(c.output));
        out << "    </testcase>\n";
    }
    out << "  </testsuite>\n</testsuites>\n";
    return out.str();
}

std::string suite_id(const std::vector<batch_case> &cases) {
    /* FNV-1a over the names, each ended by a newline: enough to tell suites apart, not a
     * defence against anyone forging one */
    uint64_t hash = 14695981039346656037ull;
    for (const batch_case &c : cases)
        for (const char ch : c.name + "\n") hash = (hash ^ uint8_t(ch)) * 1099511628211ull;
    return fmt::format("{:016x}", hash);
}

void stage_report::judge(const run_record &record, bool strict) {
    judged              = true;
    run                 = isp_case::judge(record, strict);
    findings            = record.findings().kept();
    findings_not_listed = record.findings().not_kept();
}

picojson::value stage_report_json(const stage_report &report) {
    picojson::object o;
    o["problem"] = picojson::value(report.problem);
    if (report.judged) {
        o["verdict"]             = verdict_json(report.run);
        o["findings"]            = findings_json(report.findings);
        o["findings_not_listed"] = picojson::value(double(report.findings_not_listed));
    }
    if (report.baseline.state != baseline_state::none) {
        const std::string text = baseline_outcome_json(report.baseline).serialize();
        picojson::parse(o["baseline"], text.data(), text.data() + text.size(), nullptr);
    }
    return picojson::value(o);
}

bool stage_report_from_json(const picojson::value &value, stage_report &out) {
    if (!value.is<picojson::object>() || !value.get("problem").is<std::string>()) return false;
    stage_report report;
    report.problem = value.get("problem").get<std::string>();
    if (value.contains("verdict")) {
        const picojson::value &findings = value.get("findings"),
                              &more     = value.get("findings_not_listed");
        if (!verdict_from_json(value.get("verdict"), report.run) ||
            !findings.is<picojson::array>() || !more.is<double>())
            return false;
        report.judged              = true;
        report.findings_not_listed = size_t(more.get<double>());
        for (const picojson::value &f : findings.get<picojson::array>()) {
            finding read;
            if (!finding_from_json(f, read)) return false;
            report.findings.push_back(std::move(read));
        }
    }
    if (value.contains("baseline") &&
        !baseline_outcome_from_json(value.get("baseline"), report.baseline))
        return false;
    out = std::move(report);
    return true;
}

bool find_cases(const std::vector<std::string> &paths, std::vector<batch_case> &cases,
                std::string &error) {
    for (std::string given : paths) {
        while (given.size() > 1 && given.back() == '/') given.pop_back();
        if (!is_directory(given)) {
            error = given + ": no such directory";
            return false;
        }
        std::vector<fs::path> route;
        search(fs::path(given), fs::path(given), given, 0, route, cases);
    }
    /* each case once by its real path, under its shortest name (the first in order of those) */
    std::map<fs::path, batch_case> by_real;
    for (const batch_case &c : cases) {
        std::error_code failed;
        const fs::path real    = fs::canonical(c.path, failed);
        auto [it, fresh]       = by_real.emplace(failed ? fs::path(c.path) : real, c);
        const batch_case &kept = it->second;
        if (!fresh &&
            std::make_pair(c.path.size(), c.path) < std::make_pair(kept.path.size(), kept.path))
            it->second = c;
    }
    cases.clear();
    for (const auto &[real, c] : by_real) cases.push_back(c);
    std::sort(cases.begin(), cases.end(),
              [](const batch_case &a, const batch_case &b) { return a.path < b.path; });
    return true;
}

std::vector<batch_case> shard_of(const std::vector<batch_case> &cases, int index, int count) {
    std::vector<batch_case> selected;
    for (size_t i = size_t(index - 1); count > 0 && i < cases.size(); i += size_t(count))
        selected.push_back(cases[i]);
    return selected;
}

bool parse_shard(const std::string &text, int &index, int &count) {
    const size_t slash = text.find('/');
    if (slash == std::string::npos || slash == 0 || slash + 1 == text.size() || text.size() > 15)
        return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (i != slash && (text[i] < '0' || text[i] > '9')) return false;
    index = std::stoi(text.substr(0, slash));
    count = std::stoi(text.substr(slash + 1));
    return index >= 1 && index <= count;
}

int available_processors() {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0 && CPU_COUNT(&set) > 0) return CPU_COUNT(&set);
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? int(online) : 1;
}

namespace {

/* The temporary directory of the batch's children (a --set overlay, a run dumped to be compared
 * with its baseline): one of the batch's own, removed once every child is reaped, so that a
 * child killed at its time limit or by a stop leaves nothing behind. */
class children_tmpdir {
  public:
    children_tmpdir() : dir_("isp-case-batch") {
        if (const char *given = getenv("TMPDIR")) given_ = given, had_ = true;
        if (!dir_.path().empty()) setenv("TMPDIR", dir_.path().c_str(), 1);
    }
    ~children_tmpdir() {
        if (had_)
            setenv("TMPDIR", given_.c_str(), 1);
        else
            unsetenv("TMPDIR");
    }
    children_tmpdir(const children_tmpdir &)            = delete;
    children_tmpdir &operator=(const children_tmpdir &) = delete;

  private:
    scratch_dir dir_;
    std::string given_;
    bool had_ = false;
};

}  // namespace

int run_batch(const batch_settings &settings, const stage_runner &run_stage, std::FILE *out,
              std::FILE *err) {
    std::vector<batch_case> found;
    std::string error;
    if (!find_cases(settings.paths, found, error)) {
        fmt::print(err, "isp-case batch: {}\n", terminal_text(error));
        return exit_no_case;
    }
    if (found.empty()) {
        fmt::print(err, "isp-case batch: no case (a directory holding cfgs/) under {}\n",
                   terminal_text(fmt::format("{}", fmt::join(settings.paths, ", "))));
        return exit_no_case;
    }
    const std::vector<batch_case> cases =
        shard_of(found, settings.shard_index, settings.shard_count);
    const size_t jobs = std::max<size_t>(
        1, std::min<size_t>(cases.size(),
                            size_t(settings.jobs > 0 ? settings.jobs : available_processors())));
    const std::string shard = settings.shard_count > 1
                                  ? fmt::format(" (shard {}/{} of {} cases)", settings.shard_index,
                                                settings.shard_count, found.size())
                                  : "";
    suite_facts suite;
    suite.found = &found;
    if (settings.baseline.mode == baseline_mode::compare)
        suite.only_in_baseline = only_in_baseline(settings.baseline.dir, found);
    const stop_requests stop;
    bool output_ok =
        emit(out, fmt::format("batch of {}{}, {} at a time\n\n",
                              cases.size() == 1 ? "1 case" : fmt::format("{} cases", cases.size()),
                              shard, jobs));

    std::vector<case_run> runs(cases.size());
    size_t width = 4;
    for (size_t i = 0; i < cases.size(); ++i) {
        runs[i].c = &cases[i];
        width     = std::min(k_name_column, std::max(width, cases[i].name.size()));
    }
    const clock_type::time_point start = clock_type::now();
    const children_tmpdir tmpdir;
    pool workers(settings, run_stage, runs, out, width, stop);
    if (output_ok) workers.run(jobs);
    output_ok            = output_ok && !workers.output_closed();
    const double seconds = std::chrono::duration<double>(clock_type::now() - start).count();
    const bool stopped   = stop.signal() != 0 || !output_ok;
    if (!output_ok)
        for (case_run &r : runs)
            if (r.stage < 2) r.interrupted = true, r.reason = workers.stop_reason();

    size_t passed = 0, warned = 0, interrupted = 0;
    for (const case_run &r : runs) {
        passed += r.passed;
        warned += r.passed && r.warnings;
        interrupted += r.interrupted;
    }
    std::string text =
        fmt::format("\nsummary\n  cases       {} run{}, {} passed{}, {} failed{}\n", cases.size(),
                    shard, passed, warned ? fmt::format(" ({} with warnings)", warned) : "",
                    cases.size() - passed - interrupted,
                    interrupted ? fmt::format(", {} interrupted", interrupted) : "");
    for (const case_run &r : runs)
        if (!r.passed && !r.interrupted)
            text += fmt::format("  failed      {}: {}\n", terminal_text(r.c->name),
                                terminal_text(r.reason));
    for (const std::string &set : settings.sets)
        text += fmt::format("  set         {}\n", terminal_text(set));
    text += baseline_summary(settings, suite, runs);
    bool written = true;
    if (!settings.junit_file.empty()) {
        const bool ok = write_junit(settings.junit_file, settings, runs, seconds);
        text += fmt::format("  junit       {}{}\n", terminal_text(settings.junit_file),
                            ok ? "" : ": cannot be written");
        if (!ok)
            fmt::print(err, "isp-case batch: {}: cannot be written\n",
                       terminal_text(settings.junit_file));
        written = written && ok;
    }
    if (!settings.json_file.empty()) {
        const bool ok = write_json(settings.json_file, settings, runs, suite, seconds);
        text += fmt::format("  json        {}{}\n", terminal_text(settings.json_file),
                            ok ? "" : ": cannot be written");
        if (!ok)
            fmt::print(err, "isp-case batch: {}: cannot be written\n",
                       terminal_text(settings.json_file));
        written = written && ok;
    }
    const bool ok = passed == cases.size() && suite.only_in_baseline.empty() && written && !stopped;
    text += fmt::format("  result      {}\n", ok ? "ok" : "FAILED");
    if (output_ok) output_ok = emit(out, text);
    if (stopped || !output_ok)
        fmt::print(err, "isp-case batch: {}: {} of {} cases finished\n",
                   !output_ok ? std::string("standard output closed") : workers.stop_reason(),
                   cases.size() - interrupted, cases.size());
    return ok && output_ok ? exit_ok : exit_failed;
}

}  // namespace isp_case
