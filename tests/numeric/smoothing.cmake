# Tests of the smoothing routines (included from tests/numeric/CMakeLists.txt).
add_executable(test_smoothing
    ${CMAKE_CURRENT_SOURCE_DIR}/test_smoothers.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/test_harmonic.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/test_bandpass.cpp
    # The C adapters are compiled in as well, so the tests call the _dll
    # routines directly, without loading the library.
    ${PROJECT_SOURCE_DIR}/numeric/exports_smoothing.cpp
)
target_link_libraries(test_smoothing PRIVATE tarnic_numeric GTest::gtest_main)
gtest_discover_tests(test_smoothing PROPERTIES ENVIRONMENT "${TARNIC_TEST_ENV}")
