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
#ifndef ISP_PART_SUB
#define ISP_PART_SUB(...)
#endif
#ifndef ISP_POINTER
#define ISP_POINTER(...)
#endif
#ifndef ISP_FIELD
#define ISP_FIELD(...)
#endif
#ifndef ISP_FIELD_SUB
#define ISP_FIELD_SUB(...)
#endif
#ifndef ISP_FIELD_PART_ELEM
#define ISP_FIELD_PART_ELEM(...)
#endif
#ifndef ISP_GROUP_FIELD
#define ISP_GROUP_FIELD(...)
#endif
#ifndef ISP_GROUP_EACH
#define ISP_GROUP_EACH(...)
#endif
#ifndef ISP_ELEMENT
#define ISP_ELEMENT(...)
#endif
#ifndef ISP_ELEMENT_EACH
#define ISP_ELEMENT_EACH(...)
#endif
#ifndef ISP_TABLE
#define ISP_TABLE(...)
#endif
#ifndef ISP_TABLE_PACKED
#define ISP_TABLE_PACKED(...)
#endif
#ifndef ISP_HAND
#define ISP_HAND(...)
#endif
#ifndef ISP_HAND_END
#define ISP_HAND_END(...)
#endif
#ifndef ISP_EXPORT
#define ISP_EXPORT(...)
#endif
#ifndef ISP_EXPORT_PART
#define ISP_EXPORT_PART(...)
#endif
#else
#undef ISP_DEF_ROWS_OPEN
#undef ISP_STRUCT
#undef ISP_MEMBER
#undef ISP_PART_MEMBER
#undef ISP_PART_SUB
#undef ISP_POINTER
#undef ISP_FIELD
#undef ISP_FIELD_SUB
#undef ISP_FIELD_PART_ELEM
#undef ISP_GROUP_FIELD
#undef ISP_GROUP_EACH
#undef ISP_ELEMENT
#undef ISP_ELEMENT_EACH
#undef ISP_TABLE
#undef ISP_TABLE_PACKED
#undef ISP_HAND
#undef ISP_HAND_END
#undef ISP_EXPORT
#undef ISP_EXPORT_PART
#endif
