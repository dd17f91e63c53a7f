// The defects that the harmonics of the shaft speed reveal in the vibration of the modules
// without a magnetic channel: misalignment (code 1), a series of harmonics (looseness, code 2),
// the second harmonic (code 3) and the line at twice the supply frequency (code 5).
#pragma once

#include "blocks/vibration/rotor.h"
#include "coder/rtwtypes.h"

namespace vibration {

// Ten slots of defect codes with their levels (1 warning, 2 alarm); 0 is an empty slot.
struct DefectList {
  int code[10] = {};
  int level[10] = {};
  int count = 0;
  void add(int c, int l);
};

// The display thresholds of the velocity the rules scale: green, yellow, orange in mm/s, as
// the visualisation of VEL_RMS_CF_1_Y (or VEL_RMS_CF_1) gives them.
struct Thresholds {
  double green = 2.38, yellow = 4.5, orange = 11.2;
};

// The rules over the first ten harmonics of X and of Y (mm/s) and, with the supply fixed near
// 50 Hz, the lines near 100 Hz of X and Y (mm/s; nullptr otherwise).
DefectList defectRules(const double hx[10], const double hy[10], const double* supply_lines,
                       const Thresholds& t);

// deffect_module_tk_703_2 and deffect_module_tk_703_3 (which measures Z and ignores it): the
// harmonics and supply lines measured on the analytic velocities zx, zy (g s) of n samples at
// 1 / dt, then the rules.
DefectList deffect_module(double fr, double dt, int n, const creal_T* zx, const creal_T* zy,
                          const Thresholds& t, FrequencyMode mode);

} // namespace vibration
