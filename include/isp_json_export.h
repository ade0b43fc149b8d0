/* The one export macro of libisp_json: everything else is built with hidden visibility. */
#ifndef ISP_JSON_EXPORT_H
#define ISP_JSON_EXPORT_H

#if defined(ISP_JSON_BUILDING)
#define ISP_JSON_API __attribute__((visibility("default")))
#else
#define ISP_JSON_API
#endif

#endif
