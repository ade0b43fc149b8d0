/* The table-driven block case: converters, exporters and modules found through the library's
 * tables, expectations from the caller. */
#include "tests/support/block_case.h"

#include <string.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "convert/common/register_map.h"
#include "modules/tables.h"
#include "tests/support/test_support.h"

namespace isp_test {
namespace {

picojson::array expand(const picojson::value &value, size_t count) {
    if (!value.is<picojson::array>()) return picojson::array{value};
    picojson::array head, tail;
    bool gap = false;
    for (const picojson::value &item : value.get<picojson::array>()) {
        if (item.is<std::string>() && item.get<std::string>() == "...")
            gap = true;
        else
            (gap ? tail : head).push_back(item);
    }
    if (gap) {
        const double step = head.back().get<double>() - head[head.size() - 2].get<double>();
        while (head.size() + tail.size() < count)
            head.emplace_back(head.back().get<double>() + step);
    }
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

/* The expected bytes of a structure: zeros, the named members' codes, the pointers of actual. */
std::vector<uint8_t> expected_bytes(const char *type, const picojson::object &all,
                                    const std::vector<uint8_t> &actual) {
    const isp::struct_desc *layout = isp::find_struct(type);
    if (!layout) {
        ADD_FAILURE() << "no layout of " << type;
        return actual;
    }
    std::vector<uint8_t> bytes(layout->size);
    const auto found = all.find(type);
    const picojson::object none;
    const picojson::object &members =
        found == all.end() ? none : found->second.get<picojson::object>();
    for (const auto &entry : members) {
        const isp::member_desc *m = nullptr;
        for (uint32_t i = 0; i < layout->member_count; ++i)
            if (entry.first == layout->members[i].name) m = &layout->members[i];
        if (!m) {
            ADD_FAILURE() << type << " has no member " << entry.first;
            continue;
        }
        const picojson::array codes = expand(entry.second, m->count);
        EXPECT_LE(codes.size(), m->count) << type << "." << entry.first;
        const isp::member_ref ref{m->name, m->offset, m->stride, m->elem_size, m->is_signed};
        for (size_t i = 0; i < codes.size() && i < m->count; ++i)
            isp::store_code(bytes.data(), ref, static_cast<uint32_t>(i),
                            static_cast<uint32_t>(codes[i].get<double>()));
    }
    for (uint32_t i = 0; i < layout->member_count; ++i)
        if (layout->members[i].pointer)
            memcpy(bytes.data() + layout->members[i].offset,
                   actual.data() + layout->members[i].offset, sizeof(void *));
    return bytes;
}

void expect_export(const std::string &type, const picojson::object &actual,
                   const picojson::object &expected) {
    std::vector<std::string> actual_keys, expected_keys;
    for (const auto &entry : actual) actual_keys.push_back(entry.first);
    for (const auto &entry : expected) expected_keys.push_back(entry.first);
    EXPECT_EQ(actual_keys, expected_keys) << type;
    for (const auto &entry : expected) {
        const auto got = actual.find(entry.first);
        if (got == actual.end() ||
            (entry.second.is<std::string>() && entry.second.get<std::string>() == "*"))
            continue;
        const size_t count =
            got->second.is<picojson::array>() ? got->second.get<picojson::array>().size() : 1;
        const picojson::value want = entry.second.is<picojson::array>()
                                         ? picojson::value(expand(entry.second, count))
                                         : entry.second;
        EXPECT_EQ(got->second.serialize(), want.serialize()) << type << " \"" << entry.first << '"';
    }
}

}  // namespace

std::map<std::string, picojson::object> check_block(const block_case &c) {
    SCOPED_TRACE(c.block);
    const picojson::object structures = parse_object(c.structures);
    const picojson::object cmodel     = parse_object(c.cmodel);
    std::vector<picojson::object> files;
    for (const std::string &file : c.files) files.push_back(data_object(file));
    const uint8_t last = static_cast<uint8_t>(files.size() - 1);

    std::map<std::string, picojson::object> exports;
    for (const isp::converter_desc *conv : isp::block_converters(c.block)) {
        SCOPED_TRACE(conv->name);
        std::vector<uint8_t> bytes(conv->size);
        EXPECT_EQ(stderr_of([&] {
                      for (uint8_t p = 0; p <= last; ++p)
                          EXPECT_EQ(conv->convert_alone(files[p], bytes.data(), p), 0);
                  }),
                  "");
        EXPECT_EQ(bytes, expected_bytes(conv->c_type, structures, bytes));
        if (!conv->exporter) continue;
        picojson::object &out = exports[conv->c_type];
        EXPECT_EQ(conv->exporter(bytes.data(), out, last), 0);
        const auto want = cmodel.find(conv->c_type);
        if (want == cmodel.end())
            ADD_FAILURE() << "no C-model expectation for " << conv->c_type;
        else
            expect_export(conv->c_type, out, want->second.get<picojson::object>());
    }
    EXPECT_EQ(exports.size(), cmodel.size()) << "a C-model expectation no exporter meets";

    size_t replayed = 0;
    for (const isp::module_desc &m : isp::modules()) {
        if (c.block != m.block) continue;
        SCOPED_TRACE(m.name);
        const auto listed =
            std::find_if(c.modules.begin(), c.modules.end(),
                         [&](const block_case::module &entry) { return entry.name == m.name; });
        if (listed == c.modules.end()) {
            ADD_FAILURE() << "module " << m.name << " not in the case";
            continue;
        }
        ++replayed;
        temp_dir dir;
        for (size_t p = 0; p < c.files.size(); ++p)
            dir.write(isp::relative_file(m, 0, static_cast<int>(p), 0), data_text(c.files[p]));
        const std::vector<isp_sim::call> calls =
            replay(listed->reg, dir, static_cast<uint8_t>(c.files.size()));
        EXPECT_EQ(commands_of(calls), listed->commands);
        for (const isp_sim::call &push : calls) {
            const isp::group_desc *g = isp::find_pushed_group(c.block, push.cmd);
            if (!g) continue;
            SCOPED_TRACE(g->name);
            EXPECT_EQ(push.payload, expected_bytes(g->c_type, structures, push.payload));
        }
    }
    EXPECT_EQ(replayed, c.modules.size()) << "a module the block does not have";
    return exports;
}

conversion convert_named(const std::string &converter, picojson::object root, uint8_t partition,
                         uint8_t fill) {
    conversion out;
    for (const char *block : isp::blocks())
        for (const isp::converter_desc *conv : isp::block_converters(block))
            if (converter == conv->name) {
                out.bytes.assign(conv->size, fill);
                out.lines = stderr_lines_of([&] {
                    out.error = runtime_error_of(
                        [&] { conv->convert_alone(root, out.bytes.data(), partition); });
                });
                return out;
            }
    ADD_FAILURE() << "no converter " << converter;
    return out;
}

std::vector<std::string> failures_of(const std::string &converter, picojson::object root,
                                     uint8_t partition) {
    const conversion out = convert_named(converter, root, partition);
    EXPECT_EQ(out.error, "no exception") << converter;
    return out.lines;
}

std::vector<std::string> failed(
    const std::vector<std::pair<std::string, std::vector<std::string>>> &registers) {
    std::vector<std::string> lines;
    for (const auto &reg : registers) add_failed(lines, reg.first, reg.second);
    return lines;
}

}  // namespace isp_test
