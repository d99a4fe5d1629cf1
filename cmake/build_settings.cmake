# How every target of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(WIN32)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
endif()

# All libraries and programs side by side, so that a program finds its libraries from the build tree on every system.
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
endif()

# Installed, a library finds its neighbours beside it, and a program in the folder next to its own.
include(GNUInstallDirs)
if(PROJECT_IS_TOP_LEVEL AND NOT WIN32)
  set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()

# Paths below the tree count as relative, so that every clone finds what another one has compiled.
find_program(QV_CCACHE ccache)
if(QV_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
    "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=true "${QV_CCACHE}")
endif()

# The end of the name of a file that is written once for each operating system.
if(WIN32)
  set(QV_SYSTEM windows)
else()
  set(QV_SYSTEM linux)
endif()

set(QV_SANITIZE "" CACHE STRING "Sanitizers for every target, as -fsanitize= takes them")

add_library(qv_build_settings INTERFACE)
target_compile_options(qv_build_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
  $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
  # g++ 12 sees overlapping copies in plain concatenations of strings, and endless comparisons of short ones.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-stringop-overread>)
if(QV_SANITIZE)
  add_compile_options(-fsanitize=${QV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QV_SANITIZE})
endif()

# What ships defends itself: against a stack that is overrun, a buffer whose size is known, and addresses that are
# written over or guessed. Sanitizers bring their own checks; glibc's need an optimised build.
if(NOT QV_SANITIZE AND WIN32)
  add_link_options(LINKER:--dynamicbase LINKER:--high-entropy-va LINKER:--nxcompat)
elseif(NOT QV_SANITIZE)
  add_compile_options(-fstack-protector-strong)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$" OR CMAKE_CXX_FLAGS MATCHES "-O[123s]")
    set(QV_FORTIFY ON)
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
endif()

# Asio of Boost 1.74 uses std::exchange without its header. A target that includes Beast links this one.
add_library(qv_beast INTERFACE)
target_compile_options(qv_beast INTERFACE -include utility)
target_compile_definitions(qv_beast INTERFACE BOOST_ASIO_NO_DEPRECATED BOOST_BEAST_USE_STD_STRING_VIEW)
# g++ compiles no fence for its ThreadSanitizer, which would not understand it. Asio puts one around each handler, in
# addition to its locks; without it the sanitizer sees no less.
if(QV_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_definitions(qv_beast INTERFACE BOOST_ASIO_DISABLE_FENCED_BLOCK)
endif()

# qv_beast_sources(<file>...): the files of the calling folder that include Beast. Its templates take minutes a file to
# optimise or to check; on mingw they do not assemble without optimisation.
function(qv_beast_sources)
  if(NOT CMAKE_BUILD_TYPE AND NOT WIN32)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS -O0 -U_FORTIFY_SOURCE)
  endif()
  if(QV_SANITIZE MATCHES undefined)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS -fno-sanitize=undefined)
  endif()
endfunction()

# The compiler's runtime, which all DLLs share, stands beside them as it does in a release.
if(QV_WINDOWS_PREFIX AND PROJECT_IS_TOP_LEVEL)
  file(GLOB runtimeLibraries "${QV_WINDOWS_PREFIX}/bin/*.dll")
  file(COPY ${runtimeLibraries} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
endif()
