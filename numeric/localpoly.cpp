#include "numeric/localpoly.h"

#include "numeric/kernsmooth.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace tarnic {
namespace {

// Windows of at least this many points build their basis by the three-term
// recurrence (see visitOrthonormalBasis).
constexpr std::size_t kLongWindow = 1000;

// Calls visit(q) for k = 0 .. degree in turn, q (m values) the polynomial q_k of
// degree k on the m points t = 0 .. m-1 of a window, q_0 .. q_degree orthonormal.
// So q_0 .. q_p span the polynomials of degree <= p on the window, and the
// least-squares fit of window data v is sum_k <q_k, v> q_k.
//
// Built by the Stieltjes procedure on the abscissa u = (t - c) / c,
// c = (m - 1) / 2, in [-1, 1]: q_{k+1} is u * q_k made orthogonal to the earlier
// ones and normalised. On short windows u * q_k is made orthogonal to all of
// q_0 .. q_k (modified Gram-Schmidt), because there the degree can come close to
// the number of points. On long ones (m >= kLongWindow, degree <= 10 far below m)
// the three-term recurrence of orthogonal polynomials suffices,
//     b_{k+1} q_{k+1} = (u - a_k) q_k - b_k q_{k-1},
// with a_k and b_{k+1} measured on the vectors themselves; then only three
// vectors are held at a time (a window may be the whole series).
template <class Visit>
void visitOrthonormalBasis(std::size_t points, std::size_t degree, Visit visit) {
    const double centre = 0.5 * static_cast<double>(points - 1);
    const double scale = points > 1 ? 1.0 / centre : 1.0;
    const auto abscissa = [&](std::size_t t) { return (static_cast<double>(t) - centre) * scale; };
    const auto normalise = [&](double* v) {
        double norm = 0.0;
        for (std::size_t t = 0; t < points; ++t)
            norm += v[t] * v[t];
        norm = std::sqrt(norm);
        for (std::size_t t = 0; t < points; ++t)
            v[t] /= norm;
        return norm;
    };

    if (points < kLongWindow) {
        std::vector<double> all(points * (degree + 1));
        std::fill_n(all.begin(), points, 1.0 / std::sqrt(static_cast<double>(points)));
        visit(static_cast<const double*>(all.data()));
        for (std::size_t k = 0; k < degree; ++k) {
            const double* q = all.data() + k * points;
            double* next = all.data() + (k + 1) * points;
            for (std::size_t t = 0; t < points; ++t)
                next[t] = abscissa(t) * q[t];
            for (std::size_t j = 0; j <= k; ++j) {
                const double* earlier = all.data() + j * points;
                double dot = 0.0;
                for (std::size_t t = 0; t < points; ++t)
                    dot += next[t] * earlier[t];
                for (std::size_t t = 0; t < points; ++t)
                    next[t] -= dot * earlier[t];
            }
            normalise(next);
            visit(static_cast<const double*>(next));
        }
        return;
    }

    std::vector<double> before(points, 0.0), current(points), next(points);
    std::fill(current.begin(), current.end(), 1.0 / std::sqrt(static_cast<double>(points)));
    visit(static_cast<const double*>(current.data()));
    double previousNorm = 0.0; // b_k; b_0 = 0 and q_{-1} = 0
    for (std::size_t k = 0; k < degree; ++k) {
        double along = 0.0; // a_k
        for (std::size_t t = 0; t < points; ++t) {
            next[t] = abscissa(t) * current[t] - previousNorm * before[t];
            along += next[t] * current[t];
        }
        for (std::size_t t = 0; t < points; ++t)
            next[t] -= along * current[t];
        previousNorm = normalise(next.data());
        visit(static_cast<const double*>(next.data()));
        std::swap(before, current);
        std::swap(current, next);
    }
}

std::size_t usableOrder(std::size_t order, std::size_t points) {
    return std::min({order, kMaxLocalPolynomialOrder, points - 1});
}

double dot(const double* a, const double* b, std::size_t n) {
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i)
        sum += a[i] * b[i];
    return sum;
}

} // namespace

std::vector<double> savitzkyGolayKernel(std::size_t radius, std::size_t order) {
    // h_j = sum_k q_k(radius) q_k(radius + j): the middle row of the projection
    // Q Q^T onto the polynomials.
    const std::size_t points = 2 * radius + 1;
    std::vector<double> row(points, 0.0);
    visitOrthonormalBasis(points, usableOrder(order, points), [&](const double* q) {
        for (std::size_t t = 0; t < points; ++t)
            row[t] += q[radius] * q[t];
    });
    return row;
}

void localPolynomialSmooth(std::span<const double> x, std::size_t radius, std::size_t order,
                           std::span<double> out) {
    if (out.size() != x.size()) throw std::invalid_argument("output length differs from input");
    const std::size_t n = x.size();
    if (n == 0) return;
    if (radius == 0 || n == 1) {
        std::copy(x.begin(), x.end(), out.begin());
        return;
    }
    const std::size_t points = radius >= n / 2 ? n : 2 * radius + 1;
    const std::size_t degree = usableOrder(order, points);
    if (points == n) {
        // One window, the whole series: y = sum_k <q_k, x> q_k.
        std::fill(out.begin(), out.end(), 0.0);
        visitOrthonormalBasis(n, degree, [&](const double* q) {
            const double coefficient = dot(q, x.data(), n);
            for (std::size_t t = 0; t < n; ++t)
                out[t] += coefficient * q[t];
        });
        return;
    }

    // One pass over the basis gives the Savitzky-Golay weights (the middle row of
    // the projection) and the two end fits: the first window 0 .. points-1
    // evaluated at its first radius points, the last window n-points .. n-1 at its
    // last radius points. The basis depends only on the window length, so one
    // serves all three.
    const std::size_t last = n - points;
    std::vector<double> weights(points, 0.0), head(radius, 0.0), tail(radius, 0.0);
    visitOrthonormalBasis(points, degree, [&](const double* q) {
        for (std::size_t t = 0; t < points; ++t)
            weights[t] += q[radius] * q[t];
        const double headCoefficient = dot(q, x.data(), points);
        const double tailCoefficient = dot(q, x.data() + last, points);
        for (std::size_t t = 0; t < radius; ++t) {
            head[t] += headCoefficient * q[t];
            tail[t] += tailCoefficient * q[points - radius + t];
        }
    });

    // Interior, radius <= i < n - radius: the centred windows, one correlation
    // (it also fills the end points, from zero-extended windows; they are
    // replaced). The mean is taken out first so that the FFT's rounding follows
    // the variation of x and not its level; the weights sum to 1.
    double mean = 0.0;
    for (double v : x)
        mean += v;
    mean /= static_cast<double>(n);
    correlateCentred(x, weights, out, mean);
    for (std::size_t i = radius; i < n - radius; ++i)
        out[i] += mean;
    std::copy(head.begin(), head.end(), out.begin());
    std::copy(tail.begin(), tail.end(), out.begin() + static_cast<std::ptrdiff_t>(n - radius));
}

} // namespace tarnic
