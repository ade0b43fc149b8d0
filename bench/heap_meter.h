/* Bytes handed out by operator new and not yet returned, counted while counting is on, and the
 * highest value since the last reset_peak(). */
#ifndef ISP_BENCH_HEAP_METER_H
#define ISP_BENCH_HEAP_METER_H

namespace isp_bench {
namespace heap {

void count(bool on);
long long live();
long long peak();
void reset_peak();

}  // namespace heap
}  // namespace isp_bench

#endif
