krtbss_test(codec_tests
    CompressionTest.cpp
    DesOpenSslTest.cpp
    DesTest.cpp
    EncryptionTest.cpp
)
if(NOT WIN32)
    find_package(OpenSSL REQUIRED COMPONENTS Crypto)
    target_link_libraries(codec_tests PRIVATE OpenSSL::Crypto)
endif()
# A program in C that uses the exported names; DesTest runs it.
enable_language(C)
add_executable(des_program DesProgram.c)
target_link_libraries(des_program PRIVATE krtbss krtbss_options)
add_dependencies(codec_tests des_program)
target_compile_definitions(codec_tests PRIVATE DES_PROGRAM="$<TARGET_FILE:des_program>")
