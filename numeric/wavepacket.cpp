#include "numeric/wavepacket.h"

#include "numeric/dwt.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace tarnic {

std::size_t naturalFromFrequencyRank(std::size_t f) {
    return f ^ (f >> 1);
}

std::size_t frequencyRankFromNatural(std::size_t natural) {
    std::size_t f = natural;
    for (std::size_t s = natural >> 1; s != 0; s >>= 1)
        f ^= s;
    return f;
}

std::vector<double> packetNode(std::span<const double> x, std::span<const double> lowPass,
                               int depth, std::size_t natural) {
    if (depth < 0 || depth >= std::numeric_limits<std::size_t>::digits || natural >> depth != 0)
        throw std::invalid_argument("packetNode: bad depth or index");
    if (x.size() < (std::size_t{1} << depth) || (x.size() & (x.size() - 1)) != 0)
        throw std::invalid_argument("packetNode: length must be a power of two >= 2^depth");
    PeriodicFilterBank bank(lowPass);
    std::vector<double> node(x.begin(), x.end()), child;
    for (int step = depth - 1; step >= 0; --step) {
        child.resize(node.size() / 2);
        const bool high = (natural >> step) & 1U;
        if (high)
            bank.analyse(node, {}, child);
        else
            bank.analyse(node, child, {});
        node.swap(child);
    }
    return node;
}

namespace {

// Rebuilds the node (depth, natural) given by its coefficients alone, back to
// depth 0, into out (the working length). a and b are scratch of that length.
void synthesiseNode(PeriodicFilterBank& bank, std::span<const double> coefficients, int depth,
                    std::size_t natural, std::vector<double>& a, std::vector<double>& b) {
    std::size_t length = coefficients.size();
    std::copy(coefficients.begin(), coefficients.end(), a.begin());
    for (int d = depth; d > 0; --d, natural >>= 1) {
        const std::span<const double> node(a.data(), length);
        const std::span<double> parent(b.data(), 2 * length);
        if (natural & 1U)
            bank.synthesise({}, node, parent);
        else
            bank.synthesise(node, {}, parent);
        a.swap(b);
        length *= 2;
    }
}

double meanSquare(std::span<const double> values) {
    double sum = 0.0;
    for (double v : values)
        sum += v * v;
    return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

// The forward half of the decomposition: the extended series, the sub-band
// nodes of every component and the approximation node.
struct PacketNodes {
    ExtendedSignal extended;
    int splitSteps = 0;
    std::vector<PacketBand> bands;
    std::vector<std::vector<double>> nodes; // per component, in component order
    std::vector<double> approximation;      // node a...a at depth maxLevel
};

PacketNodes forwardPackets(std::span<const double> signal, PeriodicFilterBank& bank, int minLevel,
                           int maxLevel, int split) {
    if (signal.empty()) throw std::invalid_argument("wavelet packets: empty series");
    if (minLevel < 1 || maxLevel < minLevel)
        throw std::invalid_argument("wavelet packets: need 1 <= minLevel <= maxLevel");
    if (split < 1 || (split & (split - 1)) != 0)
        throw std::invalid_argument("wavelet packets: split must be a power of two");
    PacketNodes p;
    const std::size_t workLength = workingLength(signal.size());
    p.splitSteps = binaryExponent(static_cast<std::size_t>(split));
    if (maxLevel + p.splitSteps > binaryExponent(workLength))
        throw std::invalid_argument("wavelet packets: too many levels for the series");
    const auto subBands = static_cast<std::size_t>(split);
    p.extended = extendSymmetric(signal, workLength);

    // The pyramid of approximations; under each detail level in range the packet
    // tree of splitSteps more steps, whose leaves (natural order) are the sub-bands.
    std::vector<double> current = p.extended.values, next, detail;
    for (int j = 1; j <= maxLevel; ++j) {
        const std::size_t half = current.size() / 2;
        next.resize(half);
        detail.resize(half);
        bank.analyse(current, next, detail);
        current.swap(next);
        if (j < minLevel) continue;
        std::vector<std::vector<double>> tree{detail};
        for (int step = 0; step < p.splitSteps; ++step) {
            std::vector<std::vector<double>> children;
            children.reserve(2 * tree.size());
            for (const auto& node : tree) {
                std::vector<double> low(node.size() / 2), high(node.size() / 2);
                bank.analyse(node, low, high);
                children.push_back(std::move(low));
                children.push_back(std::move(high));
            }
            tree.swap(children);
        }
        // Component order within the level: highest frequency rank first.
        for (std::size_t r = 2 * subBands; r-- > subBands;) {
            PacketBand band;
            band.level = j;
            band.rank = r;
            const double cycles = std::ldexp(1.0, j + p.splitSteps + 1); // 2^(D+1)
            band.periodMin = cycles / static_cast<double>(r + 1);
            band.periodMax = cycles / static_cast<double>(r);
            std::vector<double>& node = tree[naturalFromFrequencyRank(r) - subBands];
            band.power = meanSquare(node);
            p.bands.push_back(band);
            p.nodes.push_back(std::move(node));
        }
    }
    p.approximation = std::move(current);
    return p;
}

} // namespace

std::vector<PacketBand> waveletPacketComponents(std::span<const double> signal,
                                                std::span<const double> lowPass, int minLevel,
                                                int maxLevel, int split,
                                                const ComponentSink& sink) {
    PeriodicFilterBank bank(lowPass);
    const PacketNodes p = forwardPackets(signal, bank, minLevel, maxLevel, split);
    const std::size_t n = signal.size();
    const std::size_t count = p.bands.size();
    const std::size_t workLength = p.extended.values.size();

    // Each component rebuilt alone, in parallel, each worker with its own filter
    // bank and scratch; task `count` is the approximation.
    const std::size_t workers = parallelWorkers(count + 1);
    std::vector<PeriodicFilterBank> banks(workers, bank);
    std::vector<std::vector<double>> scratchA(workers, std::vector<double>(workLength));
    std::vector<std::vector<double>> scratchB(workers, std::vector<double>(workLength));
    forEachIndex(count + 1, [&](std::size_t k, std::size_t worker) {
        std::vector<double>& a = scratchA[worker];
        if (k < count) {
            const PacketBand& band = p.bands[k];
            synthesiseNode(banks[worker], p.nodes[k], band.level + p.splitSteps,
                           naturalFromFrequencyRank(band.rank), a, scratchB[worker]);
        } else {
            synthesiseNode(banks[worker], p.approximation, maxLevel, 0, a, scratchB[worker]);
        }
        sink(k, std::span<const double>(a).subspan(p.extended.offset, n));
    });
    return p.bands;
}

HeisenbergBoxes heisenbergBoxes(std::span<const double> signal, std::span<const double> lowPass,
                                int minLevel, int maxLevel, int split, std::size_t columns) {
    PeriodicFilterBank bank(lowPass);
    PacketNodes p = forwardPackets(signal, bank, minLevel, maxLevel, split);
    HeisenbergBoxes boxes;
    boxes.columns = columns;
    boxes.moduli.resize(p.bands.size() * columns);
    const double width = static_cast<double>(signal.size()) / static_cast<double>(columns);
    for (std::size_t c = 0; c < columns; ++c) {
        // The middle sample of box c, in the extended series. Coefficient o of a
        // node at depth D stands for the samples o 2^D .. (o + 1) 2^D - 1.
        const std::size_t t =
            p.extended.offset + static_cast<std::size_t>((static_cast<double>(c) + 0.5) * width);
        for (std::size_t k = 0; k < p.bands.size(); ++k) {
            const int depth = p.bands[k].level + p.splitSteps;
            boxes.moduli[k * columns + c] = std::abs(p.nodes[k][t >> depth]);
        }
    }
    boxes.bands = std::move(p.bands);
    return boxes;
}

PacketDecomposition waveletPacketDecomposition(std::span<const double> signal,
                                               std::span<const double> lowPass, int minLevel,
                                               int maxLevel, int split) {
    PacketDecomposition result;
    const std::size_t n = signal.size();
    result.length = n;
    // The count is known before the first call: split sub-bands per level.
    const std::size_t count =
        maxLevel >= minLevel && split > 0
            ? static_cast<std::size_t>(maxLevel - minLevel + 1) * static_cast<std::size_t>(split)
            : 0;
    result.components.resize(count * n);
    result.approximation.resize(n);
    result.bands = waveletPacketComponents(
        signal, lowPass, minLevel, maxLevel, split,
        [&](std::size_t k, std::span<const double> values) {
            auto target = k < count ? result.components.begin() + static_cast<std::ptrdiff_t>(k * n)
                                    : result.approximation.begin();
            std::copy(values.begin(), values.end(), target);
        });
    return result;
}

UnitRange normaliseToUnitRange(std::span<const double> values, std::span<float> out) {
    if (out.size() != values.size())
        throw std::invalid_argument("normaliseToUnitRange: sizes differ");
    UnitRange range;
    if (values.empty()) return range;
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    range.offset = static_cast<float>(*low);
    range.scale = static_cast<float>(*high - *low);
    if (!(range.scale >= std::numeric_limits<float>::min()) || !std::isfinite(range.scale)) {
        range.scale = 0.0f;
        std::fill(out.begin(), out.end(), 0.5f);
        return range;
    }
    const double offset = range.offset, scale = range.scale;
    for (std::size_t i = 0; i < values.size(); ++i)
        out[i] = static_cast<float>(std::clamp((values[i] - offset) / scale, 0.0, 1.0));
    return range;
}

} // namespace tarnic
