// From the counts a vibration module sends to acceleration in g, one routine per sensor chip,
// and the same lost-sample repair for the magnetic channel. The routines differ only in the
// scaling around one shared repair (see the table in sensor_samples.cpp).
#pragma once

#include "coder/coder_array.h"

namespace vibration {

// What the repair found on an axis: the samples that were exactly 0.0 (lost in transfer)
// and the start positions of runs of lost samples (0 for the chips that do not count runs).
struct LostSamples {
  double zeros = 0.0;
  double runs = 0.0;
};

// IIS3DWBTR accelerometer: x * FS / 32768 with FS the full scale in g; lost samples take the
// mean m of the others and m is removed. All samples lost makes the axis NaN (0/0).
void v_data_IIS3DWBTR(const coder::array<double, 2>& x, double FS, coder::array<double, 2>& out);

// ADS131 converter: 24-bit two's complement counts to millivolts, x * 1200 / 8388608 up to
// 8388607 and (x - 16777215) * 1200 / 8388608 above (the complement against 16777215, so a
// count of 16777215 reads 0 and counts as lost); repair as above, runs over windows of 8,
// then divided by the channel gain g_del. All samples lost makes the axis NaN.
LostSamples v_data_ads131_v2(const coder::array<double, 2>& x, double g_del,
                             coder::array<double, 2>& out);

// LIS344 accelerometer of the first-generation module: repair with runs over windows of 32
// (all samples lost leaves zeros), then (x * 1.1 / ku) * 1.0681766510009765 / g_del.
LostSamples v_data_LIS344(const coder::array<double, 2>& x, double ku, double g_del,
                          coder::array<double, 2>& out);

// RS89x sensors: repair with runs over windows of 8 (all lost leaves zeros), then / 1000000.
LostSamples v_data_rs_89x_x(const coder::array<double, 2>& x, coder::array<double, 2>& out);

// The magnetic channel: NaN samples count as lost; of the first n samples (n clipped to the
// array) the lost ones take the mean of the others and the mean is removed. out holds those
// n samples; all of them lost makes them NaN.
void dell_null_data(const coder::array<double, 2>& x, double n, coder::array<double, 2>& out);

// Sets NaN samples to 0.0 in place, so that the repair counts them as lost: each block does
// this to its input axes before the conversion.
void zeroNaN(coder::array<double, 2>& x);

} // namespace vibration
