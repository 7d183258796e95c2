#include "core/naming.h"

#include "core/numtext.h"

namespace tarnic {
namespace {

std::string dropTrailingZeros(std::string s) {
    while (!s.empty() && s.back() == '0') s.pop_back();
    return s;
}

std::string bracketTimes(double first, double last) {
    return BareNumText(first) + "," + BareNumText(last);
}

std::string bracketTimes(float first, float last) {
    return BareNumText(first) + "," + BareNumText(last);
}

} // namespace

std::string ShortNumText(const std::string& s) {
    const auto point = s.find('.');
    if (point == std::string::npos) return s;
    const auto e = s.find('E');
    if (e == std::string::npos) {
        if (s.find("000") == point + 1) return s;
        const std::size_t m = std::min<std::size_t>(s.size() - point - 1, 3);
        return dropTrailingZeros(s.substr(0, point + 1 + m));
    }
    const std::size_t m = std::min<std::size_t>(e - point - 1, 3);
    return dropTrailingZeros(s.substr(0, point + 1 + m)) + s.substr(e);
}

std::string ShortNumText(float value) { return ShortNumText(NumText(value)); }
std::string ShortNumText(double value) { return ShortNumText(NumText(value)); }

std::string CutDat(const std::string& composed) {
    const auto at = composed.find(".dat");
    if (at == std::string::npos) return composed;
    return composed.substr(0, at) + composed.substr(at + 4);
}

std::string ComposeName(const std::string& composed, std::string_view closing) {
    return CutDat(composed) + std::string(closing);
}

std::string BareNumText(double value) {
    std::string s = NumText(value);
    if (!s.empty() && s.front() == ' ') s.erase(0, 1);
    return s;
}

std::string BareNumText(float value) {
    std::string s = NumText(value);
    if (!s.empty() && s.front() == ' ') s.erase(0, 1);
    return s;
}

std::string TwoColumnRecord(const std::string& first, const std::string& second) {
    std::string line = first;
    if (!second.empty() && second.front() == '-') line += ' ';
    line += second;
    line += kLineEnd;
    return line;
}

std::string TwoColumnRecord(float value, double time) {
    return TwoColumnRecord(NumText(value), NumText(time));
}

void AppendTwoColumnRecord(std::string& out, float value, double time) {
    out += NumText(value);
    const std::string second = NumText(time);
    if (second.front() == '-') out += ' ';
    out += second;
    out += kLineEnd;
}

std::string ZoneRecord(const std::string& first, const std::string& second,
                       const std::string& third) {
    std::string line = first + " ";
    auto toNextZone = [&line] {
        // Columns count from 1; zones start at 1, 15, 29, ...
        const std::size_t column = line.size() + 1;
        const std::size_t next = ((column - 1 + 13) / 14) * 14 + 1;
        line.append(next - column, ' ');
    };
    toNextZone();
    line += second + " ";
    toNextZone();
    line += third;
    line += kLineEnd;
    return line;
}

std::string ZoneRecord(float first, float second, float third) {
    return ZoneRecord(NumText(first), NumText(second), NumText(third));
}

std::string ThreeColumnRecord(const std::string& first, const std::string& second,
                              const std::string& third) {
    std::string line = first;
    if (!second.empty() && second.front() == '-') line += ' ';
    line += second;
    if (!third.empty() && third.front() == '-') line += ' ';
    line += third;
    line += kLineEnd;
    return line;
}

std::string PlainNumberLine(const std::string& numText) {
    return numText + " " + std::string(kLineEnd);
}

namespace names {

std::string Increments(const std::string& S) { return ComposeName(S + "-INC", ".dat"); }

std::string Winsorized(const std::string& S) { return ComposeName(S + "-WINZ", ".dat"); }

std::string DownSampled(const std::string& S, const std::string& stepText) {
    return ComposeName(S + "-DNS=" + stepText, ".dat");
}

std::string DownSampledVariance(const std::string& S, double intStep) {
    return ComposeName(S + "-Var.DNS=" + NumText(intStep), ".dat");
}

std::string SpectrumAR(const std::string& D, const std::string& N, std::int32_t nar,
                       std::int32_t lengAR) {
    return ComposeName(D + "/SpectEstimates/Sp_AR(" + N + ") AR=" + NumText(nar) +
                           ",Leng=" + NumText(lengAR),
                       ".dat");
}

std::string SpectrumFourier(const std::string& D, const std::string& N, std::int32_t mm,
                            std::int32_t lengF) {
    return ComposeName(D + "/SpectEstimates/Sp_Four(" + N + ") MM=" + NumText(mm) +
                           ",Leng=" + NumText(lengF),
                       ".dat");
}

std::string SpectrumARRedNoise(const std::string& D, const std::string& N, std::int32_t nar,
                               std::int32_t lengAR) {
    return ComposeName(D + "/SpectEstimates/Sp_AR(" + N + ") AR=" + NumText(nar) +
                           ",Leng=" + NumText(lengAR) + ",RedNoise",
                       ".dat");
}

std::string SpectrumFourierLevel(const std::string& D, const std::string& N, std::int32_t mm,
                                 std::int32_t lengF, std::int32_t percent) {
    return ComposeName(D + "/SpectEstimates/Sp_Four(" + N + ") MM=" + NumText(mm) +
                           ",Leng=" + NumText(lengF) + ",Level=" + NumText(percent),
                       ".dat");
}

std::string BandPass(const std::string& bpfBaseName, double firstTime, double lastTime) {
    return ComposeName(bpfBaseName + "Tmin,max=" + ShortNumText(firstTime) + "," +
                           ShortNumText(lastTime),
                       ").dat");
}

std::string Trend(const std::string& S, const std::string& radius, const std::string& order) {
    return ComposeName(S + "-TRN,Rad=" + radius + (order.empty() ? "" : ",Ord=" + order), ".dat");
}

std::string Residual(const std::string& S, const std::string& radius, const std::string& order) {
    return ComposeName(S + "-RSD,Rad=" + radius + (order.empty() ? "" : ",Ord=" + order), ".dat");
}

std::string Fragment(const std::string& S, double firstTime, double lastTime) {
    return ComposeName(S + ",PART[" + bracketTimes(firstTime, lastTime), "].dat");
}

std::string Harmonic(const std::string& S, bool detrended, float period, double firstTime,
                     double lastTime) {
    return ComposeName(S, std::string(detrended ? ",DeTrended" : "") + "(BestFitHarm,T=" +
                              ShortNumText(period) + ",[" + NumText(firstTime) + "," +
                              NumText(lastTime) + "]).dat");
}

std::string Component(const std::string& wdcStem, double first, double second) {
    return ComposeName(wdcStem + "Tmin,max=" + ShortNumText(first) + "," +
                           ShortNumText(second),
                       ").dat");
}

std::string WavePacketSpectrum(const std::string& D, const std::string& N) {
    return ComposeName(D + "/SpectEstimates/WaveSp(" + N, ").dat");
}

std::string ThresholdMain(const std::string& S, const std::string& levelText, bool symlet,
                          std::int32_t order) {
    return ComposeName(S + "-THR-MAIN(" + levelText + (symlet ? ",Sym" : ",Daub") + NumText(order),
                       ").dat");
}

std::string ThresholdResidual(const std::string& S, const std::string& levelText, bool symlet,
                              std::int32_t order) {
    return ComposeName(S + "-THR-RSD(" + levelText + (symlet ? ",Sym" : ",Daub") + NumText(order),
                       ").dat");
}

std::string SpectraEvolutionGrid(const std::string& D, const std::string& N, std::int32_t length,
                                 std::int32_t shift, std::int32_t order) {
    return ComposeName(D + "/GRID_files/Lg(Sp)_" + N + "_Leng=" + NumText(length) +
                           ",Shift=" + NumText(shift) + ",AR=" + NumText(order),
                       ".grd");
}

std::string MorletGrid(const std::string& D, const std::string& N, float firstTime,
                       float lastTime, bool detrended) {
    return ComposeName(D + "/GRID_files/Lg(WaveCoeff^2)_" + N + ",PART[" +
                           bracketTimes(firstTime, lastTime) + "]",
                       std::string(detrended ? ",DeTrended" : "") + ".grd");
}

std::string MorletSpectrum(const std::string& D, const std::string& N, float firstTime,
                           float lastTime, bool detrended) {
    return ComposeName(D + "/SpectEstimates/Sp(WaveCoeff^2)_" + N + ",PART[" +
                           bracketTimes(firstTime, lastTime) + "]",
                       std::string(detrended ? ",DeTrended" : "") + ".dat");
}

std::string MorletSpectrumLevel(const std::string& D, const std::string& N, float firstTime,
                                float lastTime, bool detrended, std::int32_t percent) {
    return ComposeName(D + "/SpectEstimates/Sp(WaveCoeff^2)_" + N + ",PART[" +
                           bracketTimes(firstTime, lastTime) + "],Level=" + NumText(percent),
                       std::string(detrended ? ",DeTrended" : "") + ".dat");
}

std::string MorletCone(const std::string& D, const std::string& N, float firstTime,
                       float lastTime, bool detrended) {
    return ComposeName(D + "/GRID_files/Cone(WaveCoeff^2)_" + N + ",PART[" +
                           bracketTimes(firstTime, lastTime) + "]",
                       std::string(detrended ? ",DeTrended" : "") + ".dat");
}

std::string HeisenbergGrid(const std::string& D, const std::string& N, float firstTime,
                           float lastTime, bool detrended) {
    return ComposeName(D + "/GRID_files/Lg(AbsWaveCoeff_HBoxes)_" + N + ",PART[" +
                           bracketTimes(firstTime, lastTime) + "]",
                       std::string(detrended ? ",DeTrended" : "") + ".grd");
}

std::string SingularitySpectrum(const std::string& D, const std::string& N, float firstTime,
                                float lastTime) {
    return ComposeName(D + "/SpectEstimates/F(Alfa)_" + N + ",PART[" +
                           bracketTimes(firstTime, lastTime) + "]",
                       ".dat");
}

} // namespace names
} // namespace tarnic
