/* Every hardware block with a directory under convert/, in the order of its register files'
 * documentation: first the blocks whose register maps are defined, then those whose maps are
 * not defined yet (their structures hold placeholders). */
#ifndef ISP_CONVERT_BLOCK_LIST_H
#define ISP_CONVERT_BLOCK_LIST_H

// clang-format off
#define ISP_BLOCK_LIST(X)                                                                      \
    X(wbc) X(blc) X(dpc) X(lsc) X(dem) X(clc) X(gamma) X(csc) X(hdrc) X(hidrc)                 \
    X(hdr) X(raw2dnr) X(lce) X(rltm) X(dehaze) X(y2dnr) X(yuv3dnr) X(pfd) X(nrlite)            \
    X(ae_stat) X(awb_stat) X(af_stat) X(bl_det) X(eis_pre) X(eis_post) X(ifa)
// clang-format on

#endif
