# Sources of the smoothing routines: trend smoothers, best-fit harmonic, maximum
# wave, Fourier band-pass (included from numeric/CMakeLists.txt).
target_sources(tarnic_numeric PRIVATE
    ${CMAKE_CURRENT_SOURCE_DIR}/kernsmooth.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/localpoly.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/harmonic.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/peaktrough.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/bandpass.cpp
)
target_sources(Tarnic PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/exports_smoothing.cpp)
