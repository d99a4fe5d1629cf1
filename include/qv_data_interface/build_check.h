/// @file
/// Whether a library file goes with the program that is about to use it: same compiler family, standard library and
/// runtime. A wrong pair would load, and crash in its first call; this says what differs instead. Not included by
/// qv_data_interface.h.
#ifndef QV_DATA_INTERFACE_BUILD_CHECK_H
#define QV_DATA_INTERFACE_BUILD_CHECK_H

#include <cstddef>
#include <istream>
#include <iterator>
#include <string>

/// What the identity begins with in the library's file.
#define QV_BUILD_MARK "qv_data_interface build: "

/// @cond What the compiler at hand says of itself.
#define QV_BUILD_QUOTE(text) #text
#define QV_BUILD_TEXT(number) QV_BUILD_QUOTE(number)

#if defined(_WIN64)
#define QV_BUILD_SYSTEM "64-bit Windows"
#elif defined(_WIN32)
#define QV_BUILD_SYSTEM "32-bit Windows"
#elif defined(__LP64__)
#define QV_BUILD_SYSTEM "64-bit"
#else
#define QV_BUILD_SYSTEM "32-bit"
#endif

#if defined(_MSC_VER)
#if defined(_DLL)
#define QV_BUILD_LINKAGE "shared"
#else
#define QV_BUILD_LINKAGE "static"
#endif
#if defined(_DEBUG)
#define QV_BUILD_RUNTIME "debug " QV_BUILD_LINKAGE " runtime"
#else
#define QV_BUILD_RUNTIME "release " QV_BUILD_LINKAGE " runtime"
#endif
#define QV_BUILD_COMPILER \
  "Visual C++ 2015 or later, " QV_BUILD_RUNTIME ", iterator debug level " QV_BUILD_TEXT(_ITERATOR_DEBUG_LEVEL)
#else
#if defined(_LIBCPP_VERSION)
#define QV_BUILD_LIBRARY "libc++ ABI " QV_BUILD_TEXT(_LIBCPP_ABI_VERSION)
#else
#define QV_BUILD_LIBRARY "libstdc++ string ABI " QV_BUILD_TEXT(_GLIBCXX_USE_CXX11_ABI)
#endif
#if !defined(_WIN32)
#define QV_BUILD_RUNTIME "the system's runtime"
#else
#if defined(_UCRT)
#define QV_BUILD_C_LIBRARY "ucrt"
#else
#define QV_BUILD_C_LIBRARY "msvcrt"
#endif
#if defined(__SEH__)
#define QV_BUILD_RUNTIME QV_BUILD_C_LIBRARY ", SEH exceptions"
#else
#define QV_BUILD_RUNTIME QV_BUILD_C_LIBRARY ", other exceptions than SEH"
#endif
#endif
#define QV_BUILD_COMPILER "g++ or clang, " QV_BUILD_LIBRARY ", " QV_BUILD_RUNTIME
#endif
/// @endcond

/// What must be the same on both sides, as a text literal. The number is that of the binary interface.
#define QV_BUILD_IDENTITY QV_BUILD_SYSTEM ", " QV_BUILD_COMPILER ", interface 1"

namespace qv_data_interface {

/// Compares the library in a file with the program that this is compiled into. Reads the stream, opened as binary, to
/// its end; loads nothing. From any thread.
/// @return empty when the two go together, otherwise one line that says what differs.
inline std::string BuildMismatch(std::istream& libraryFile) {
  const std::string mark = QV_BUILD_MARK;
  const std::string host = QV_BUILD_IDENTITY;
  const std::string file((std::istreambuf_iterator<char>(libraryFile)), std::istreambuf_iterator<char>());
  const std::size_t found = file.find(mark);
  if (found == std::string::npos) return "the file cannot be read, or is no qv_data_interface library";
  const std::string library = file.c_str() + found + mark.size();
  if (library == host) return std::string();
  return "the library is built as <" + library + ">, this program as <" + host + ">: build both alike";
}

}  // namespace qv_data_interface

#endif
