// From an axis of acceleration to its velocity and displacement and the statistics of all
// three, as every vibration block reports them. Working units: g, g*s and g*s^2; the
// statistics of velocity and displacement are in mm/s and mm (the factor 9.8 then 1000).
#pragma once

#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

namespace vibration {

// The rows of the statistics of one axis, in the order of the block's table.
struct AxisStatistics {
  // mean, std, skewness, kurtosis, peak2peak, peak2rms, rms_cf_1, rms_cf_2, rms_cf_3 (g)
  double acc[9];
  // mean, std, skewness, kurtosis, peak2peak, peak2rms, rms_cf_1, rms_cf_4, rms_cf_5,
  // rms_cf_6 (mm/s)
  double vel[10];
  // mean, std, skewness, kurtosis, peak2peak (mm)
  double dsp[5];
};

// What sets the statistics of one block family apart.
struct StatisticsForm {
  // Zero padding of the acceleration spectrum: 4 in the first generation, 16 in the second
  // (its band sums are divided by twice this); 0 for none: the LIS344 block has no
  // acceleration bands and reports rms_cf_2 and rms_cf_3 as NaN.
  int acc_padding;
  // The rate in the band indices: 0 for the signal's own rate; the LIS344 block fixes 2000.
  double band_rate;
};
constexpr StatisticsForm kFirstGeneration{4, 0.0}, kSecondGeneration{16, 0.0},
    kLIS344Form{0, 2000.0};

// MATLAB: a = detrend(x(:)) .* tukeywin(n, 0); v = cumtrapz(t, a), detrended; d = cumtrapz(t,
// v), detrended; with t(k) = uint16(k) / fs, so that records of over 65536 samples wrap their
// time axis as the modules' own firmware does. Rows of the length of x.
void ACC_VEL_DSP(const coder::array<double, 2>& x, double fs, coder::array<double, 2>& acc,
                 coder::array<double, 2>& vel, coder::array<double, 2>& dsp);

// The three tables of one axis (paramData_v, paramData_v_LIS344 by form). Band RMS values come
// from the amplitude spectrum 2 |fft(x(1:round(Lv)), p * length)| / Lv over the 1-based bins
// round(M * f1 / rate) .. round(M * f2 / rate), M = nfft + 2, divided by 2p: rms_cf_2 500 to
// 2500 Hz (NaN when floor(fs / 2) < 2500), rms_cf_3 2500 to 5000 Hz (NaN below 5000), and of
// the velocity (p = 16) rms_cf_4 10 to 990 Hz, rms_cf_5 2 to 65 Hz, rms_cf_6 65 to 300 Hz.
// mean and the moments use the whole arrays.
void paramData_v(double Lv, double fs, const coder::array<double, 2>& acc,
                 const coder::array<double, 2>& vel, const coder::array<double, 2>& dsp,
                 const StatisticsForm& form, AxisStatistics& out);

// Decimation of the analytic signal by 8 for the rotor scans: each output sample is the mean
// of eight consecutive inputs (real and imaginary parts apart), a tail of fewer than eight is
// dropped; z is replaced. Returns fs / 8.
double signal_ndec(double fs, coder::array<creal_T, 2>& z);

} // namespace vibration
