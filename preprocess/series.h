// The arithmetic of the preprocessing actions that the main window does itself:
// winsorization and the block means of an integer downsampling step.
#pragma once

#include <span>
#include <vector>

namespace tarnic {

// Clips outliers: `passes` times the mean of y is subtracted from every element
// (and not added back), the standard deviation s is the root of the mean square,
// and every element beyond +-factor*s is set to +-factor*s. Sums are
// accumulated in single precision; the mean, s and the limits are doubles. The
// result is centred: its mean is near 0, not exactly 0.
std::vector<float> Winsorize(std::span<const float> signal, int passes = 10, double factor = 4.0);

// Means and sample variances of consecutive blocks of `step` samples; samples
// behind the last whole block are dropped. The block sum is accumulated in
// single precision, the squared deviations in double, divided by step - 1.
struct BlockStatistics {
    std::vector<float> means;
    std::vector<float> variances;
};
BlockStatistics BlockMeans(std::span<const float> signal, long long step);

} // namespace tarnic
