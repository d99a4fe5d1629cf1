// Marks what the library exports.
#ifndef QV_DATA_INTERFACE_EXPORT_H
#define QV_DATA_INTERFACE_EXPORT_H

#if defined(_WIN32)
#if defined(QV_DATA_INTERFACE_BUILD)
#define QV_DATA_INTERFACE_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define QV_DATA_INTERFACE_API __declspec(dllimport)
#else
#define QV_DATA_INTERFACE_API
#endif
#elif defined(__GNUC__)
#define QV_DATA_INTERFACE_API __attribute__((visibility("default")))
#else
#define QV_DATA_INTERFACE_API
#endif

#endif
