/* Enums declared once as X-macro lists of (identifier, "name") rows, as the library declares
 * its tables: the enumerators and the names the tool prints and reads come from the same rows,
 * so that no switch can miss one. */
#ifndef ISP_CASE_ENUM_LIST_H
#define ISP_CASE_ENUM_LIST_H

#include <stddef.h>

#include <string>

#define ISP_CASE_ENUM_ID(id, name) id,
#define ISP_CASE_ENUM_NAME(id, name) name,

/* enum class type { the list's identifiers }, and its names in an array type##_names */
#define ISP_CASE_ENUM(type, LIST)               \
    enum class type { LIST(ISP_CASE_ENUM_ID) }; \
    inline constexpr const char *type##_names[] = {LIST(ISP_CASE_ENUM_NAME)}

namespace isp_case {

/* The name of an enumerator of a list. */
template <typename E, size_t N>
const char *enum_name(const char *const (&names)[N], E value) {
    return size_t(value) < N ? names[size_t(value)] : "";
}

/* The enumerator of a name; false for a name the list does not hold. */
template <typename E, size_t N>
bool enum_from_name(const char *const (&names)[N], const std::string &name, E &value) {
    for (size_t i = 0; i < N; ++i)
        if (name == names[i]) {
            value = E(i);
            return true;
        }
    return false;
}

}  // namespace isp_case

#endif
