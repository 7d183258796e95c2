// The program's side of the binding to Tarnic.dll.
//
// The library is loaded on the first call of any routine: first from the folder
// of the executable, then by the platform's own search (LD_LIBRARY_PATH, the
// loader's cache). Each routine is resolved by its name. A library or routine
// that cannot be found raises LibraryError, a run-time error that only the file
// intake catches; no other call site guards against it, because no work can get
// past the intake without the library.
//
// The wrappers in namespace dll keep the binding visible at every call site:
// every argument by reference, arrays by their first element, file names as
// 16-bit character codes plus a length.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace tarnic {

class LibraryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class TarnicLibrary {
  public:
    static TarnicLibrary& instance();

    // The file looked for before the platform's search; by default Tarnic.dll
    // beside the running executable. Changing it forgets a loaded library.
    void setPreferredFile(std::filesystem::path file);
    // When false, the platform's own search is not tried after the preferred file.
    void setPlatformSearch(bool enabled);
    void unload();
    bool isLoaded() const { return handle_ != nullptr; }

    // Loads the library if needed and returns the address of `name`.
    void* symbol(const char* name);

  private:
    TarnicLibrary();
    void* handle_ = nullptr;
    std::filesystem::path preferred_;
    bool platformSearch_ = true;
};

std::filesystem::path executableDirectory();

namespace dll {
void CountFileRecords_dll(std::int16_t& pathCodes, std::int32_t& pathLen, std::int32_t& nrec,
                          std::int32_t& status);
void ReadSignalFile_dll(std::int16_t& pathCodes, std::int32_t& pathLen, std::int32_t& nrec,
                        float& signal);
void DemulplexTable_dll(std::int16_t& pathCodes, std::int32_t& pathLen, std::int32_t& nrec);
void DownSample_dll(float& signal, std::int32_t& nrec, float& step, float& downSignal,
                    std::int32_t& outLen);
void SpectAn_dll(float& signal, std::int32_t& nrec, std::int32_t& lengF, std::int32_t& fftLengFour,
                 std::int32_t& mm, float& spFour);
void BurgH_dll(float& samples, std::int32_t& count, std::int32_t& nfAR, std::int32_t& nar,
               float& result);
void KernSmooth_dll(double& signal, double& trend, std::int32_t& count, double& radius);
void UniStepOrthSmooth_dll(double& signal, std::int32_t& count, std::int32_t& radius,
                           std::int32_t& order, double& trend);
void FindBestFitHarm_dll(std::int32_t& fragLeng, float& fragment, float& harmonic,
                         float& ignored1, float& period, float& ignored2, float& varianceRatio);
void PeakTrough_dll(std::int32_t& fragLeng, float& fragment, float& ignored, float& period,
                    std::int32_t& firstPoint, std::int32_t& secondPoint);
void FourBandPass_dll(float& signal, std::int32_t& count, float& tmin, float& tmax);
void OrthWavePack_dll(float& signal, std::int32_t& nrec, std::int32_t& splitCoef,
                      std::int32_t& levMin, std::int32_t& levMax, std::int32_t& componentCount,
                      float& wdcTmin, float& wdcTmax, float& wdcData, std::int32_t& waveCode,
                      float& wdcMean, float& wdcScale, float& wdcPower);
void WaveBasisGraf_dll(std::int32_t& waveCode, std::int32_t& basisLength, float& waveBasis);
void Ford_dll(float& samples, std::int32_t& length, std::int32_t& waveCode);
void DonohoLevel_dll(float& filtInput, std::int32_t& nrec, std::int32_t& waveCode,
                     float& donohoValue);
void WaveFiltThresh_dll(float& filtInput, float& filtResult, std::int32_t& nrec,
                        std::int32_t& waveCode, float& threshValue);
void HeisBoxes_dll(float& heisSignal, std::int32_t& heisSamples, std::int32_t& splitCoef,
                   std::int32_t& levMin, std::int32_t& levMax, std::int32_t& heisRows,
                   float& heisScaleLow, float& heisScaleHigh, float& heisMap,
                   std::int32_t& waveCode);
void MorletWaveSvan_dll(std::int32_t& fragLeng, float& fragment, float& smin, float& smax,
                        std::int32_t& scaleCount, float& morletMap, float& morletSpec);
void WTMM_FP_dll(double& wtmmInput, std::int32_t& fragLeng, std::int32_t& trendOrder,
                 double& gamma, std::int32_t& chainCounts, double& wtmmDetrended);
void MF_DFA_dll(double& signal, std::int32_t& samples, std::int32_t& detrendOrder,
                std::int32_t& measureType, std::int32_t& minScale, std::int32_t& maxScale,
                std::int32_t& alfaCount, double& alfa, double& fAlfa, double& qMin, double& qMax,
                std::int32_t& qCount, std::int32_t& scaleCount, double& zqTab);
} // namespace dll

} // namespace tarnic
