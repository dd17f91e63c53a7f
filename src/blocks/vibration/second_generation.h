// The frame of the second-generation vibration blocks, the modules without a magnetic
// channel: statistics of each axis, the rotor frequency found in the vibration alone and
// confirmed across the axes, and with a believable speed the bearing, harmonic and imbalance
// lines and the defects the harmonics reveal.
#pragma once

#include "blocks/vibration/bearing.h"
#include "blocks/vibration/conditioning.h"
#include "blocks/vibration/defects.h"
#include "coder/coder_array.h"

namespace vibration {

// How a module's converter gives its samples: IIS3DWBTR counts at a full scale FS, ADS131
// 24-bit counts (millivolts over the channel gain g_del), RS89x micro-units.
enum class Converter { IIS3DWBTR, ADS131, RS89x };

// What sets the six second-generation blocks apart. Against the first generation (the table in
// first_generation.h) they all pad the acceleration spectrum 16-fold, look for the rotor after
// decimating by 8 with the filter's delay taken off, stop below 0.6 mm/s instead of 1.2, and
// confirm the speed across their axes at 0.5 percent (three axes) or 1 percent (two) instead of
// against the stray field; in "frequency_control" they scan the whole range a converter-fed
// rotor can take.
//
//   block                     axes  converter  envelope rate  defect routine
//   vibro_tk703_2_ve          2     ADS131     16000          deffect_module_tk_703_2
//   vibro_tk703_2_single_ve   1     ADS131     16000          deffect_module_tk_703_3
//   vibro_tk703_3_ve          3     IIS3DWBTR  26667          deffect_module_tk_703_3
//   vibro_tk703_4_ve          3     ADS131     16000          deffect_module_tk_703_3
//   vibro_rs893_2_ve          1     RS89x      16667          deffect_module_tk_703_3
//   vibro_rs893_4_ve          3     RS89x      16667          deffect_module_tk_703_3
//
// The defect routines differ only in the axes they are given: X and Y, or the one axis as both.
struct SecondGenerationForm {
  int axes;
  Converter converter;
  double envelope_rate; // the rate envspectrum assumes, Hz
};
// clang-format off
constexpr SecondGenerationForm kTk703_2{2, Converter::ADS131, 16000.0};
constexpr SecondGenerationForm kTk703_2_single{1, Converter::ADS131, 16000.0};
constexpr SecondGenerationForm kTk703_3{3, Converter::IIS3DWBTR, 26667.0};
constexpr SecondGenerationForm kTk703_4{3, Converter::ADS131, 16000.0};
constexpr SecondGenerationForm kRs893_2{1, Converter::RS89x, 16667.0};
constexpr SecondGenerationForm kRs893_4{3, Converter::RS89x, 16667.0};
// clang-format on

struct SecondGenerationInput {
  coder::array<double, 2> vibro[3]; // the axes X, Y, Z (as many as the form has), counts
  double Lv = 0, fs = 0, poles = 0;
  BearingGeometry bearing;
  double FS = 0;                     // IIS3DWBTR full scale, g
  double g_del[3] = {1.0, 1.0, 1.0}; // ADS131 channel gains
  unsigned word = 0;
  Thresholds thresholds;
};

// Every double starts as NaN: what the flow does not reach stays NaN. Only the first `axes`
// rows of the per-axis arrays are the block's.
struct SecondGenerationOutput {
  AxisStatistics table[3];
  // outer ring, inner ring, FTF, BSF (g, root of the sum of squares over the axes), and oil
  // whirl (mm/s, over X and Y)
  double bearing[5];
  double FRM;
  double harmonics[3][3]; // [axis][harmonic], mm/s
  double imbalance[3];    // mm/s
  DefectList defects;
  unsigned status_1 = 0, status_2 = 0;
};

// The frame; the input's axes are changed in place (NaN samples become 0, lost).
void runSecondGeneration(const SecondGenerationForm& form, SecondGenerationInput& in,
                         SecondGenerationOutput& out);

} // namespace vibration
