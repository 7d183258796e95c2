# Sources of the Morlet, WTMM and multifractal routines (included from numeric/CMakeLists.txt).
target_sources(tarnic_numeric PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/morlet.cpp
    ${CMAKE_CURRENT_LIST_DIR}/wtmm.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mfdfa.cpp
)
target_sources(Tarnic PRIVATE ${CMAKE_CURRENT_LIST_DIR}/exports_multiscale.cpp)
# GCC at -O2 vectorises only loops whose trip count the vector width divides;
# the inner loops of these two run over segment and band lengths of any size.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/morlet.cpp ${CMAKE_CURRENT_LIST_DIR}/mfdfa.cpp
        PROPERTIES COMPILE_OPTIONS "-fvect-cost-model=dynamic")
endif()
