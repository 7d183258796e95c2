# Benchmarks of the spectral routines (included from bench/CMakeLists.txt).
add_executable(bench_spectra ${CMAKE_CURRENT_LIST_DIR}/bench_spectra.cpp)
target_link_libraries(bench_spectra PRIVATE tarnic_numeric benchmark::benchmark)
