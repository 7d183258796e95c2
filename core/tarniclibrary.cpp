#include "core/tarniclibrary.h"

#include "numeric/tarnic_api.h"

#include <dlfcn.h>

namespace tarnic {

std::filesystem::path executableDirectory() {
    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::current_path() : exe.parent_path();
}

TarnicLibrary::TarnicLibrary() : preferred_(executableDirectory() / "Tarnic.dll") {}

TarnicLibrary& TarnicLibrary::instance() {
    static TarnicLibrary library;
    return library;
}

void TarnicLibrary::setPreferredFile(std::filesystem::path file) {
    unload();
    preferred_ = std::move(file);
}

void TarnicLibrary::setPlatformSearch(bool enabled) {
    unload();
    platformSearch_ = enabled;
}

void TarnicLibrary::unload() {
    if (handle_) dlclose(handle_);
    handle_ = nullptr;
}

void* TarnicLibrary::symbol(const char* name) {
    if (!handle_) {
        std::error_code ec;
        if (std::filesystem::is_regular_file(preferred_, ec))
            handle_ = dlopen(preferred_.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle_ && platformSearch_) handle_ = dlopen("Tarnic.dll", RTLD_NOW | RTLD_LOCAL);
        if (!handle_) throw LibraryError("Tarnic.dll cannot be loaded");
    }
    void* address = dlsym(handle_, name);
    if (!address) throw LibraryError(std::string("Tarnic.dll has no routine ") + name);
    return address;
}

namespace {
template <class Fn> Fn* resolve(const char* name) {
    return reinterpret_cast<Fn*>(TarnicLibrary::instance().symbol(name));
}
} // namespace

namespace dll {
void CountFileRecords_dll(std::int16_t& pathCodes, std::int32_t& pathLen, std::int32_t& nrec,
                          std::int32_t& status) {
    resolve<decltype(::CountFileRecords_dll)>("CountFileRecords_dll")(&pathCodes, &pathLen, &nrec,
                                                                       &status);
}
void ReadSignalFile_dll(std::int16_t& pathCodes, std::int32_t& pathLen, std::int32_t& nrec,
                        float& signal) {
    resolve<decltype(::ReadSignalFile_dll)>("ReadSignalFile_dll")(&pathCodes, &pathLen, &nrec,
                                                                   &signal);
}
void DemulplexTable_dll(std::int16_t& pathCodes, std::int32_t& pathLen, std::int32_t& nrec) {
    resolve<decltype(::DemulplexTable_dll)>("DemulplexTable_dll")(&pathCodes, &pathLen, &nrec);
}
void DownSample_dll(float& signal, std::int32_t& nrec, float& step, float& downSignal,
                    std::int32_t& outLen) {
    resolve<decltype(::DownSample_dll)>("DownSample_dll")(&signal, &nrec, &step, &downSignal,
                                                           &outLen);
}
void SpectAn_dll(float& signal, std::int32_t& nrec, std::int32_t& lengF, std::int32_t& fftLengFour,
                 std::int32_t& mm, float& spFour) {
    resolve<decltype(::SpectAn_dll)>("SpectAn_dll")(&signal, &nrec, &lengF, &fftLengFour, &mm,
                                                     &spFour);
}
void BurgH_dll(float& samples, std::int32_t& count, std::int32_t& nfAR, std::int32_t& nar,
               float& result) {
    resolve<decltype(::BurgH_dll)>("BurgH_dll")(&samples, &count, &nfAR, &nar, &result);
}
void KernSmooth_dll(double& signal, double& trend, std::int32_t& count, double& radius) {
    resolve<decltype(::KernSmooth_dll)>("KernSmooth_dll")(&signal, &trend, &count, &radius);
}
void UniStepOrthSmooth_dll(double& signal, std::int32_t& count, std::int32_t& radius,
                           std::int32_t& order, double& trend) {
    resolve<decltype(::UniStepOrthSmooth_dll)>("UniStepOrthSmooth_dll")(&signal, &count, &radius,
                                                                         &order, &trend);
}
void FindBestFitHarm_dll(std::int32_t& fragLeng, float& fragment, float& harmonic,
                         float& ignored1, float& period, float& ignored2, float& varianceRatio) {
    resolve<decltype(::FindBestFitHarm_dll)>("FindBestFitHarm_dll")(
        &fragLeng, &fragment, &harmonic, &ignored1, &period, &ignored2, &varianceRatio);
}
void PeakTrough_dll(std::int32_t& fragLeng, float& fragment, float& ignored, float& period,
                    std::int32_t& firstPoint, std::int32_t& secondPoint) {
    resolve<decltype(::PeakTrough_dll)>("PeakTrough_dll")(&fragLeng, &fragment, &ignored, &period,
                                                           &firstPoint, &secondPoint);
}
void FourBandPass_dll(float& signal, std::int32_t& count, float& tmin, float& tmax) {
    resolve<decltype(::FourBandPass_dll)>("FourBandPass_dll")(&signal, &count, &tmin, &tmax);
}
void OrthWavePack_dll(float& signal, std::int32_t& nrec, std::int32_t& splitCoef,
                      std::int32_t& levMin, std::int32_t& levMax, std::int32_t& componentCount,
                      float& wdcTmin, float& wdcTmax, float& wdcData, std::int32_t& waveCode,
                      float& wdcMean, float& wdcScale, float& wdcPower) {
    resolve<decltype(::OrthWavePack_dll)>("OrthWavePack_dll")(
        &signal, &nrec, &splitCoef, &levMin, &levMax, &componentCount, &wdcTmin, &wdcTmax,
        &wdcData, &waveCode, &wdcMean, &wdcScale, &wdcPower);
}
void WaveBasisGraf_dll(std::int32_t& waveCode, std::int32_t& basisLength, float& waveBasis) {
    resolve<decltype(::WaveBasisGraf_dll)>("WaveBasisGraf_dll")(&waveCode, &basisLength,
                                                                 &waveBasis);
}
void Ford_dll(float& samples, std::int32_t& length, std::int32_t& waveCode) {
    resolve<decltype(::Ford_dll)>("Ford_dll")(&samples, &length, &waveCode);
}
void DonohoLevel_dll(float& filtInput, std::int32_t& nrec, std::int32_t& waveCode,
                     float& donohoValue) {
    resolve<decltype(::DonohoLevel_dll)>("DonohoLevel_dll")(&filtInput, &nrec, &waveCode,
                                                             &donohoValue);
}
void WaveFiltThresh_dll(float& filtInput, float& filtResult, std::int32_t& nrec,
                        std::int32_t& waveCode, float& threshValue) {
    resolve<decltype(::WaveFiltThresh_dll)>("WaveFiltThresh_dll")(&filtInput, &filtResult, &nrec,
                                                                   &waveCode, &threshValue);
}
void HeisBoxes_dll(float& heisSignal, std::int32_t& heisSamples, std::int32_t& splitCoef,
                   std::int32_t& levMin, std::int32_t& levMax, std::int32_t& heisRows,
                   float& heisScaleLow, float& heisScaleHigh, float& heisMap,
                   std::int32_t& waveCode) {
    resolve<decltype(::HeisBoxes_dll)>("HeisBoxes_dll")(&heisSignal, &heisSamples, &splitCoef,
                                                         &levMin, &levMax, &heisRows, &heisScaleLow,
                                                         &heisScaleHigh, &heisMap, &waveCode);
}
void MorletWaveSvan_dll(std::int32_t& fragLeng, float& fragment, float& smin, float& smax,
                        std::int32_t& scaleCount, float& morletMap, float& morletSpec) {
    resolve<decltype(::MorletWaveSvan_dll)>("MorletWaveSvan_dll")(
        &fragLeng, &fragment, &smin, &smax, &scaleCount, &morletMap, &morletSpec);
}
void WTMM_FP_dll(double& wtmmInput, std::int32_t& fragLeng, std::int32_t& trendOrder,
                 double& gamma, std::int32_t& chainCounts, double& wtmmDetrended) {
    resolve<decltype(::WTMM_FP_dll)>("WTMM_FP_dll")(&wtmmInput, &fragLeng, &trendOrder, &gamma,
                                                     &chainCounts, &wtmmDetrended);
}
void MF_DFA_dll(double& signal, std::int32_t& samples, std::int32_t& detrendOrder,
                std::int32_t& measureType, std::int32_t& minScale, std::int32_t& maxScale,
                std::int32_t& alfaCount, double& alfa, double& fAlfa, double& qMin, double& qMax,
                std::int32_t& qCount, std::int32_t& scaleCount, double& zqTab) {
    resolve<decltype(::MF_DFA_dll)>("MF_DFA_dll")(&signal, &samples, &detrendOrder, &measureType,
                                                   &minScale, &maxScale, &alfaCount, &alfa, &fAlfa,
                                                   &qMin, &qMax, &qCount, &scaleCount, &zqTab);
}
} // namespace dll

} // namespace tarnic
