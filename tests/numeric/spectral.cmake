# Tests of the spectral routines: Burg and Welch spectra, red-noise significance,
# Fourier resampling and their C binding, real transforms of every kind of length
# and the band-pass filter on them (included from tests/numeric/CMakeLists.txt).
add_executable(test_spectral
    ${CMAKE_CURRENT_LIST_DIR}/test_burg.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_welch.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_significance.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_resample.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_transform_lengths.cpp
)
target_link_libraries(test_spectral PRIVATE tarnic_numeric GTest::gtest_main ${CMAKE_DL_LIBS})
target_compile_definitions(test_spectral PRIVATE TARNIC_DLL_PATH="${TARNIC_APP_DIR}/Tarnic.dll")
add_dependencies(test_spectral Tarnic)
gtest_discover_tests(test_spectral PROPERTIES ENVIRONMENT "${TARNIC_TEST_ENV}")
