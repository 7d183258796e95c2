# Sources of the spectral routines: Burg and Welch spectra, their red-noise
# significance (and that of the Morlet map), Fourier resampling, and the shared
# FFTW plans (included from numeric/CMakeLists.txt).
target_sources(tarnic_numeric PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/fft_plans.cpp
    ${CMAKE_CURRENT_LIST_DIR}/burg.cpp
    ${CMAKE_CURRENT_LIST_DIR}/welch.cpp
    ${CMAKE_CURRENT_LIST_DIR}/resample.cpp
    ${CMAKE_CURRENT_LIST_DIR}/significance.cpp
)
target_sources(Tarnic PRIVATE ${CMAKE_CURRENT_LIST_DIR}/exports_spectra.cpp)
