/* Included before and after every pass over a .def file: before, it gives every row macro the
   pass does not define an empty expansion; after, it undefines them all. No include guard. */
#ifndef ISP_DEF_ROWS_OPEN
#define ISP_DEF_ROWS_OPEN
#ifndef ISP_STRUCT
#define ISP_STRUCT(...)
#endif
#ifndef ISP_MEMBER
#define ISP_MEMBER(...)
#endif
#ifndef ISP_PART_MEMBER
#define ISP_PART_MEMBER(...)
#endif
#ifndef ISP_READ
#define ISP_READ(...)
#endif
#ifndef ISP_TABLE
#define ISP_TABLE(...)
#endif
#ifndef ISP_INTERLEAVE
#define ISP_INTERLEAVE(...)
#endif
#ifndef ISP_HAND
#define ISP_HAND(...)
#endif
#ifndef ISP_END
#define ISP_END(...)
#endif
#ifndef ISP_EXPORT
#define ISP_EXPORT(...)
#endif
#else
#undef ISP_DEF_ROWS_OPEN
#undef ISP_STRUCT
#undef ISP_MEMBER
#undef ISP_PART_MEMBER
#undef ISP_DEF_PART_WHOLE
#undef ISP_DEF_PART_SUB
#undef ISP_READ
#undef ISP_TABLE
#undef ISP_INTERLEAVE
#undef ISP_HAND
#undef ISP_END
#undef ISP_EXPORT
#endif
