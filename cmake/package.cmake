# What `cmake --install` and CPack give to those who embed the library. Components: runtime (libraries), development
# (headers, import libraries, CMake and pkg-config files), tools, documentation (guides and examples).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(packageDirectory "${CMAKE_INSTALL_LIBDIR}/cmake/qv_data_interface")

# The SDK's headers lie in folders with names as general as "base".
set(sdkIncludes "${CMAKE_INSTALL_INCLUDEDIR}/qv_data_interface_sdk")

# qv_install_library(<export set> <target> <exported name> <header folder>)
function(qv_install_library exportSet target exportName includes)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${exportName})
  install(TARGETS ${target} EXPORT ${exportSet}
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    INCLUDES DESTINATION "${includes}")
endfunction()

qv_install_library(qv_targets qv_data_interface data_interface "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT qv_targets NAMESPACE qv:: FILE qv_data_interface_targets.cmake
  DESTINATION "${packageDirectory}" COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/qv_data_interface"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)

# The SDK's headers, and the reference services when this build has made them.
qv_install_library(sdk_targets sdk_platform platform "${sdkIncludes}")
foreach(library base pass_interface ws_interface collect_interface database_interface)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/platform/${library}" DESTINATION "${sdkIncludes}"
    COMPONENT development FILES_MATCHING PATTERN "*.h")
  if(TARGET reference_${library})
    qv_install_library(sdk_targets reference_${library} ${library} "${sdkIncludes}")
  endif()
endforeach()
if(TARGET reference_common)
  qv_install_library(sdk_targets reference_common reference_common "${sdkIncludes}")
  foreach(header export.h service_threads.h settings.h)
    install(FILES "${PROJECT_SOURCE_DIR}/reference/common/${header}"
      DESTINATION "${sdkIncludes}/reference/common" COMPONENT development)
  endforeach()
endif()
install(EXPORT sdk_targets NAMESPACE sdk:: FILE sdk_targets.cmake
  DESTINATION "${packageDirectory}" COMPONENT development)

write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/qv_data_interface-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
configure_file("${CMAKE_CURRENT_LIST_DIR}/package/qv_data_interface-config.cmake.in"
  "${PROJECT_BINARY_DIR}/package/qv_data_interface-config.cmake" @ONLY)
file(RELATIVE_PATH prefixFromPkgConfig "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file("${CMAKE_CURRENT_LIST_DIR}/package/qv_data_interface.pc.in"
  "${PROJECT_BINARY_DIR}/package/qv_data_interface.pc" @ONLY)
install(FILES
  "${PROJECT_BINARY_DIR}/package/qv_data_interface-config.cmake"
  "${PROJECT_BINARY_DIR}/package/qv_data_interface-config-version.cmake"
  DESTINATION "${packageDirectory}" COMPONENT development)
install(FILES "${PROJECT_BINARY_DIR}/package/qv_data_interface.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

if(QV_BUILD_TOOLS)
  install(TARGETS qv_connect qv_cloud RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
endif()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" "${PROJECT_SOURCE_DIR}/examples"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)

# The compiler's runtime libraries, which no Windows has: host and library share these copies.
if(MINGW)
  foreach(library libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${library}.dll
      OUTPUT_VARIABLE runtimeFile OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${runtimeFile}" OR NOT EXISTS "${runtimeFile}")
      find_file(QV_RUNTIME_${library} ${library}.dll PATH_SUFFIXES bin lib REQUIRED)
      set(runtimeFile "${QV_RUNTIME_${library}}")
    endif()
    # Debian's hold their debugging information, ten times their code.
    set(shippedFile "${PROJECT_BINARY_DIR}/package/${library}.dll")
    execute_process(COMMAND "${CMAKE_STRIP}" -o "${shippedFile}" "${runtimeFile}" COMMAND_ERROR_IS_FATAL ANY)
    install(FILES "${shippedFile}" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
  endforeach()
elseif(MSVC)
  set(CMAKE_INSTALL_SYSTEM_RUNTIME_COMPONENT runtime)
  include(InstallRequiredSystemLibraries)
endif()

set(CPACK_PACKAGE_NAME qv-data-interface)
set(CPACK_PACKAGE_VENDOR "qv_data_interface maintainers")
set(CPACK_PACKAGE_CONTACT "qv_data_interface maintainers <maintainers@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Connects a front end to a phone running in the cloud")
set(CPACK_RESOURCE_FILE_README "${PROJECT_SOURCE_DIR}/README.md")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
  # The packages whose libraries ours need, from the libraries themselves.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/bin")
endif()
include(CPack)
