/* The one way a converter reads a register field from a register file. */
#ifndef ISP_CONVERT_FIELD_READER_H
#define ISP_CONVERT_FIELD_READER_H

#include <stddef.h>
#include <stdint.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include <picojson.h>

#include "convert/common/saturate.h"
#include "isp_json_utils.h"

namespace isp {

/* Looks every field up afresh from the root of one register file, through the block's top key:
 * top / register / field, or top / group [index] / register / field for register groups held in
 * arrays. Each step uses the map's inserting subscript, so a missing key is left in the file's
 * object as null, and picojson's checked access rejects it. Any failure of one field prints
 * "read json_obj failed: <register>.<field>" on standard error and yields the encoding of 0;
 * the next field is read as if nothing happened. */
class field_reader {
  public:
    field_reader(picojson::object &root, const char *top_key) : root_(root), top_(top_key) {}

    /* top / reg / field */
    uint32_t read(const char *reg, const char *field, const char *format) const {
        try {
            return encode(field_of(top(), reg, field), format);
        } catch (const std::exception &) {
            return fail(reg, field, format);
        }
    }

    /* top / group [index] / reg / field; the message names only register and field. */
    uint32_t read(const char *group, size_t index, const char *reg, const char *field,
                  const char *format) const {
        try {
            return encode(field_of(object_of(item(array_of(nullptr, group), index)), reg, field),
                          format);
        } catch (const std::exception &) {
            return fail(reg, field, format);
        }
    }

    /* top / array [index] / field, for arrays whose elements hold the field directly; the
     * message names the array and the field. */
    uint32_t read_element(const char *array, size_t index, const char *field,
                          const char *format) const {
        try {
            return encode(object_of(item(array_of(nullptr, array), index))[field], format);
        } catch (const std::exception &) {
            return fail(array, field, format);
        }
    }

    /* top / key [index] as a raw number, saturated into an unsigned code. Not caught: a
     * missing key, a short array or a non-number raises picojson's type error to the caller. */
    uint32_t raw_number(const char *key, size_t index) const {
        return saturate_to_uint32(number_of(item(array_of(nullptr, key), index)));
    }

    /* top / reg / key [index] as a raw number, saturated into an unsigned code; not caught. */
    uint32_t raw_number(const char *reg, const char *key, size_t index) const {
        return saturate_to_uint32(number_of(item(array_of(reg, key), index)));
    }

  private:
    /* Objects and arrays found once are kept for the reader's later look-ups. Looking up a key
     * that exists changes nothing, and nothing is ever removed from or replaced in the tree, so
     * a kept reference stays what a fresh look-up would find; a look-up that fails (inserting
     * its null entry and raising) is never kept and is repeated by the next field. This saves
     * the key strings and the map searches of the top key on every field, and of an array on
     * every one of its elements (register groups, tables). */
    picojson::object &top() const {
        if (!top_object_) top_object_ = &object_of(root_[top_]);
        return *top_object_;
    }

    /* top / key, or top / reg / key, which must be an array. */
    picojson::array &array_of(const char *reg, const char *key) const {
        if (array_ && same(array_reg_, reg) && same(array_key_, key)) return *array_;
        picojson::object &parent = reg ? object_of(top()[reg]) : top();
        array_                   = &parent[key].get<picojson::array>();
        array_reg_               = reg;
        array_key_               = key;
        return *array_;
    }

    static bool same(const char *a, const char *b) {
        return a == b || (a && b && std::strcmp(a, b) == 0);
    }

    /* An index past the end counts as a missing key. */
    static picojson::value &item(picojson::array &items, size_t index) {
        static picojson::value missing;  // null: fails every checked access like a missing key
        return index < items.size() ? items[index] : missing;
    }

    static picojson::object &object_of(picojson::value &value) {
        return value.get<picojson::object>();
    }

    static picojson::value &field_of(picojson::object &parent, const char *reg, const char *field) {
        return object_of(parent[reg])[field];
    }

    static double number_of(picojson::value &value) { return value.get<double>(); }

    static uint32_t encode(picojson::value &value, const char *format) {
        return sign_to_regval(saturate_to_int32(number_of(value)), format);
    }

    static uint32_t fail(const char *reg, const char *field, const char *format) {
        std::string line = "read json_obj failed: ";
        line += reg;
        line += '.';
        line += field;
        line += '\n';
        std::fputs(line.c_str(), stderr);
        std::fflush(stderr);
        return sign_to_regval(0, format);
    }

    picojson::object &root_;
    const char *top_;
    mutable picojson::object *top_object_ = nullptr;
    mutable picojson::array *array_       = nullptr;
    mutable const char *array_reg_        = nullptr;
    mutable const char *array_key_        = nullptr;
};

}  // namespace isp

#endif
