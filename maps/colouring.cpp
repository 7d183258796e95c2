#include "maps/colouring.h"

#include "numeric/workers.h"

#include "core/naming.h"
#include "core/numtext.h"
#include "core/outputfile.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <future>
#include <thread>

namespace tarnic {

GridValueText RowMajorValues(const float* values, std::int32_t nx) {
    return [values, nx](int row, int column) {
        return NumText(values[static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(nx) +
                              static_cast<std::size_t>(column - 1)]);
    };
}

int BandOf(double value, double zmin, double step, int bands) {
    for (int k = 1; k <= bands; ++k) {
        const double lower = zmin + (k - 1) * step;
        const double upper = lower + step;
        if (lower <= value && upper >= value) return k;
    }
    return 0;
}

BandLookup::BandLookup(float zmin, float zmax, std::span<const Rgb> palette)
    : zmin_(zmin), step_((static_cast<double>(zmax) - static_cast<double>(zmin)) /
                         static_cast<double>(palette.size())),
      palette_(palette) {}

Rgb BandLookup::operator()(float value) {
    const int band = BandOf(value, zmin_, step_, static_cast<int>(palette_.size()));
    if (band > 0) previous_ = palette_[static_cast<std::size_t>(band - 1)];
    return previous_;
}

float ColorScaleValue(float y, double scaleHeight, float zmin, float zmax) {
    // In double precision the edges come out exact: y = 0 gives zmax and
    // y = scaleHeight gives zmax - (zmax - zmin) = zmin.
    const double zhi = zmax, zlo = zmin;
    return static_cast<float>(zhi - (zhi - zlo) * (static_cast<double>(y) / scaleHeight));
}

double LnTen() {
    // Kept from being folded into a compile-time constant: the divisor is the
    // run-time logarithm's own value of ln 10.
    static const double value = [] {
        volatile double ten = 10.0;
        return std::log(ten);
    }();
    return value;
}

double Lg(double x) {
    return std::log(x) / LnTen();
}

std::string GridHeaderText(const GridHeader& h) {
    std::string text = "DSAA";
    text += kLineEnd;
    text += NumText(h.nx) + " " + PlainNumberLine(NumText(h.ny));
    text += TwoColumnRecord(h.xlo, h.xhi);
    text += TwoColumnRecord(h.ylo, h.yhi);
    text += TwoColumnRecord(h.zlo, h.zhi);
    return text;
}

void AppendGridValue(std::string& out, std::size_t lineStart, const std::string& text) {
    out += text;
    out += ' ';
    // Columns count from 1; zones start at columns 1, 15, 29, ...
    const std::size_t column = out.size() - lineStart + 1;
    const std::size_t next = ((column - 1 + 13) / 14) * 14 + 1;
    out.append(next - column, ' ');
}

void AppendGridRow(std::string& out, int row, std::int32_t nx, const GridValueText& value) {
    const std::size_t lineStart = out.size();
    for (int column = 1; column <= nx; ++column)
        AppendGridValue(out, lineStart, value(row, column));
    out += kLineEnd;
}

bool WriteGrid(const std::string& path, const GridHeader& header, const GridValueText& value) {
    OutputFile file(path);
    file.print(GridHeaderText(header));
    // Rows are formatted in blocks of about 64k values, a few blocks at a time
    // on all cores, and printed in order, so a grid of millions of values
    // neither waits on one core nor holds its whole text in memory.
    const int ny = header.ny;
    const std::int32_t nx = std::max<std::int32_t>(header.nx, 1);
    const int rowsPerBlock = std::max(1, static_cast<int>(65536 / nx));
    auto formatBlock = [&](int first) {
        std::string text;
        for (int row = first; row < first + rowsPerBlock && row <= ny; ++row)
            AppendGridRow(text, row, header.nx, value);
        return text;
    };
    const int workers = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    std::deque<std::future<std::string>> pending;
    int next = 1;
    while (next <= ny || !pending.empty()) {
        while (next <= ny && static_cast<int>(pending.size()) < 2 * workers) {
            pending.push_back(startWorker([&formatBlock, next] { return formatBlock(next); }));
            next += rowsPerBlock;
        }
        file.print(pending.front().get());
        pending.pop_front();
    }
    return file.close();
}

} // namespace tarnic
