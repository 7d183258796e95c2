# Sources of the Morlet, WTMM and multifractal routines (included from numeric/CMakeLists.txt).
target_sources(tarnic_numeric PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/morlet.cpp
    ${CMAKE_CURRENT_LIST_DIR}/wtmm.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mfdfa.cpp
)
target_sources(Tarnic PRIVATE ${CMAKE_CURRENT_LIST_DIR}/exports_multiscale.cpp)
