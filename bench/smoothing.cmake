# Benchmarks of the smoothing routines (included from bench/CMakeLists.txt).
add_executable(bench_smoothing ${CMAKE_CURRENT_SOURCE_DIR}/bench_smoothing.cpp)
target_link_libraries(bench_smoothing PRIVATE tarnic_numeric benchmark::benchmark)
