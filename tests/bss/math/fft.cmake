krtbss_test(fft_tests
    ConvolutionTest.cpp
    FftTest.cpp
    FftwTest.cpp
    ../fit/AllocationCounter.cpp
)
if(NOT WIN32)
    # Another transform to compare with.
    find_library(FFTW3_LIBRARY fftw3 REQUIRED)
    target_link_libraries(fft_tests PRIVATE ${FFTW3_LIBRARY})
    target_compile_definitions(fft_tests PRIVATE KRTBSS_HAS_FFTW)
endif()
