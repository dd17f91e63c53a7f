#include "blocks/vibration/defects.h"

#include <cmath>
#include <cstdlib>

namespace vibration {
namespace {

// The fraction of a threshold that a single harmonic must reach to count.
constexpr double kHarmonicShare = 0.35;
// X against Y at the shaft speed outside these ratios: the machine is misaligned.
constexpr double kLeastRatio = 0.7, kMostRatio = 1.2;
// As many harmonics above the threshold make a series.
constexpr int kSeries = 6;

constexpr int kMisalignment = 1, kHarmonicSeries = 2, kSecondHarmonic = 3, kSupplyLine = 5;
constexpr int kWarning = 1, kAlarm = 2;

} // namespace

void DefectList::add(int c, int l) {
  // A finding is never dropped for want of a slot in the ten the list has: the rules make at
  // most three.
  if (count < 10) {
    code[count] = c;
    level[count] = l;
    ++count;
  }
}

DefectList defectRules(const double hx[10], const double hy[10], const double* supply_lines,
                       const Thresholds& t) {
  DefectList list;
  const double ratio = hx[0] / hy[0];
  if (ratio <= kLeastRatio || ratio >= kMostRatio) {
    list.add(kMisalignment, kWarning);
  }
  const double t1 = t.yellow * kHarmonicShare, t2 = t.orange * kHarmonicShare;
  int nx1 = 0, ny1 = 0, nx2 = 0, ny2 = 0;
  for (int k = 1; k < 10; ++k) {
    nx1 += std::fabs(hx[k]) > t1;
    ny1 += std::fabs(hy[k]) > t1;
    nx2 += std::fabs(hx[k]) >= t2;
    ny2 += std::fabs(hy[k]) >= t2;
  }
  if (nx1 > 1 || ny1 > 1 || nx2 > 1) {
    if (nx2 >= kSeries || ny2 >= kSeries) {
      list.add(kHarmonicSeries, kAlarm);
    } else if (nx1 >= kSeries || ny1 >= kSeries) {
      list.add(kHarmonicSeries, kWarning);
    } else if (hx[1] > t2 || hy[1] > t2) {
      list.add(kSecondHarmonic, kAlarm);
    } else if (hx[1] > t1 || hy[1] > t1) {
      list.add(kSecondHarmonic, kWarning);
    }
  }
  if (supply_lines != nullptr) {
    const double ax = supply_lines[0], ay = supply_lines[1];
    if (ax > t2 || ay > t2) {
      list.add(kSupplyLine, kAlarm);
    } else if (ax > t1 || ay > t1) {
      list.add(kSupplyLine, kWarning);
    }
  }
  return list;
}

DefectList deffect_module(double fr, double dt, int n, const creal_T* zx, const creal_T* zy,
                          const Thresholds& t, FrequencyMode mode) {
  double hx[10], hy[10];
  find_rotor_freq_all_10(fr, dt, n, zx, hx);
  find_rotor_freq_all_10(fr, dt, n, zy, hy);
  for (int k = 0; k < 10; ++k) {
    hx[k] = toMillimetres(hx[k]);
    hy[k] = toMillimetres(hy[k]);
  }
  double supply[2];
  if (mode == FrequencyMode::fixed) {
    double lines[2];
    find_Freal_freq_all(dt, n, zx, lines);
    supply[0] = toMillimetres(lines[1]);
    find_Freal_freq_all(dt, n, zy, lines);
    supply[1] = toMillimetres(lines[1]);
  }
  return defectRules(hx, hy, mode == FrequencyMode::fixed ? supply : nullptr, t);
}

} // namespace vibration
