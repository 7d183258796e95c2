#include "numeric/mfdfa.h"

#include "numeric/workers.h"

#include <Eigen/Core>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <thread>

namespace tarnic {
namespace {

// A segment measure at or below this share of max |x| counts as no fluctuation.
constexpr double zeroMeasureShare = 1e-11;
// |q| below this is q = 0 (the geometric-mean limit).
constexpr double zeroQ = 1e-12;

// Four running sums, so that no addition waits on the one before.
double dot(const double* __restrict a, const double* __restrict b, std::size_t n) {
    double s[4] = {0.0, 0.0, 0.0, 0.0};
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4)
        for (std::size_t u = 0; u < 4; ++u)
            s[u] += a[i + u] * b[i + u];
    for (; i < n; ++i)
        s[0] += a[i] * b[i];
    return (s[0] + s[1]) + (s[2] + s[3]);
}

double maxAbs(std::span<const double> x) {
    double m = 0.0;
    for (double v : x)
        m = std::max(m, std::abs(v));
    return m;
}

// ln Z(q, s) from the logarithms of the segment measures: the log of the power
// mean, computed around the extreme logarithm so that no power overflows.
double logPowerMean(std::span<const double> logMeasures, double q) {
    const double count = static_cast<double>(logMeasures.size());
    if (std::abs(q) < zeroQ)
        return std::accumulate(logMeasures.begin(), logMeasures.end(), 0.0) / count;
    const auto [lo, hi] = std::minmax_element(logMeasures.begin(), logMeasures.end());
    const double pivot = q > 0 ? *hi : *lo; // makes every q (L - pivot) <= 0
    double sum = 0.0;
    for (double l : logMeasures)
        sum += std::exp(q * (l - pivot));
    return pivot + (std::log(sum) - std::log(count)) / q;
}

// Sum of x[0 .. count-1] in four running sums, so that no addition waits on
// the one before (the order of the additions differs from the plain loop's by
// rounding only).
double sumOf(const double* __restrict x, std::size_t count) {
    double s[4] = {0.0, 0.0, 0.0, 0.0};
    std::size_t k = 0;
    for (; k + 4 <= count; k += 4)
        for (std::size_t u = 0; u < 4; ++u)
            s[u] += x[k + u];
    for (; k < count; ++k)
        s[0] += x[k];
    return (s[0] + s[1]) + (s[2] + s[3]);
}

// power[k] *= ratio[k] for every k, and the sum of the new powers as sumOf().
double scaleAndSum(double* __restrict power, const double* __restrict ratio, std::size_t count) {
    double s[4] = {0.0, 0.0, 0.0, 0.0};
    std::size_t k = 0;
    for (; k + 4 <= count; k += 4)
        for (std::size_t u = 0; u < 4; ++u) {
            power[k + u] *= ratio[k + u];
            s[u] += power[k + u];
        }
    for (; k < count; ++k) {
        power[k] *= ratio[k];
        s[0] += power[k];
    }
    return (s[0] + s[1]) + (s[2] + s[3]);
}

// Powers of consecutive q are taken afresh by exp() at every exactEvery-th q.
constexpr std::size_t exactEvery = 32;

// logPowerMean() for every q of `q` at once, into out. For q evenly spaced (as
// the analysis makes them) the powers of a measure over consecutive q form a
// geometric sequence, r^(q + dq) = r^q r^dq: each power is the previous one
// times a ratio formed once per measure, and taken afresh by exp() at every
// 32nd q, so rounding grows over at most 31 products (below 1e-14) while 31
// of every 32 exponentials are saved. Other q are done one by one.
void logPowerMeans(std::span<const double> logMeasures, std::span<const double> q,
                   std::span<double> out) {
    const std::size_t qn = q.size();
    const std::size_t count = logMeasures.size();
    const double dq = qn >= 2 ? (q[qn - 1] - q[0]) / static_cast<double>(qn - 1) : 0.0;
    bool even = qn >= 2;
    for (std::size_t j = 0; j < qn && even; ++j)
        even = std::abs(q[j] - (q[0] + dq * static_cast<double>(j))) <= 1e-12 * (1.0 + std::abs(q[j]));
    if (!even) {
        for (std::size_t j = 0; j < qn; ++j)
            out[j] = logPowerMean(logMeasures, q[j]);
        return;
    }
    const auto [lo, hi] = std::minmax_element(logMeasures.begin(), logMeasures.end());
    const double logCount = std::log(static_cast<double>(count));
    std::vector<double> distance(count), ratio(count), power(count);
    for (const bool positive : {true, false}) {
        // As in logPowerMean(): every q (L - pivot) <= 0, so nothing overflows.
        const double pivot = positive ? *hi : *lo;
        for (std::size_t k = 0; k < count; ++k) {
            distance[k] = logMeasures[k] - pivot;
            ratio[k] = std::exp(dq * distance[k]);
        }
        std::size_t run = 0; // q of this sign since the last exact powers
        for (std::size_t j = 0; j < qn; ++j) {
            if (std::abs(q[j]) < zeroQ || (q[j] > 0) != positive) {
                run = 0;
                continue;
            }
            double sum = 0.0;
            if (run % exactEvery == 0) {
                for (std::size_t k = 0; k < count; ++k)
                    power[k] = std::exp(q[j] * distance[k]);
                sum = sumOf(power.data(), count);
            } else {
                sum = scaleAndSum(power.data(), ratio.data(), count);
            }
            ++run;
            out[j] = pivot + (std::log(sum) - logCount) / q[j];
        }
    }
    for (std::size_t j = 0; j < qn; ++j)
        if (std::abs(q[j]) < zeroQ) out[j] = logPowerMean(logMeasures, q[j]);
}

// Least-squares slope of y on x.
double slope(std::span<const double> x, std::span<const double> y) {
    const double n = static_cast<double>(x.size());
    const double xBar = std::accumulate(x.begin(), x.end(), 0.0) / n;
    const double yBar = std::accumulate(y.begin(), y.end(), 0.0) / n;
    double sxx = 0.0, sxy = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        sxx += (x[i] - xBar) * (x[i] - xBar);
        sxy += (x[i] - xBar) * (y[i] - yBar);
    }
    return sxx > 0.0 ? sxy / sxx : 0.0;
}

// The Legendre transform max{min over q of (q (alpha - h(q)) + 1), 0}.
double legendre(double alpha, std::span<const double> q, std::span<const double> h) {
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t j = 0; j < q.size(); ++j)
        least = std::min(least, q[j] * (alpha - h[j]) + 1.0);
    // Rounding leaves a few ulps at the exact ends of the support.
    return least > 1e-12 ? least : 0.0;
}

} // namespace

PolynomialDetrender::PolynomialDetrender(std::size_t length, int order) : length_(length) {
    const std::size_t wanted = static_cast<std::size_t>(std::max(order, 0)) + 1;
    const std::size_t columns = std::min(wanted, length);
    basis_.reserve(columns * length);
    if (length == 0) return;
    // The abscissa mapped onto [-1, 1]; each new column is the previous one times
    // u, orthogonalised twice against all columns so far (Arnoldi on the diagonal
    // matrix of u), which spans the same polynomials as 1, u, u^2, ...
    std::vector<double> u(length, 0.0);
    if (length > 1)
        for (std::size_t t = 0; t < length; ++t)
            u[t] = 2.0 * static_cast<double>(t) / static_cast<double>(length - 1) - 1.0;
    std::vector<double> v(length, 1.0);
    for (std::size_t k = 0; k < columns; ++k) {
        if (k > 0) {
            const double* previous = basis_.data() + (k - 1) * length;
            for (std::size_t t = 0; t < length; ++t)
                v[t] = u[t] * previous[t];
        }
        const double before = std::sqrt(dot(v.data(), v.data(), length));
        // Classical Gram-Schmidt twice, as matrix-vector products over the
        // columns so far (basis_ has its full capacity, so they stay in place).
        if (k > 0) {
            const Eigen::Map<const Eigen::MatrixXd> q(basis_.data(), static_cast<Eigen::Index>(length),
                                                      static_cast<Eigen::Index>(k));
            Eigen::Map<Eigen::VectorXd> w(v.data(), static_cast<Eigen::Index>(length));
            for (int pass = 0; pass < 2; ++pass) {
                const Eigen::VectorXd c = q.transpose() * w;
                w.noalias() -= q * c;
            }
        }
        const double norm = std::sqrt(dot(v.data(), v.data(), length));
        if (!(norm > 1e-10 * before)) break; // no new direction left
        basis_.resize((k + 1) * length);
        double* column = basis_.data() + k * length;
        for (std::size_t t = 0; t < length; ++t)
            column[t] = v[t] / norm;
        rank_ = k + 1;
    }
}

void PolynomialDetrender::residual(std::span<const double> y, std::span<double> residual) const {
    const std::size_t n = length_;
    if (residual.data() != y.data()) std::copy_n(y.data(), n, residual.data());
    // With an orthonormal basis <y, q_j> equals <residual so far, q_j>; taking
    // the latter is the more accurate (modified Gram-Schmidt).
    for (std::size_t j = 0; j < rank_; ++j) {
        const double* column = basis_.data() + j * n;
        const double c = dot(column, residual.data(), n);
        for (std::size_t t = 0; t < n; ++t)
            residual[t] -= c * column[t];
    }
}

std::vector<double> removePolynomialTrend(std::span<const double> x, int order) {
    std::vector<double> out(x.size());
    if (x.empty()) return out;
    PolynomialDetrender(x.size(), order).residual(x, out);
    return out;
}

namespace {

// segmentFluctuations() into out, the residuals kept in `residuals` (grown as
// needed), so that a worker going through many scales allocates them once.
void segmentMeasures(std::span<const double> x, std::size_t s, int order,
                     FluctuationMeasure measure, std::vector<double>& residuals,
                     std::vector<double>& out) {
    out.clear();
    if (s == 0 || x.size() < s) return;
    const PolynomialDetrender detrender(s, order);
    const std::size_t segments = x.size() / s;
    // The segments side by side are the columns of an s x K matrix Y; with the
    // orthonormal basis Q (s x rank) the residuals of all of them are
    // Y - Q (Q^T Y): two matrix products instead of K separate fits.
    using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic>;
    const auto rows = static_cast<Eigen::Index>(s);
    const auto columns = static_cast<Eigen::Index>(segments);
    const Eigen::Map<const Matrix> y(x.data(), rows, columns);
    const Eigen::Map<const Matrix> q(detrender.basis().data(), rows,
                                     static_cast<Eigen::Index>(detrender.rank()));
    if (residuals.size() < s * segments) residuals.resize(s * segments);
    Eigen::Map<Matrix> dy(residuals.data(), rows, columns);
    dy = y;
    if (detrender.rank() > 0) {
        const Matrix coefficients = q.transpose() * y;
        dy.noalias() -= q * coefficients;
    }
    out.resize(segments);
    for (std::size_t k = 0; k < segments; ++k) {
        const auto column = dy.col(static_cast<Eigen::Index>(k));
        out[k] = measure == FluctuationMeasure::Range
                     ? column.maxCoeff() - column.minCoeff()
                     : std::sqrt(column.squaredNorm() / static_cast<double>(s));
    }
}

} // namespace

std::vector<double> segmentFluctuations(std::span<const double> x, std::size_t s, int order,
                                        FluctuationMeasure measure) {
    std::vector<double> residuals, out;
    segmentMeasures(x, s, order, measure, residuals, out);
    return out;
}

std::vector<double> flatSegmentShares(std::span<const double> x,
                                      std::span<const std::size_t> scales, int order,
                                      FluctuationMeasure measure) {
    const double zeroLevel = zeroMeasureShare * maxAbs(x);
    std::vector<double> shares;
    shares.reserve(scales.size());
    for (const std::size_t s : scales) {
        const std::vector<double> measures = segmentFluctuations(x, s, order, measure);
        const auto flat = std::count_if(measures.begin(), measures.end(), [&](double m) {
            return !(m > zeroLevel && std::isfinite(m));
        });
        shares.push_back(measures.empty() ? 1.0
                                          : static_cast<double>(flat) /
                                                static_cast<double>(measures.size()));
    }
    return shares;
}

std::vector<std::size_t> mfdfaScales(std::size_t n, int minScale, int maxScale, std::size_t count) {
    std::vector<std::size_t> scales;
    if (n < 2 || count == 0) return scales;
    const double top = static_cast<double>(n);
    const double lo = std::clamp(static_cast<double>(minScale), 2.0, top);
    const double hi = std::clamp(static_cast<double>(maxScale), lo, top);
    const double ratio = std::log(hi / lo);
    for (std::size_t i = 0; i < count; ++i) {
        const double fraction =
            count > 1 ? static_cast<double>(i) / static_cast<double>(count - 1) : 0.0;
        const double s =
            i + 1 == count && count > 1 ? hi : std::round(lo * std::exp(ratio * fraction));
        const auto whole = static_cast<std::size_t>(s);
        if (scales.empty() || whole != scales.back()) scales.push_back(whole);
    }
    return scales;
}

std::vector<double> evenGrid(double lo, double hi, std::size_t count) {
    std::vector<double> grid(count);
    for (std::size_t i = 0; i < count; ++i)
        grid[i] = count > 1
                      ? lo + (hi - lo) * static_cast<double>(i) / static_cast<double>(count - 1)
                      : lo;
    if (count > 1) grid.back() = hi;
    return grid;
}

MfdfaResult mfdfa(std::span<const double> x, const MfdfaSettings& settings) {
    MfdfaResult r;
    r.q = evenGrid(settings.qMin, settings.qMax, settings.qCount);
    r.scales = mfdfaScales(x.size(), settings.minScale, settings.maxScale, settings.scaleCount);
    const std::size_t qn = r.q.size();
    r.log10Z.assign(r.scales.size() * qn, 0.0);
    r.h.assign(qn, 0.0);

    // ln Z(q, s) of every scale, the scales shared out among worker threads a
    // scale at a time; each is computed the same way whichever thread takes it,
    // so the result does not depend on their number. An empty row: no segment
    // of that scale fluctuates.
    const double zeroLevel = zeroMeasureShare * maxAbs(x);
    const std::size_t scaleCount = r.scales.size();
    std::vector<std::vector<double>> lnZ(scaleCount);
    std::atomic<std::size_t> next{0};
    const std::size_t workers = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1,
                                                        std::min<std::size_t>(8, scaleCount));
    runWorkers(std::max<std::size_t>(workers, 1), [&](std::size_t) {
        std::vector<double> logMeasures, measures, residuals;
        for (std::size_t i = next++; i < scaleCount; i = next++) {
            segmentMeasures(x, r.scales[i], settings.order, settings.measure, residuals, measures);
            logMeasures.clear();
            for (double m : measures)
                if (m > zeroLevel && std::isfinite(m)) logMeasures.push_back(std::log(m));
            if (logMeasures.empty()) continue;
            lnZ[i].resize(qn);
            logPowerMeans(logMeasures, r.q, lnZ[i]);
        }
    });

    // ln Z(q, s) of the usable scales, to regress on ln s.
    std::vector<double> logScale;
    std::vector<std::vector<double>> logZ(qn);
    for (std::size_t i = 0; i < scaleCount; ++i) {
        if (lnZ[i].empty()) continue; // (always so without q: no scaling then)
        logScale.push_back(std::log(static_cast<double>(r.scales[i])));
        for (std::size_t j = 0; j < qn; ++j) {
            logZ[j].push_back(lnZ[i][j]);
            r.log10Z[i * qn + j] = lnZ[i][j] / std::numbers::ln10;
        }
    }

    // The scales are distinct, so two of them give a slope.
    if (qn == 0 || logScale.size() < 2) {
        r.outcome = MfdfaOutcome::NoScaling;
        r.alpha = evenGrid(0.0, 1.0, settings.alphaCount);
        r.f.assign(r.alpha.size(), 0.0);
        return r;
    }
    for (std::size_t j = 0; j < qn; ++j)
        r.h[j] = slope(logScale, logZ[j]);
    SingularitySpectrum spectrum = singularitySpectrum(r.q, r.h, settings.alphaCount);
    r.alpha = std::move(spectrum.alpha);
    r.f = std::move(spectrum.f);
    r.outcome = spectrum.positive ? MfdfaOutcome::Spectrum : MfdfaOutcome::NoSpectrum;
    return r;
}

SingularitySpectrum singularitySpectrum(std::span<const double> q, std::span<const double> h,
                                        std::size_t alphaCount) {
    SingularitySpectrum result;
    if (q.empty() || q.size() != h.size()) {
        result.alpha = evenGrid(0.0, 1.0, alphaCount);
        result.f.assign(result.alpha.size(), 0.0);
        return result;
    }
    // The support of F: alpha > h(q) - 1/q for every q > 0, alpha < h(q) + 1/|q|
    // for every q < 0.
    double lo = -std::numeric_limits<double>::infinity();
    double hi = std::numeric_limits<double>::infinity();
    double leastAbsQ = std::numeric_limits<double>::infinity();
    for (std::size_t j = 0; j < q.size(); ++j) {
        if (std::abs(q[j]) < zeroQ) continue;
        leastAbsQ = std::min(leastAbsQ, std::abs(q[j]));
        if (q[j] > 0)
            lo = std::max(lo, h[j] - 1.0 / q[j]);
        else
            hi = std::min(hi, h[j] - 1.0 / q[j]);
    }
    const auto [hLow, hHigh] = std::minmax_element(h.begin(), h.end());
    if (std::isinf(lo) && std::isinf(hi)) { // q = 0 alone
        lo = *hLow - 0.5;
        hi = *hHigh + 0.5;
    } else if (std::isinf(hi)) {
        hi = *hHigh + 1.0 / leastAbsQ;
    } else if (std::isinf(lo)) {
        lo = *hLow - 1.0 / leastAbsQ;
    }
    if (lo < hi)
        result.alpha = evenGrid(lo, hi, alphaCount);
    else if (*hLow < *hHigh)
        result.alpha = evenGrid(*hLow, *hHigh, alphaCount);
    else
        result.alpha = evenGrid(*hLow - 0.5, *hHigh + 0.5, alphaCount);
    result.f.resize(result.alpha.size());
    for (std::size_t i = 0; i < result.alpha.size(); ++i) {
        result.f[i] = legendre(result.alpha[i], q, h);
        result.positive = result.positive || result.f[i] > 0.0;
    }
    return result;
}

} // namespace tarnic
