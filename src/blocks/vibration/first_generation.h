// The frame of the first-generation vibration blocks, the modules with a magnetic channel
// beside their three accelerometer axes: statistics of each axis, the supply and slip from
// the stray field confirmed by the vibration, and with a believable speed the bearing,
// harmonic and imbalance lines.
#pragma once

#include "blocks/vibration/bearing.h"
#include "blocks/vibration/conditioning.h"
#include "coder/coder_array.h"

namespace vibration {

// What sets the two first-generation blocks apart.
struct FirstGenerationForm {
  bool lis344; // LIS344 counts with ku and g_del, and their runs of lost samples in
               // the status; else IIS3DWBTR counts with the full scale FS
  StatisticsForm statistics;
  double envelope_rate; // the rate envspectrum assumes, Hz
  bool envelope_only;   // bearing lines from the envelope whatever the option word says
  double harmonic_dt;   // the step of the harmonic scans; 0 for 1 / fv
};

// The two blocks side by side (the harmonic step 0 is 1 / fv; vibro_tk701_2_ve works on a
// time base of 2000 Hz throughout):
//
//   block              LIS344  statistics        envelope rate  envelope only  harmonic step
//   vibro_tk701_3_ve   no      kFirstGeneration  26667          no             0
//   vibro_tk701_2_ve   yes     kLIS344Form       2000           yes            0.0005
// clang-format off
constexpr FirstGenerationForm kTk701_3{false, kFirstGeneration, 26667.0, false, 0.0};
constexpr FirstGenerationForm kTk701_2{true,  kLIS344Form,      2000.0,  true,  0.0005};
// clang-format on

struct FirstGenerationInput {
  coder::array<double, 2> magnet;   // the stray field, counts
  coder::array<double, 2> vibro[3]; // the accelerometer axes X, Y, Z, counts
  double Lv = 0, fv = 0, Lm = 0, fm = 0, power = 0, poles = 0;
  BearingGeometry bearing;
  double FS = 0;                                  // IIS3DWBTR full scale, g
  double ku[3] = {0, 0, 0}, g_del[3] = {0, 0, 0}; // LIS344 gains
  unsigned word = 0;
};

// Every double starts as NaN: what the flow does not reach stays NaN.
struct FirstGenerationOutput {
  AxisStatistics table[3];
  // outer ring, inner ring, FTF, BSF (g, root of the sum of squares over the axes), and oil
  // whirl (mm/s, over X and Y)
  double bearing[5];
  double FREAL, supply_amplitude, FRM, SAD, SPEED;
  double harmonics[3][3]; // [axis][harmonic], mm/s
  double imbalance[3];    // mm/s
  unsigned status_1 = 0, status_2 = 0;
};

// The frame; the input's axes are changed in place (NaN samples become 0, lost).
void runFirstGeneration(const FirstGenerationForm& form, FirstGenerationInput& in,
                        FirstGenerationOutput& out);

} // namespace vibration
