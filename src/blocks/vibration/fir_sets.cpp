#include "blocks/vibration/fir_sets.h"

#include "coder/windows.h"

#include <array>
#include <cmath>

namespace vibration {
namespace {

constexpr double kPi = 3.141592653589793, kRate = 500.0;
// 50 dB of stop band, the Kaiser rule beta = 0.1102 (A - 8.7): the sets' transitions stay
// narrow enough that the two edges of the narrowest band (3.75 Hz) do not overlap.
constexpr double kBeta = 4.55;

enum class Kind { pass, stop, low };
struct SetDesign {
  int taps;
  Kind kind;
  double lo, hi; // edges in Hz (hi unused for a low-pass)
};
// In the order of FirSet. The edges are the half-gain frequencies of the evaluation's sets.
constexpr SetDesign kDesigns[] = {{301, Kind::pass, 47.0, 53.25},   {501, Kind::pass, 19.25, 27.0},
                                  {501, Kind::pass, 115.0, 122.25}, {501, Kind::pass, 12.25, 18.0},
                                  {501, Kind::pass, 43.25, 49.0},   {501, Kind::pass, 16.0, 21.25},
                                  {501, Kind::pass, 40.25, 44.0},   {301, Kind::stop, 5.5, 96.5},
                                  {301, Kind::stop, 32.5, 67.75},   {301, Kind::stop, 34.75, 65.75},
                                  {301, Kind::stop, 42.5, 57.75},   {301, Kind::low, 104.5, 0.0},
                                  {301, Kind::pass, 21.5, 78.5},    {301, Kind::pass, 28.75, 71.5},
                                  {301, Kind::pass, 35.25, 65.0}};
constexpr int kSets = int(sizeof kDesigns / sizeof kDesigns[0]);

// The ideal low-pass to fc at distance m from the centre tap.
double lowPass(double fc, int m) {
  return m == 0 ? 2.0 * fc / kRate : std::sin(2.0 * kPi * fc * m / kRate) / (kPi * m);
}

std::vector<double> design(const SetDesign& s) {
  coder::array<double, 1> w;
  coder::kaiser(s.taps, kBeta, w);
  const int centre = (s.taps - 1) / 2;
  std::vector<double> h(size_t(s.taps));
  for (int n = 0; n < s.taps; ++n) {
    const int m = n - centre;
    double ideal = s.kind == Kind::low ? lowPass(s.lo, m) : lowPass(s.hi, m) - lowPass(s.lo, m);
    if (s.kind == Kind::stop) {
      ideal = (m == 0 ? 1.0 : 0.0) - ideal;
    }
    h[size_t(n)] = ideal * w[n];
  }
  return h;
}

} // namespace

const std::vector<double>& firSet(FirSet set) {
  // Made together on first use; a static local is initialised once even when a recalculation
  // job and the loop reach it at the same time.
  static const std::array<std::vector<double>, kSets> sets = [] {
    std::array<std::vector<double>, kSets> made;
    for (int i = 0; i < kSets; ++i) {
      made[size_t(i)] = design(kDesigns[i]);
    }
    return made;
  }();
  return sets[size_t(set)];
}

} // namespace vibration
