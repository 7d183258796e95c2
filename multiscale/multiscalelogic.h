// The arithmetic of the WTMM chains window and of the multifractal DFA window
// that needs no widgets: the repair of their parameter boxes, the reading of
// the chain file the library leaves in the current directory, the decisions of
// the chain drawing, the scale axis and regression lines of the fluctuation
// table, the ranges of the plots, the checks that a run can be drawn at all,
// and the text of the saved singularity spectrum.
//
// Int is the greatest integer not above a value, Round the nearest integer
// with halves going to the even one. Record and sample numbers are 1-based.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnic {

// ---------------------------------------------------------------------------
// WTMM chains

// A longer fragment is refused (the analysis takes too long); 8000 is accepted.
inline constexpr std::int32_t kWtmmMaxSamples = 8000;

// The chain file the library writes into the current directory.
inline constexpr std::string_view kWtmmScratchName = "n12c43k67r13t72c76h18i04";

// Logarithm of a separator record between two chains of a class.
inline constexpr float kWtmmSeparator = -9999.0f;

// Trend order from its box: Int(typed) within 0 .. 10; a value whose Int does
// not fit 32 bits gives 0, without clamping.
std::int32_t ReadWtmmTrendOrder(double typed);

// Gamma from its box: the typed value within 0 .. 1; a value beyond the double
// range (a text like "1e999") gives 0.25.
double ReadWtmmGamma(double typed);

// One record of the chain file: the sample within the fragment (0 or less for
// a separator) and the base-10 logarithm of the scale in samples.
struct WtmmRecord {
    std::int32_t time = 0;
    float lg = 0;
    friend bool operator==(const WtmmRecord&, const WtmmRecord&) = default;
};

enum class WtmmFileStatus { Read, Missing, Short };

struct WtmmFile {
    WtmmFileStatus status = WtmmFileStatus::Missing;
    std::vector<WtmmRecord> records; // exactly `total` when Read
};

// Reads the first `total` records of the chain file. A record is two numbers,
// each ended by blanks, a comma or a line end: the time index (rounded to a
// whole number, as it is read into an integer) and the logarithm (narrowed to
// single precision). Records behind the first `total` are not looked at. A
// file with fewer records, or with a field that is not a number, is Short.
WtmmFile ReadWtmmFile(const std::filesystem::path& file, std::int64_t total);

// Where a WTMM run takes place. The library writes the chain file under its
// one fixed name into the current directory, which after start is the program's
// own folder: an installed program may not write there, and two copies running
// from one folder would share the name. So the run enters a fresh private
// directory below the system's temporary directory; going out of scope, on
// every way out of the handler, removes the chain file and that directory and
// returns to the directory the process stood in. When no private directory can
// be made the run stays where it is and only the file is removed afterwards.
class WtmmScratchPlace {
  public:
    WtmmScratchPlace();
    ~WtmmScratchPlace();
    WtmmScratchPlace(const WtmmScratchPlace&) = delete;
    WtmmScratchPlace& operator=(const WtmmScratchPlace&) = delete;

    // The chain file as the library writes it in this place.
    std::filesystem::path file() const { return where_ / kWtmmScratchName; }

  private:
    std::filesystem::path previous_, where_;
    bool entered_ = false;
};

// The Y range of the chain plot: least and greatest logarithm over the records
// whose time index is above 0 (separators don't count); 1E+35 and -1E+35 when
// there is none.
struct WtmmLgRange {
    float min = 1E+35f;
    float max = -1E+35f;
};
WtmmLgRange ChainLgRange(std::span<const WtmmRecord> records);

// What makes a run impossible to draw, in the order the checks are made.
enum class WtmmProblem {
    None,
    BadCounts,     // a negative class count
    NoRecords,     // all seven counts are 0
    FileMissing,   // the chain file is not there
    FileShort,     // it holds fewer records than the counts say
    NoChainPoints, // only separators: no Y range
    OneScale,      // all points at one logarithm: the Y range is 0
    FlatDetrended, // the detrended fragment is constant (or not finite)
};

// Checks the run before the file is read: first whether anything is left of the
// fragment after detrending (a constant, or a straight line under a trend of
// order 1 or more, leaves only rounding noise: a range of at most 1e-9 of the
// fragment's magnitude), for no threshold could find chains then; then the counts.
WtmmProblem CheckWtmmCounts(std::span<const std::int32_t, 7> counts,
                            std::span<const double> fragment, std::span<const double> detrended);
// Checks what was read: the file status, the Y range, the detrended fragment.
WtmmProblem CheckWtmmRun(const WtmmFile& file, const WtmmLgRange& range,
                         std::span<const double> detrended);

// One drawing step of the chains: a segment from record `from` to record `to`,
// or a dot at record `from` (== `to`), drawn in the style of class `style`
// (1 .. 7), the class whose style is in force at that moment.
struct ChainStroke {
    int style = 0;
    bool dot = false;
    std::int32_t from = 0;
    std::int32_t to = 0;
    friend bool operator==(const ChainStroke&, const ChainStroke&) = default;
};

// The strokes of the whole plot, class after class. Base is the number of the
// records of the classes before. Classes 1 .. 6, for j = 1 .. count - 1 and
// r = Base + j: a separator at r is passed over; a record r + 1 that is not a
// separator gets a segment from r; a separator at r + 1 puts a dot at r + 2,
// the first record of the next chain (also when that record opens the next
// class, with the style of this one), and ends the drawing altogether when
// r + 2 lies behind the last record. Class 7: a dot at every record. A class
// with 0 or 1 records draws nothing. A separator is a logarithm of exactly
// -9999.
std::vector<ChainStroke> PlanWtmmChains(std::span<const std::int32_t, 7> counts,
                                        std::span<const WtmmRecord> records);

// ---------------------------------------------------------------------------
// Multifractal DFA

// A shorter fragment is refused; 400 samples are accepted.
inline constexpr std::int32_t kMfdfaMinSamples = 400;
inline constexpr std::int32_t kMfdfaAlfaCount = 200;
inline constexpr std::int32_t kMfdfaQCount = 200;
inline constexpr std::int32_t kMfdfaMaxScaleCount = 200;
inline constexpr double kMfdfaQMin = -10.0;
inline constexpr double kMfdfaQMax = 10.0;
// The table is plotted for q number 1, 11, 21, ...
inline constexpr std::int32_t kMfdfaQStep = 10;

// Text4 at Load: Int(samples / 5).
std::int32_t MfdfaMaxScaleShown(std::int32_t samples);

// Text1: default 4; else Int(typed) within 0 .. 10.
std::int32_t ReadMfdfaDetrendOrder(double typed);
// Text2: default 0; else Int(typed) within 0 .. 1.
std::int32_t ReadMfdfaMeasureType(double typed);
// Text4: default Round(samples / 5); else Int(typed), at least 40; then a value
// above samples / 5 (real arithmetic) becomes Round(samples / 5).
std::int32_t ReadMfdfaMaxScale(double typed, std::int32_t samples);
// Text3: default 20; else Int(typed), at least 20; then a value above
// maxScale / 2 (real arithmetic) becomes Round(maxScale / 2).
std::int32_t ReadMfdfaMinScale(double typed, std::int32_t maxScale);
// The number of scales asked for: maxScale - minScale, at most 200.
std::int32_t MfdfaScaleCount(std::int32_t minScale, std::int32_t maxScale);

// The X positions of the table's scales: scaleCount logarithms (single
// precision) evenly spaced from log10(minScale) to log10(samples / 5); the upper
// end follows the fragment, not the maximum scale, so a smaller maximum does not
// shorten the axis. Needs scaleCount >= 2.
std::vector<float> MfdfaLgScales(std::int32_t minScale, std::int32_t samples,
                                 std::int32_t scaleCount);

// The ranges of the spectrum plot. Alfa: over the points 2 .. count whose F is
// above 0 (the first point is left out), starting from 1E+35 and -1E+35. F:
// over all points, from F(1), the sign not looked at.
struct SpectrumRanges {
    float alfaMin = 1E+35f, alfaMax = -1E+35f;
    float fMin = 0, fMax = 0;
};
SpectrumRanges MfdfaSpectrumRanges(std::span<const double> alfa, std::span<const double> fAlfa);

// Flat segments. `flatShares` holds, per scale of the table, the share of the
// segments with no fluctuation (numeric/mfdfa.h, flatSegmentShares): they are
// left out of Z(q, s). A scale at which every segment is flat has no measure at
// all (the library stores 0 there), so it is neither drawn nor fitted. An empty
// `flatShares` counts every scale in.
bool MfdfaScaleInUse(std::span<const double> flatShares, std::int32_t s);
// The warning shown under the table when more than a tenth of the segments at
// some scale are flat; empty when none is. `scales` in samples, as flatShares.
inline constexpr double kMfdfaFlatShareWarned = 0.1;
std::string MfdfaFlatWarning(std::span<const double> flatShares,
                             std::span<const std::size_t> scales);

// The Y range of the table plot: over every scale in use and the q numbers 1,
// 11, 21, ... up to qCount; cell (s, j) lies at (s - 1) * qCount + j.
struct TableRange {
    double lo = 1E+35, hi = -1E+35;
};
TableRange MfdfaTableRange(std::span<const double> zqTab, std::int32_t qCount,
                           std::int32_t scaleCount, std::span<const double> flatShares = {});

// The least-squares line of one column of the table (single-precision values)
// against the scale positions, over the scales in use, in double precision: it
// runs through (xBar, yBar) with the given slope.
struct RegressionLine {
    double xBar = 0, yBar = 0, slope = 0;
    double at(double x) const { return yBar + slope * (x - xBar); }
};
RegressionLine MfdfaRegression(std::span<const float> lgScale, std::span<const float> column,
                               std::span<const double> flatShares = {});

// What makes a run impossible to draw, in the order the checks are made.
enum class MfdfaProblem {
    None,
    BadGrid,      // the library gave back fewer than 2 scales or no q, or more than asked
    NotFinite,    // a value that is not a number
    NoSpectrum,   // no F above 0 from the second point on
    OneAlfa,      // the positive points have one Alfa: the X range is 0
    FlatSpectrum, // all F equal: the Y range is 0
    FlatTable,    // the plotted cells of the table are all equal, or under two scales in use
};
MfdfaProblem CheckMfdfaRun(std::span<const double> alfa, std::span<const double> fAlfa,
                           std::span<const double> zqTab, std::int32_t qCount,
                           std::int32_t scaleCount, std::int32_t qAsked, std::int32_t scalesAsked,
                           std::span<const double> flatShares = {});

// The saved spectrum: four header lines, each a literal and the NumText of its
// parameter, then a two-column line NumText(Alfa) NumText(F) for every point
// whose F is above 0, the first point included. Lines end in CR LF.
std::string SingularitySpectrumText(std::int32_t detrendOrder, std::int32_t measureType,
                                    std::int32_t minScale, std::int32_t maxScale,
                                    std::span<const double> alfa, std::span<const double> fAlfa);

} // namespace tarnic
