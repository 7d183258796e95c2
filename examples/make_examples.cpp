// Writes the example signals bundled with the workbench into the directory given
// as the first argument (created if missing). Every file comes from a fixed seed
// and is written with CR LF line ends; values are the shortest text that reads
// back as the same float. README.md describes each file.
//
// Gaussian noise uses our own polar (Marsaglia) transform over std::mt19937_64,
// whose output the standard fixes, rather than std::normal_distribution, whose
// algorithm differs between standard libraries.
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <numbers>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

class Gaussian {
  public:
    explicit Gaussian(std::uint64_t seed) : engine_(seed) {}

    // A standard normal deviate (mean 0, variance 1).
    double operator()() {
        if (haveSpare_) {
            haveSpare_ = false;
            return spare_;
        }
        double u = 0.0, v = 0.0, s = 0.0;
        do {
            u = 2.0 * uniform() - 1.0;
            v = 2.0 * uniform() - 1.0;
            s = u * u + v * v;
        } while (s >= 1.0 || s == 0.0);
        const double factor = std::sqrt(-2.0 * std::log(s) / s);
        spare_ = v * factor;
        haveSpare_ = true;
        return u * factor;
    }

  private:
    // Uniform in [0, 1) from the top 53 bits of one engine output.
    double uniform() { return static_cast<double>(engine_() >> 11) * 0x1.0p-53; }

    std::mt19937_64 engine_;
    double spare_ = 0.0;
    bool haveSpare_ = false;
};

// Builds a table text line by line.
class Table {
  public:
    explicit Table(std::string_view separator = " ") : separator_(separator) {}

    void comment(std::string_view text) {
        text_ += "# ";
        text_ += text;
        text_ += "\r\n";
    }
    void row(std::initializer_list<double> values) {
        bool first = true;
        for (double v : values) {
            if (!first) text_ += separator_;
            first = false;
            number(static_cast<float>(v));
        }
        text_ += "\r\n";
    }
    // A row whose first field is given as text (used to plant a broken record).
    void rowWithText(std::string_view field, double rest) {
        text_ += field;
        text_ += separator_;
        number(static_cast<float>(rest));
        text_ += "\r\n";
    }
    const std::string& text() const { return text_; }

  private:
    void number(float v) {
        char buffer[32];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, v).ptr;
        text_.append(buffer, end);
    }

    std::string separator_;
    std::string text_;
};

bool writeFile(const fs::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out) std::fprintf(stderr, "make_examples: cannot write %s\n", file.string().c_str());
    return static_cast<bool>(out);
}

constexpr double kTwoPi = 2.0 * std::numbers::pi;

std::string ar2Peak() {
    constexpr int n = 4096, burnIn = 1000;
    Gaussian noise(20240101);
    Table t;
    t.comment("AR(2): x[t] = 0.75 x[t-1] - 0.5 x[t-2] + e[t], e unit-variance Gaussian");
    t.comment("value time");
    double x1 = 0.0, x2 = 0.0;
    for (int i = -burnIn; i < n; ++i) {
        const double x = 0.75 * x1 - 0.5 * x2 + noise();
        x2 = x1;
        x1 = x;
        if (i >= 0) t.row({x, double(i)});
    }
    return t.text();
}

std::string twoSinesTrend() {
    constexpr int n = 5000;
    Gaussian noise(20240102);
    Table t;
    t.comment("sin(2 pi t/50) + 0.5 sin(2 pi t/12.5 + 0.3) + 0.3 e + trend");
    t.comment("value time");
    for (int i = 0; i < n; ++i) {
        const double u = double(i) / n;
        const double trend = 0.5 + 1.5 * u + 1.0 * u * u;
        const double x = std::sin(kTwoPi * i / 50.0) + 0.5 * std::sin(kTwoPi * i / 12.5 + 0.3) +
                         0.3 * noise() + trend;
        t.row({x, double(i)});
    }
    return t.text();
}

std::string randomWalk() {
    constexpr int n = 10000;
    Gaussian noise(20240103);
    Table t; // no header line
    double x = 0.0;
    for (int i = 0; i < n; ++i) {
        x += noise();
        t.row({x, double(i)});
    }
    return t.text();
}

std::string threeColumns() {
    constexpr int n = 1000;
    Gaussian noise(20240104);
    Table t("\t");
    t.comment("sine\tnoisy sine\tramp");
    for (int i = 0; i < n; ++i) {
        const double s = std::sin(kTwoPi * i / 40.0);
        t.row({s, s + 0.2 * noise(), double(i) / n});
    }
    return t.text();
}

std::string shortSine(int n, std::uint64_t seed) {
    Gaussian noise(seed);
    Table t;
    for (int i = 0; i < n; ++i)
        t.row({std::sin(kTwoPi * i / 8.0) + 0.1 * noise(), double(i)});
    return t.text();
}

std::string constantColumn() {
    constexpr int n = 200;
    Gaussian noise(20240107);
    Table t(", ");
    t.comment("constant, sine, noise");
    for (int i = 0; i < n; ++i)
        t.row({5.0, std::sin(kTwoPi * i / 25.0), noise()});
    return t.text();
}

std::string brokenRecord() {
    constexpr int n = 500, broken = 250; // 1-based record number of the bad record
    Gaussian noise(20240108);
    Table t;
    t.comment("record 250 is broken; comment lines are not records");
    for (int i = 1; i <= n; ++i) {
        if (i == broken)
            t.rowWithText("1.2.3", double(i - 1));
        else
            t.row({noise(), double(i - 1)});
    }
    return t.text();
}

std::string oneSample() {
    Table t;
    t.row({1.5, 0.0});
    return t.text();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_examples <output directory>\n");
        return 2;
    }
    const fs::path dir = argv[1];
    std::error_code error;
    fs::create_directories(dir, error);
    if (error) {
        std::fprintf(stderr, "make_examples: cannot create %s\n", dir.string().c_str());
        return 1;
    }
    const std::pair<const char*, std::function<std::string()>> files[] = {
        {"ar2_peak.dat", ar2Peak},
        {"two_sines_trend.dat", twoSinesTrend},
        {"random_walk.dat", randomWalk},
        {"three_columns.dat", threeColumns},
        {"exactly_32.dat", [] { return shortSine(32, 20240105); }},
        {"only_31.dat", [] { return shortSine(31, 20240106); }},
        {"constant_column.dat", constantColumn},
        {"broken_record.dat", brokenRecord},
        {"empty.dat", [] { return std::string(); }},
        {"one_sample.dat", oneSample},
    };
    bool ok = true;
    for (const auto& [name, make] : files)
        ok = writeFile(dir / name, make()) && ok;
    return ok ? 0 : 1;
}
