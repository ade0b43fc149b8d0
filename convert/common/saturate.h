/* Double to signed 32-bit integer the way every register value is truncated. */
#ifndef ISP_CONVERT_SATURATE_H
#define ISP_CONVERT_SATURATE_H

#include <stdint.h>

namespace isp {

/* Truncation toward zero with saturation at both limits and NaN to 0. Written out because a
 * plain cast is undefined out of range: ARM's VCVT saturates while x86-64's CVTTSD2SI yields
 * INT32_MIN for every out-of-range value, so the two targets would disagree. */
inline int32_t saturate_to_int32(double value) {
    if (value != value) return 0;
    if (value >= 2147483647.0) return INT32_MAX;
    if (value <= -2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(value);
}

/* The same for the unsigned raw-number tables (curves and meshes): negative values and NaN
 * become 0, values beyond the range the largest code. */
inline uint32_t saturate_to_uint32(double value) {
    if (!(value > 0.0)) return 0;
    if (value >= 4294967295.0) return UINT32_MAX;
    return static_cast<uint32_t>(value);
}

}  // namespace isp

#endif
