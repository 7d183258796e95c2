// Orthogonal wavelet-packet decomposition of a series into band components.
//
// The usual wavelet transform splits the series into detail levels 1, 2, ...
// (level j holds the frequencies 1/2^(j+1) .. 1/2^j cycles per sample, periods
// 2^j .. 2^(j+1) samples) and an approximation. Here each detail level is split
// further by the packet transform into `split` sub-bands of equal width in
// frequency (split a power of two), and each sub-band is rebuilt alone in the
// time domain: a component. The components and the approximation add up to the
// series.
//
// Packet nodes. A node at depth D is reached by D analysis steps, taking at each
// the low-pass branch a or the high-pass branch d. Its natural index has one bit
// per step, the first step the most significant, a = 0 and d = 1. Because the
// high-pass step mirrors the spectrum, natural order is not frequency order:
// frequency order is the Gray code (depth 3: aaa, aad, add, ada, dda, ddd, dad,
// daa), natural = f xor (f >> 1) for the node of frequency rank f, which holds
// the frequencies f / 2^(D+1) .. (f + 1) / 2^(D+1) cycles per sample.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace tarnic {

// Natural index of the packet node of frequency rank f, and the inverse.
std::size_t naturalFromFrequencyRank(std::size_t f);
std::size_t frequencyRankFromNatural(std::size_t natural);

// The coefficients of the packet node (depth, natural index) of x, x of a
// power-of-two length >= 2^depth, by the periodic transform of dwt.h.
// depth 0 is x itself.
std::vector<double> packetNode(std::span<const double> x, std::span<const double> lowPass,
                               int depth, std::size_t natural);

// One component: its band and its power.
struct PacketBand {
    int level = 0;          // detail level j, 1 = finest
    std::size_t rank = 0;   // frequency rank of its node, split .. 2 split - 1
    double periodMin = 0.0; // short end of the band in samples: 2^(D+1) / (rank + 1)
    double periodMax = 0.0; // long end of the band in samples:  2^(D+1) / rank
    double power = 0.0;     // mean square of the node's coefficients
};

struct PacketDecomposition {
    std::size_t length = 0;            // samples of the series, and of each component
    std::vector<PacketBand> bands;     // one per component, in component order
    std::vector<double> components;    // component k at [k * length, (k + 1) * length)
    std::vector<double> approximation; // the rest: the approximation of level maxLevel

    std::span<const double> component(std::size_t k) const {
        return std::span<const double>(components).subspan(k * length, length);
    }
};

// Decomposes the series into split * (maxLevel - minLevel + 1) components.
//
// The series is extended symmetrically to its working length M (the power of two
// of dwt.h; the padding is split between the ends) and transformed periodically.
// Detail level j (minLevel <= j <= maxLevel) is the packet node d at depth j under
// the approximations a...a; its sub-bands are the nodes `log2(split)` steps deeper,
// at depth D = j + log2(split). Each node is rebuilt alone by synthesis steps
// back to depth 0 and cut to the samples of the series.
//
// Component order: from the shortest periods to the longest. Level minLevel comes
// first, and within a level the sub-band of the highest frequency first:
//
//     split 2, levels 1..2:   k = 0: periods 2 .. 2.67   (level 1, rank 3 of depth 2)
//                             k = 1: periods 2.67 .. 4   (level 1, rank 2)
//                             k = 2: periods 4 .. 5.33   (level 2, rank 3 of depth 3)
//                             k = 3: periods 5.33 .. 8   (level 2, rank 2)
//
// The power of a component is the mean square of its node's coefficients: for
// white noise of variance s^2 every component has power s^2.
// With minLevel 1 the components and the approximation add up to the series
// exactly (to rounding). Requires 1 <= minLevel <= maxLevel, split a power of
// two, and 2^(maxLevel) * split <= M.
PacketDecomposition waveletPacketDecomposition(std::span<const double> signal,
                                               std::span<const double> lowPass, int minLevel,
                                               int maxLevel, int split);

// The same decomposition without storing it: sink(k, values) receives component
// k (k < bands.size(), in component order) and then, as k = bands.size(), the
// approximation; values holds the series' samples and is valid during the call
// only. The calls come from several threads at once, each k exactly once, so a
// sink that writes each k to a place of its own needs no lock. Returns the bands.
using ComponentSink = std::function<void(std::size_t k, std::span<const double> values)>;
std::vector<PacketBand> waveletPacketComponents(std::span<const double> signal,
                                                std::span<const double> lowPass, int minLevel,
                                                int maxLevel, int split, const ComponentSink& sink);

// The coefficients of the decomposition as a time-frequency map ("Heisenberg
// boxes"): one row per component, in component order (shortest periods first),
// `columns` boxes per row over the n samples of the series, box c covering the
// samples c n / columns .. (c + 1) n / columns. A node at depth D has one
// coefficient per 2^D samples of the extended series; a box shows the modulus
// of the coefficient whose stretch holds the box's middle sample, so a coarse
// row repeats each coefficient over several boxes (n = 2 columns):
//
//     depth 1:  | c0 | c1 | c2 | c3 | c4 | c5 |
//     depth 3:  | c0 | c0 | c0 | c0 | c1 | c1 |
struct HeisenbergBoxes {
    std::vector<PacketBand> bands; // one per row
    std::size_t columns = 0;
    std::vector<double> moduli; // row k, column c at k * columns + c
};
HeisenbergBoxes heisenbergBoxes(std::span<const double> signal, std::span<const double> lowPass,
                                int minLevel, int maxLevel, int split, std::size_t columns);

// A component's map onto 0 .. 1: value = scale * normalised + offset.
struct UnitRange {
    float offset = 0.0f; // the value at normalised 0: the minimum
    float scale = 0.0f;  // value at normalised 1 minus value at normalised 0: the range
};

// Writes (v - offset) / scale for each value into out (same size), within 0 .. 1
// (the minimum at 0, the maximum at 1). offset and scale are the single-precision
// minimum and range, and the normalised values are computed from those rounded
// numbers, so that scale * out + offset gives the values back to single-precision
// rounding. A constant series (or one whose range is below the smallest float)
// gets scale 0, offset its value, and every normalised value 0.5: the formula
// still returns it, and a plot shows a flat line in mid-band.
UnitRange normaliseToUnitRange(std::span<const double> values, std::span<float> out);

} // namespace tarnic
