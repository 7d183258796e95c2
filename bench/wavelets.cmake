# Benchmarks of the wavelets routines (included from bench/CMakeLists.txt). The C
# binding is compiled in as well, to time the routines exactly as the program
# calls them.
add_executable(bench_wavelets
    ${CMAKE_CURRENT_LIST_DIR}/bench_wavelets.cpp
    ${PROJECT_SOURCE_DIR}/numeric/exports_wavelets.cpp
)
target_link_libraries(bench_wavelets PRIVATE tarnic_numeric benchmark::benchmark)
