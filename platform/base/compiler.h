// What differs between compilers, for every header of the SDK: symbol visibility and format checking.
// Functions need no import attribute on any compiler, and nothing here exports data; so only the building side is
// marked.
#ifndef SDK_BASE_COMPILER_H
#define SDK_BASE_COMPILER_H

#if defined(_WIN32)
#define SDK_EXPORT __declspec(dllexport)
#define SDK_IMPORT
#elif defined(__GNUC__)
#define SDK_EXPORT __attribute__((visibility("default")))
#define SDK_IMPORT __attribute__((visibility("default")))
#else
#define SDK_EXPORT
#define SDK_IMPORT
#endif

// SDK_PRINTF_FORMAT(f, a): parameter number f is a printf format whose arguments start at number a. The implicit object
// of a member function is number 1.
#if defined(__clang__)
#define SDK_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define SDK_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#else
#define SDK_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

#endif
