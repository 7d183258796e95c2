# Sources of the wavelets routines (included from numeric/CMakeLists.txt): the
# filter tables, the periodic transform, wavelet packets, threshold filtering.
target_sources(tarnic_numeric PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/wavelet_filters.cpp
    ${CMAKE_CURRENT_LIST_DIR}/dwt.cpp
    ${CMAKE_CURRENT_LIST_DIR}/wavepacket.cpp
    ${CMAKE_CURRENT_LIST_DIR}/threshold.cpp
)
target_sources(Tarnic PRIVATE ${CMAKE_CURRENT_LIST_DIR}/exports_wavelets.cpp)
