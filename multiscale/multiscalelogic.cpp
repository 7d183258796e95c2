#include "multiscale/multiscalelogic.h"

#include "core/naming.h"
#include "core/numtext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>

#include <stdlib.h>

namespace tarnic {

// ---------------------------------------------------------------------------
// WTMM chains

std::int32_t ReadWtmmTrendOrder(double typed) {
    const std::optional<std::int32_t> order = IntOf(typed);
    if (!order) return 0;
    return std::clamp(*order, 0, 10);
}

double ReadWtmmGamma(double typed) {
    if (!std::isfinite(typed)) return 0.25;
    return std::clamp(typed, 0.0, 1.0);
}

namespace {

bool isFieldEnd(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ',';
}

// The whole field as a finite number (a leading '+' allowed), independent of
// the process's locale.
std::optional<double> fieldNumber(std::string_view field) {
    if (!field.empty() && field.front() == '+') field.remove_prefix(1);
    if (field.empty() || field.front() == '+') return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace

WtmmFile ReadWtmmFile(const std::filesystem::path& file, std::int64_t total) {
    WtmmFile result;
    std::ifstream in(file, std::ios::binary);
    if (!in) return result;
    result.status = WtmmFileStatus::Short;
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::size_t at = 0;
    auto nextField = [&]() -> std::optional<double> {
        while (at < text.size() && isFieldEnd(text[at]))
            ++at;
        const std::size_t start = at;
        while (at < text.size() && !isFieldEnd(text[at]))
            ++at;
        if (start == at) return std::nullopt;
        return fieldNumber(std::string_view(text).substr(start, at - start));
    };
    result.records.reserve(static_cast<std::size_t>(std::max<std::int64_t>(total, 0)));
    for (std::int64_t k = 0; k < total; ++k) {
        const std::optional<double> time = nextField();
        const std::optional<double> lg = time ? nextField() : std::nullopt;
        const std::optional<std::int32_t> index = time ? RoundOf(*time) : std::nullopt;
        if (!index || !lg) {
            result.records.clear();
            return result;
        }
        result.records.push_back({*index, static_cast<float>(*lg)});
    }
    result.status = WtmmFileStatus::Read;
    return result;
}

WtmmScratchPlace::WtmmScratchPlace() {
    std::error_code ec;
    previous_ = std::filesystem::current_path(ec);
    where_ = previous_;
    std::string pattern =
        (std::filesystem::temp_directory_path(ec) / "tarnic-wtmm-XXXXXX").string();
    if (ec || !mkdtemp(pattern.data())) return;
    std::filesystem::current_path(pattern, ec);
    if (ec) {
        std::filesystem::remove(pattern, ec);
        return;
    }
    where_ = pattern;
    entered_ = true;
}

WtmmScratchPlace::~WtmmScratchPlace() {
    std::error_code ignored;
    std::filesystem::remove(file(), ignored);
    if (!entered_) return;
    std::filesystem::current_path(previous_, ignored);
    std::filesystem::remove_all(where_, ignored);
}

WtmmLgRange ChainLgRange(std::span<const WtmmRecord> records) {
    WtmmLgRange range;
    for (const WtmmRecord& r : records) {
        if (r.time <= 0) continue;
        range.min = std::min(range.min, r.lg);
        range.max = std::max(range.max, r.lg);
    }
    return range;
}

WtmmProblem CheckWtmmCounts(std::span<const std::int32_t, 7> counts,
                            std::span<const double> fragment, std::span<const double> detrended) {
    auto range = [](std::span<const double> v) {
        const auto [lo, hi] = std::minmax_element(v.begin(), v.end());
        return v.empty() ? 0.0 : *hi - *lo;
    };
    double magnitude = range(fragment);
    for (double v : fragment) magnitude = std::max(magnitude, std::abs(v));
    if (std::any_of(detrended.begin(), detrended.end(), [](double v) { return !std::isfinite(v); }) ||
        range(detrended) <= 1e-9 * magnitude)
        return WtmmProblem::FlatDetrended;
    if (std::any_of(counts.begin(), counts.end(), [](std::int32_t n) { return n < 0; }))
        return WtmmProblem::BadCounts;
    if (std::all_of(counts.begin(), counts.end(), [](std::int32_t n) { return n == 0; }))
        return WtmmProblem::NoRecords;
    return WtmmProblem::None;
}

WtmmProblem CheckWtmmRun(const WtmmFile& file, const WtmmLgRange& range,
                         std::span<const double> detrended) {
    if (file.status == WtmmFileStatus::Missing) return WtmmProblem::FileMissing;
    if (file.status == WtmmFileStatus::Short) return WtmmProblem::FileShort;
    if (range.min > range.max) return WtmmProblem::NoChainPoints;
    if (range.min == range.max) return WtmmProblem::OneScale;
    if (detrended.empty() ||
        std::any_of(detrended.begin(), detrended.end(), [](double v) { return !std::isfinite(v); }))
        return WtmmProblem::FlatDetrended;
    const auto [lo, hi] = std::minmax_element(detrended.begin(), detrended.end());
    if (*lo == *hi) return WtmmProblem::FlatDetrended;
    return WtmmProblem::None;
}

std::vector<ChainStroke> PlanWtmmChains(std::span<const std::int32_t, 7> counts,
                                        std::span<const WtmmRecord> records) {
    std::vector<ChainStroke> strokes;
    const auto total = static_cast<std::int64_t>(records.size());
    auto separator = [&](std::int64_t r) {
        return records[static_cast<std::size_t>(r - 1)].lg == kWtmmSeparator;
    };
    std::int64_t base = 0;
    for (int c = 1; c <= 7; ++c) {
        const std::int64_t count = counts[static_cast<std::size_t>(c - 1)];
        if (base + count > total) break; // more counted than read: nothing beyond is drawn
        if (c <= 6) {
            for (std::int64_t j = 1; j <= count - 1; ++j) {
                const std::int64_t r = base + j;
                if (separator(r)) continue;
                if (!separator(r + 1)) {
                    strokes.push_back(
                        {c, false, static_cast<std::int32_t>(r), static_cast<std::int32_t>(r + 1)});
                } else {
                    if (r + 2 > total) return strokes;
                    strokes.push_back({c, true, static_cast<std::int32_t>(r + 2),
                                       static_cast<std::int32_t>(r + 2)});
                }
            }
        } else {
            for (std::int64_t j = 1; j <= count; ++j)
                strokes.push_back({c, true, static_cast<std::int32_t>(base + j),
                                   static_cast<std::int32_t>(base + j)});
        }
        base += count;
    }
    return strokes;
}

// ---------------------------------------------------------------------------
// Multifractal DFA

std::int32_t MfdfaMaxScaleShown(std::int32_t samples) {
    return IntClamped(samples / 5.0);
}

std::int32_t ReadMfdfaDetrendOrder(double typed) {
    const std::optional<std::int32_t> order = IntOf(typed);
    return order ? std::clamp(*order, 0, 10) : 4;
}

std::int32_t ReadMfdfaMeasureType(double typed) {
    const std::optional<std::int32_t> type = IntOf(typed);
    return type ? std::clamp(*type, 0, 1) : 0;
}

std::int32_t ReadMfdfaMaxScale(double typed, std::int32_t samples) {
    const double fifth = samples / 5.0;
    std::int32_t value = RoundClamped(fifth);
    if (const std::optional<std::int32_t> v = IntOf(typed)) value = std::max(*v, 40);
    if (fifth < value) value = RoundClamped(fifth);
    return value;
}

std::int32_t ReadMfdfaMinScale(double typed, std::int32_t maxScale) {
    std::int32_t value = 20;
    if (const std::optional<std::int32_t> v = IntOf(typed)) value = std::max(*v, 20);
    if (maxScale / 2.0 < value) value = RoundClamped(maxScale / 2.0);
    return value;
}

std::int32_t MfdfaScaleCount(std::int32_t minScale, std::int32_t maxScale) {
    return std::min(maxScale - minScale, kMfdfaMaxScaleCount);
}

std::vector<float> MfdfaLgScales(std::int32_t minScale, std::int32_t samples,
                                 std::int32_t scaleCount) {
    const double l1 = std::log(static_cast<double>(minScale)) / std::log(10.0);
    const double l2 = std::log(samples / 5.0) / std::log(10.0);
    std::vector<float> lg(static_cast<std::size_t>(std::max(scaleCount, 0)));
    for (std::int32_t s = 1; s <= scaleCount; ++s)
        lg[static_cast<std::size_t>(s - 1)] =
            static_cast<float>(l1 + (s - 1) * (l2 - l1) / (scaleCount - 1));
    return lg;
}

SpectrumRanges MfdfaSpectrumRanges(std::span<const double> alfa, std::span<const double> fAlfa) {
    SpectrumRanges r;
    if (fAlfa.empty()) return r;
    for (std::size_t i = 1; i < alfa.size() && i < fAlfa.size(); ++i) {
        if (!(fAlfa[i] > 0)) continue;
        if (alfa[i] < r.alfaMin) r.alfaMin = static_cast<float>(alfa[i]);
        if (alfa[i] > r.alfaMax) r.alfaMax = static_cast<float>(alfa[i]);
    }
    r.fMin = r.fMax = static_cast<float>(fAlfa[0]);
    for (std::size_t i = 1; i < fAlfa.size(); ++i) {
        if (fAlfa[i] < r.fMin) r.fMin = static_cast<float>(fAlfa[i]);
        if (fAlfa[i] > r.fMax) r.fMax = static_cast<float>(fAlfa[i]);
    }
    return r;
}

bool MfdfaScaleInUse(std::span<const double> flatShares, std::int32_t s) {
    return flatShares.empty() || s < 1 || static_cast<std::size_t>(s) > flatShares.size() ||
           flatShares[static_cast<std::size_t>(s - 1)] < 1.0;
}

std::string MfdfaFlatWarning(std::span<const double> flatShares,
                             std::span<const std::size_t> scales) {
    std::size_t worst = 0, warned = 0, empty = 0;
    for (std::size_t i = 0; i < flatShares.size(); ++i) {
        if (flatShares[i] > kMfdfaFlatShareWarned) ++warned;
        if (flatShares[i] >= 1.0) ++empty;
        if (flatShares[i] > flatShares[worst]) worst = i;
    }
    if (warned == 0) return {};
    std::string text = "Warning: flat stretches. At " + std::to_string(warned) + " of " +
                       std::to_string(flatShares.size()) +
                       " scales more than a tenth of the segments have no fluctuation (" +
                       std::to_string(static_cast<int>(std::lround(100.0 * flatShares[worst]))) +
                       " %";
    if (worst < scales.size()) text += " at " + std::to_string(scales[worst]) + " samples";
    text += "). They are left out of the measure";
    if (empty > 0)
        text += "; " + std::to_string(empty) +
                (empty == 1 ? " scale has" : " scales have") +
                " no fluctuating segment and is neither drawn nor fitted";
    return text + ".";
}

TableRange MfdfaTableRange(std::span<const double> zqTab, std::int32_t qCount,
                           std::int32_t scaleCount, std::span<const double> flatShares) {
    TableRange r;
    for (std::int32_t s = 1; s <= scaleCount; ++s)
        for (std::int32_t j = 1; j <= qCount && MfdfaScaleInUse(flatShares, s); j += kMfdfaQStep) {
            const double v = zqTab[static_cast<std::size_t>((s - 1) * qCount + j - 1)];
            r.lo = std::min(r.lo, v);
            r.hi = std::max(r.hi, v);
        }
    return r;
}

RegressionLine MfdfaRegression(std::span<const float> lgScale, std::span<const float> column,
                               std::span<const double> flatShares) {
    RegressionLine line;
    const std::size_t n = std::min(lgScale.size(), column.size());
    auto used = [&](std::size_t s) {
        return MfdfaScaleInUse(flatShares, static_cast<std::int32_t>(s + 1));
    };
    std::size_t count = 0;
    for (std::size_t s = 0; s < n; ++s)
        if (used(s)) line.xBar += lgScale[s], line.yBar += column[s], ++count;
    if (count == 0) return line;
    line.xBar /= static_cast<double>(count);
    line.yBar /= static_cast<double>(count);
    double sxx = 0, sxy = 0;
    for (std::size_t s = 0; s < n; ++s) {
        if (!used(s)) continue;
        sxx += (lgScale[s] - line.xBar) * (lgScale[s] - line.xBar);
        sxy += (lgScale[s] - line.xBar) * (column[s] - line.yBar);
    }
    line.slope = sxx > 0 ? sxy / sxx : 0.0;
    return line;
}

MfdfaProblem CheckMfdfaRun(std::span<const double> alfa, std::span<const double> fAlfa,
                           std::span<const double> zqTab, std::int32_t qCount,
                           std::int32_t scaleCount, std::int32_t qAsked, std::int32_t scalesAsked,
                           std::span<const double> flatShares) {
    if (qCount < 1 || scaleCount < 2 || qCount > qAsked || scaleCount > scalesAsked ||
        static_cast<std::int64_t>(qCount) * scaleCount > static_cast<std::int64_t>(zqTab.size()))
        return MfdfaProblem::BadGrid;
    auto finite = [](std::span<const double> v) {
        return std::all_of(v.begin(), v.end(), [](double x) { return std::isfinite(x); });
    };
    if (!finite(alfa) || !finite(fAlfa) ||
        !finite(
            zqTab.first(static_cast<std::size_t>(qCount) * static_cast<std::size_t>(scaleCount))))
        return MfdfaProblem::NotFinite;
    const SpectrumRanges r = MfdfaSpectrumRanges(alfa, fAlfa);
    if (r.alfaMin > r.alfaMax) return MfdfaProblem::NoSpectrum;
    if (r.alfaMin == r.alfaMax) return MfdfaProblem::OneAlfa;
    if (r.fMin == r.fMax) return MfdfaProblem::FlatSpectrum;
    std::int32_t inUse = 0;
    for (std::int32_t s = 1; s <= scaleCount; ++s)
        inUse += MfdfaScaleInUse(flatShares, s) ? 1 : 0;
    const TableRange t = MfdfaTableRange(zqTab, qCount, scaleCount, flatShares);
    if (inUse < 2 || !(t.hi > t.lo)) return MfdfaProblem::FlatTable;
    return MfdfaProblem::None;
}

std::string SingularitySpectrumText(std::int32_t detrendOrder, std::int32_t measureType,
                                    std::int32_t minScale, std::int32_t maxScale,
                                    std::span<const double> alfa, std::span<const double> fAlfa) {
    std::string text;
    auto header = [&](std::string_view literal, std::int32_t value) {
        text += literal;
        text += NumText(value);
        text += kLineEnd;
    };
    header("' Detrended polynomial order=", detrendOrder);
    header("' Type of signal`s variability measure=", measureType);
    header("' Minimum scale value (# of samples)=", minScale);
    header("' Maximum scale value (# of samples)=", maxScale);
    for (std::size_t i = 0; i < alfa.size() && i < fAlfa.size(); ++i)
        if (fAlfa[i] > 0) text += TwoColumnRecord(NumText(alfa[i]), NumText(fAlfa[i]));
    return text;
}

} // namespace tarnic
