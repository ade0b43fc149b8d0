/* Merging shard reports: each report is checked against the first (same suite, same count of
 * shards, a shard of its own), then the suite's cases are taken in the suite's order from the
 * report of the shard that ran them. */
#include "tools/core/merge.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include <picojson.h>

#include "tools/core/batch.h"
#include "tools/core/file_probe.h"
#include "tools/core/findings.h"
#include "tools/core/settings.h"
#include "tools/output/escape.h"
#include "tools/output/files.h"
#include "tools/output/json.h"

namespace isp_case {
namespace {

/* A report that cannot be merged: the message names the file. */
struct merge_error {
    std::string message;
};

struct shard_report {
    std::string file;
    int index = 1, count = 1;
    std::string suite;
    std::vector<std::string> suite_cases;
    std::vector<std::string> only_in_baseline;
    picojson::array cases;
    double seconds = 0;
};

/* A member of an object; null for anything else, so that a report with a member missing reads
 * as one with the member null. */
const picojson::value &member(const picojson::value &v, const char *key) {
    static const picojson::value none;
    return v.is<picojson::object>() && v.contains(key) ? v.get(key) : none;
}

std::string text_of(const picojson::value &v) {
    return v.is<std::string>() ? v.get<std::string>() : std::string();
}

double number_of(const picojson::value &v) {
    return v.is<double>() ? v.get<double>() : 0;
}

std::vector<std::string> texts_of(const picojson::value &v) {
    std::vector<std::string> out;
    if (v.is<picojson::array>())
        for (const picojson::value &x : v.get<picojson::array>()) out.push_back(text_of(x));
    return out;
}

shard_report read_report(const std::string &file) {
    /* a suite of ten thousand cases with long output tails stays far below this */
    constexpr long long max_report_bytes = 1LL << 30;
    std::string bytes;
    if (const file_read r = read_regular_file(file, max_report_bytes, bytes); !r.problem.empty())
        throw merge_error{file + ": cannot be read: " + r.problem};
    picojson::value root;
    std::string error;
    picojson::parse(root, bytes.data(), bytes.data() + bytes.size(), &error);
    if (!error.empty())
        throw merge_error{file + ": not JSON: " + error.substr(0, error.find('\n'))};
    const picojson::value &suite = member(root, "suite"), &shard = member(root, "shard");
    if (text_of(member(root, "type")) != "batch" || !suite.is<picojson::object>() ||
        !member(root, "cases").is<picojson::array>())
        throw merge_error{file + ": not the --json report of isp-case batch"};
    shard_report r;
    r.file             = file;
    r.suite            = text_of(member(suite, "id"));
    r.suite_cases      = texts_of(member(suite, "cases"));
    r.cases            = member(root, "cases").get<picojson::array>();
    r.seconds          = number_of(member(member(root, "summary"), "seconds"));
    r.only_in_baseline = texts_of(member(member(root, "baseline"), "only_in_baseline"));
    if (shard.is<picojson::object>()) {
        r.index = int(number_of(member(shard, "index")));
        r.count = int(number_of(member(shard, "count")));
    }
    if (r.count < 1 || r.index < 1 || r.index > r.count)
        throw merge_error{file + ": its shard is not K/N with 1 <= K <= N"};
    return r;
}

/* Each report against the first: the same suite, the same count, a shard not seen before. */
void check_fits(const std::vector<shard_report> &reports) {
    const shard_report &first = reports.front();
    std::map<int, const shard_report *> seen;
    for (const shard_report &r : reports) {
        if (r.suite != first.suite)
            throw merge_error{
                fmt::format("{}: a shard of another suite ({}, id {}) than {} ({}, "
                            "id {})",
                            r.file, counted(r.suite_cases.size(), "case"), r.suite, first.file,
                            counted(first.suite_cases.size(), "case"), first.suite)};
        if (r.count != first.count)
            throw merge_error{fmt::format("{}: shard {}/{}, but {} is a shard of {}", r.file,
                                          r.index, r.count, first.file, first.count)};
        const auto [it, fresh] = seen.emplace(r.index, &r);
        if (!fresh)
            throw merge_error{fmt::format("{}: shard {}/{} again ({} has it)", r.file, r.index,
                                          r.count, it->second->file)};
    }
}

/* What a case that finished came to, as its report says. */
struct merged_case {
    std::string name;
    int shard                    = 0;
    const picojson::value *entry = nullptr; /* null: no report holds it */
    bool passed() const { return entry && text_of(member(*entry, "result")) == "passed"; }
};

junit_case junit_of(const merged_case &c, int count) {
    junit_case j;
    j.name = c.name;
    if (!c.entry) {
        j.failure_type = "missing";
        j.reason       = fmt::format("shard {}/{}: no report", c.shard, count);
        return j;
    }
    const picojson::value &e = *c.entry;
    j.seconds                = number_of(member(e, "seconds"));
    j.errors                 = size_t(number_of(member(e, "errors")));
    j.warnings               = size_t(number_of(member(e, "warnings")));
    if (!c.passed()) {
        j.failure_type = text_of(member(e, "result"));
        j.reason       = text_of(member(e, "reason"));
        j.output       = text_of(member(e, "output_tail"));
    }
    return j;
}

}  // namespace

int run_merge(const merge_settings &settings, std::FILE *out, std::FILE *err) {
    std::vector<shard_report> reports;
    try {
        for (const std::string &file : settings.reports) reports.push_back(read_report(file));
        check_fits(reports);
    } catch (const merge_error &e) {
        fmt::print(err, "isp-case merge: {}\n", terminal_text(e.message));
        return exit_no_case;
    }
    std::sort(reports.begin(), reports.end(),
              [](const shard_report &a, const shard_report &b) { return a.index < b.index; });
    const int count                       = reports.front().count;
    const std::vector<std::string> &names = reports.front().suite_cases;

    std::map<std::string, std::pair<int, const picojson::value *>> ran;
    std::vector<std::string> only_in_baseline;
    double seconds = 0;
    for (const shard_report &r : reports) {
        seconds += r.seconds;
        for (const picojson::value &c : r.cases) ran[text_of(member(c, "name"))] = {r.index, &c};
        for (const std::string &name : r.only_in_baseline)
            if (std::find(only_in_baseline.begin(), only_in_baseline.end(), name) ==
                only_in_baseline.end())
                only_in_baseline.push_back(name);
    }
    std::vector<merged_case> cases;
    size_t passed = 0, missing = 0;
    for (size_t i = 0; i < names.size(); ++i) {
        merged_case c;
        c.name        = names[i];
        const auto it = ran.find(c.name);
        /* the shard that runs the i-th case: every count-th from the index-th (shard_of) */
        c.shard = it != ran.end() ? it->second.first : int(i % size_t(count)) + 1;
        c.entry = it != ran.end() ? it->second.second : nullptr;
        passed += c.passed();
        missing += !c.entry;
        cases.push_back(c);
    }
    std::vector<int> missing_shards;
    for (int k = 1, at = 0; k <= count; ++k) {
        if (at < int(reports.size()) && reports[size_t(at)].index == k)
            ++at;
        else
            missing_shards.push_back(k);
    }
    const bool ok = passed == cases.size() && missing_shards.empty() && only_in_baseline.empty();

    /* the text: a line per shard, then the summary as batch gives it */
    std::string text = fmt::format("merge of {} of {} shard{}, {} cases\n\n", reports.size(), count,
                                   count == 1 ? "" : "s", names.size());
    for (int k = 1, at = 0; k <= count; ++k) {
        if (at < int(reports.size()) && reports[size_t(at)].index == k) {
            const shard_report &r = reports[size_t(at++)];
            size_t shard_passed   = 0;
            for (const merged_case &c : cases) shard_passed += c.shard == k && c.passed();
            text += fmt::format("shard {}/{}  {:>9}  {:>4} passed  {:8.2f} s  {}\n", k, count,
                                counted(r.cases.size(), "case"), shard_passed, r.seconds,
                                terminal_text(r.file));
        } else {
            text += fmt::format("shard {}/{}  missing: no report\n", k, count);
        }
    }
    text += fmt::format(
        "\nsummary\n  cases       {} in the suite, {} run, {} passed, {} failed, "
        "{} missing\n",
        names.size(), names.size() - missing, passed, names.size() - missing - passed, missing);
    for (const merged_case &c : cases)
        if (c.entry && !c.passed())
            text += fmt::format("  failed      {}: {}\n", terminal_text(c.name),
                                terminal_text(text_of(member(*c.entry, "reason"))));
    for (int k : missing_shards) {
        std::vector<std::string> of_shard;
        for (const merged_case &c : cases)
            if (!c.entry && c.shard == k) of_shard.push_back(terminal_text(c.name));
        text += fmt::format("  missing     shard {}/{}{}{}\n", k, count,
                            of_shard.empty() ? "" : ": ", fmt::join(of_shard, ", "));
    }
    for (const std::string &name : only_in_baseline)
        text += fmt::format("  failed      {}: in the baseline, not in the suite\n",
                            terminal_text(name));

    /* the document: the cases as their shards reported them, with the shard added */
    picojson::array merged;
    for (const merged_case &c : cases) {
        picojson::object o;
        if (c.entry && c.entry->is<picojson::object>()) {
            o = c.entry->get<picojson::object>();
        } else {
            o["name"]   = json_text(c.name);
            o["result"] = json_text("missing");
            o["reason"] = json_text(fmt::format("shard {}/{}: no report", c.shard, count));
        }
        o["shard"] = picojson::value(double(c.shard));
        merged.push_back(picojson::value(o));
    }
    std::vector<json_fields> shards;
    for (const shard_report &r : reports)
        shards.push_back(json_fields()
                             .add("index", r.index)
                             .add("count", r.count)
                             .add("file", r.file)
                             .add("cases", r.cases.size())
                             .add("seconds", r.seconds));
    picojson::array missing_list;
    for (int k : missing_shards) missing_list.push_back(picojson::value(double(k)));
    std::vector<std::string> missing_cases;
    for (const merged_case &c : cases)
        if (!c.entry) missing_cases.push_back(c.name);
    json_fields doc;
    doc.add("type", "merge")
        .add("suite",
             json_fields().add("id", reports.front().suite).add("cases", json_texts(names)))
        .add("shards", shards)
        .add("missing_shards", picojson::value(missing_list))
        .add("missing_cases", json_texts(missing_cases))
        .add("only_in_baseline", json_texts(only_in_baseline))
        .add("cases", picojson::value(merged))
        .add("summary", json_fields()
                            .add("cases", names.size())
                            .add("passed", passed)
                            .add("failed", names.size() - missing - passed)
                            .add("missing", missing)
                            .add("seconds", seconds)
                            .add("result", ok ? "ok" : "failed")
                            .add("exit_status", ok ? exit_ok : exit_failed));
    const std::string document = doc.serialize() + "\n";

    bool written     = true;
    const auto write = [&](const std::string &path, const std::string &bytes, const char *what) {
        std::string error;
        const bool done = write_text_file(path, bytes, error);
        text += fmt::format("  {:<12}{}{}\n", what, terminal_text(path),
                            done ? "" : ": cannot be written");
        if (!done) fmt::print(err, "isp-case merge: {}: cannot be written\n", terminal_text(path));
        written = written && done;
    };
    if (!settings.junit_file.empty()) {
        std::vector<junit_case> junit;
        for (const merged_case &c : cases) junit.push_back(junit_of(c, count));
        write(settings.junit_file, junit_document("isp-case batch", junit, seconds), "junit");
    }
    if (!settings.json_file.empty()) write(settings.json_file, document, "json");
    text += fmt::format("  result      {}\n", ok && written ? "ok" : "FAILED");
    std::fputs(settings.json ? document.c_str() : text.c_str(), out);
    return ok && written ? exit_ok : exit_failed;
}

}  // namespace isp_case
