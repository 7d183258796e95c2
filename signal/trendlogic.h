// The arithmetic of the signal and fragment windows that needs no widgets: the
// clamps of the trend parameters and the choice of samples between the cursors.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnic {

// The trend radius from its box: the integer part, 0 for a text that does not
// fit 32 bits or is negative; above length / 2 it becomes Int(length / 2 + 1).
std::int32_t ClampTrendRadius(double typed, std::int32_t length);

// The polynomial order from its box: the integer part (0 when it does not fit),
// within 0 .. 10, and at most radius - 1 (not below 0).
std::int32_t ClampTrendOrder(double typed, std::int32_t radius);

// The sample numbers (1-based) whose x = width * (i - 1) / (n - 1) lies between
// the two cursors, both ends included; a cursor's x comes from its scroll bar's
// value over the bar's range.
std::vector<std::int32_t> SamplesBetweenCursors(std::int32_t n, double width, int leftValue,
                                                int rightValue, int barMin, int barMax);

// The estimate of the selected count shown while the cursors move:
// Int(n * (1 - leftFraction - rightFraction)).
std::int32_t EstimatedSamplesBetween(std::int32_t n, int leftValue, int rightValue, int barMin,
                                     int barMax);

} // namespace tarnic
