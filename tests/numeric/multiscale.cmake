# Tests of the Morlet, WTMM and multifractal routines (included from tests/numeric/CMakeLists.txt).
add_executable(test_multiscale
    ${CMAKE_CURRENT_LIST_DIR}/test_morlet.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_wtmm.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_mfdfa.cpp
    ${CMAKE_CURRENT_LIST_DIR}/test_multiscale_fast.cpp
)
target_link_libraries(test_multiscale PRIVATE tarnic_numeric GTest::gtest_main ${CMAKE_DL_LIBS})
# The binding tests load the built library, as the program does.
target_compile_definitions(test_multiscale PRIVATE TARNIC_DLL_PATH="${TARNIC_APP_DIR}/Tarnic.dll")
add_dependencies(test_multiscale Tarnic)
gtest_discover_tests(test_multiscale PROPERTIES ENVIRONMENT "${TARNIC_TEST_ENV}")
