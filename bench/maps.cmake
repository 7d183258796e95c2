# The AR spectra evolution map through its window, headless, and the costs
# inside it: the windows' spectra, the cells, the grid file. Built with Qt only
# (included from bench/CMakeLists.txt after the numeric-only return).
add_executable(bench_maps ${CMAKE_CURRENT_LIST_DIR}/bench_maps.cpp)
target_link_libraries(bench_maps PRIVATE tarnic_app benchmark::benchmark)
target_compile_definitions(bench_maps PRIVATE TARNIC_DLL_PATH="${TARNIC_APP_DIR}/Tarnic.dll")
add_dependencies(bench_maps Tarnic)
