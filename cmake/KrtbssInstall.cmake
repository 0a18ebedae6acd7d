# Installed tree: the library, its headers under include/krtbss, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(
    TARGETS krtbss
    EXPORT krtbssTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/krtbss)
if(TARGET krtstore)
    install(TARGETS krtstore RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/src/"
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/krtbss
    FILES_MATCHING
    PATTERN "*.h"
    PATTERN "private" EXCLUDE
    PATTERN "posix" EXCLUDE)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/krtbss)
install(EXPORT krtbssTargets NAMESPACE krtbss:: DESTINATION ${package_dir})
configure_package_config_file(cmake/krtbssConfig.cmake.in "${CMAKE_BINARY_DIR}/krtbssConfig.cmake"
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${CMAKE_BINARY_DIR}/krtbssConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/krtbssConfig.cmake" "${CMAKE_BINARY_DIR}/krtbssConfigVersion.cmake"
              cmake/KrtbssVersionResource.cmake cmake/versionresource.cpp.in cmake/versionresource.rc.in
        DESTINATION ${package_dir})

# The prefix relative to the folder of the pkg-config file: the installed tree can be moved.
file(RELATIVE_PATH KRTBSS_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/krtbss.pc.in "${CMAKE_BINARY_DIR}/krtbss.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/krtbss.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(MINGW)
    # The compiler's runtime is installed too: a program and the DLL must share one.
    foreach(runtime IN ITEMS libgcc_s_seh-1.dll libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime} OUTPUT_VARIABLE runtime_file
                        OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(IS_ABSOLUTE "${runtime_file}")
            install(FILES "${runtime_file}" DESTINATION ${CMAKE_INSTALL_BINDIR})
        endif()
    endforeach()
endif()
