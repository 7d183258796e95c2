# Tests of the wavelets routines (included from tests/numeric/CMakeLists.txt).
add_executable(test_wavelets
    ${CMAKE_CURRENT_LIST_DIR}/test_wavelet_filters.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_wavelet_transform.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_wavelet_packets.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_wavelet_exports.cpp
)
target_link_libraries(test_wavelets PRIVATE tarnic_numeric GTest::gtest_main ${CMAKE_DL_LIBS})
target_compile_definitions(test_wavelets PRIVATE TARNIC_DLL_PATH="${TARNIC_APP_DIR}/Tarnic.dll")
# The binding test loads the built library.
add_dependencies(test_wavelets Tarnic)
gtest_discover_tests(test_wavelets PROPERTIES ENVIRONMENT "${TARNIC_TEST_ENV}")
