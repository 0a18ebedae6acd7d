# Compiler options of every target of this project. Linked privately, so that clients do not inherit them.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
if(WIN32)
    # A program and its DLL must be in one folder.
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
endif()

add_library(krtbss_options INTERFACE)
target_compile_features(krtbss_options INTERFACE cxx_std_20)
target_include_directories(krtbss_options INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_options(krtbss_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(KRTBSS_WERROR)
    target_compile_options(krtbss_options INTERFACE -Werror)
endif()
# Results of pure arithmetic have the same bits on every target: no contraction, and no extended precision.
target_compile_options(krtbss_options INTERFACE -ffp-contract=off)
if(WIN32)
    # The wide functions of the Win32 API, and no macros min and max.
    target_compile_definitions(krtbss_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                        _WIN32_WINNT=0x0601)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_options(krtbss_options INTERFACE -msse2 -mfpmath=sse -mstackrealign)
    endif()
    # The cross compilers use Debian's header-only libraries through a folder that contains nothing else.
    set(cross_include "${CMAKE_BINARY_DIR}/cross-include")
    file(MAKE_DIRECTORY "${cross_include}")
    foreach(library IN ITEMS boost CLI nlohmann)
        file(CREATE_LINK "/usr/include/${library}" "${cross_include}/${library}" SYMBOLIC)
    endforeach()
    target_include_directories(krtbss_options SYSTEM INTERFACE "${cross_include}")
endif()
if(KRTBSS_SANITIZE)
    target_compile_options(krtbss_options INTERFACE -fsanitize=${KRTBSS_SANITIZE} -fno-sanitize-recover=all
                                                    -fno-omit-frame-pointer)
    target_link_options(krtbss_options INTERFACE -fsanitize=${KRTBSS_SANITIZE})
endif()
