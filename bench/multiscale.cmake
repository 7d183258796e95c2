# Benchmarks of the Morlet, WTMM and multifractal routines (included from
# bench/CMakeLists.txt). The C binding is compiled in as well, to time the
# routines exactly as the program calls them.
add_executable(bench_multiscale
    ${CMAKE_CURRENT_LIST_DIR}/bench_multiscale.cpp
    ${PROJECT_SOURCE_DIR}/numeric/exports_multiscale.cpp
)
target_link_libraries(bench_multiscale PRIVATE tarnic_numeric benchmark::benchmark)
