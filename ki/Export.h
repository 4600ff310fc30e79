// Export.h - KI_API, the export mark of every public class and function of ki.
#ifndef KI_EXPORT_H
#define KI_EXPORT_H

// Symbols are hidden by default (-fvisibility=hidden); only what carries
// KI_API is part of the library's interface, on every platform alike.
#if defined(KI_STATIC)
#define KI_API
#elif defined(_WIN32)
#if defined(KI_BUILDING)
#define KI_API __declspec(dllexport)
#else
#define KI_API __declspec(dllimport)
#endif
#else
#define KI_API __attribute__((visibility("default")))
#endif

// printf-style argument checking for the formatting functions.
#if defined(__GNUC__)
#define KI_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define KI_PRINTF(fmt, args)
#endif

#endif  // KI_EXPORT_H
