# Tests of the spectral routines: Burg and Welch spectra, red-noise significance,
# Fourier resampling and their C binding (included from tests/numeric/CMakeLists.txt).
add_executable(test_spectral
    ${CMAKE_CURRENT_LIST_DIR}/test_burg.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_welch.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_significance.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_resample.cpp
)
target_link_libraries(test_spectral PRIVATE tarnic_numeric GTest::gtest_main ${CMAKE_DL_LIBS})
target_compile_definitions(test_spectral PRIVATE TARNIC_DLL_PATH="${TARNIC_APP_DIR}/Tarnic.dll")
add_dependencies(test_spectral Tarnic)
gtest_discover_tests(test_spectral PROPERTIES ENVIRONMENT "${TARNIC_TEST_ENV}")

# Real transforms of every kind of length and the band-pass filter and Fourier
# resampling on them (prime lengths above all).
add_executable(test_transform_lengths ${CMAKE_CURRENT_LIST_DIR}/test_transform_lengths.cpp)
target_link_libraries(test_transform_lengths PRIVATE tarnic_numeric GTest::gtest_main)
gtest_discover_tests(test_transform_lengths PROPERTIES ENVIRONMENT "${TARNIC_TEST_ENV}")
