// An electrical module's counts to volts and amperes: the hardware gain of each channel, the
// repair of lost samples (the module writes an exact 0 for a sample it lost in the air), and
// the status that a measurement with lost stretches gets.
#pragma once

#include "coder/coder_array.h"

namespace calc_modul_7R_full_ns {

// The settings of one channel's input stage: rk the range (0, 24.9 or 127 are the stages the
// modules are built with), rn the trimming step, ku a plain factor (a divider or a current
// transformer's ratio).
struct ChannelGain {
  double rk = 0.0, rn = 0.0, ku = 0.0;
};

// Volts or amperes per count of a channel with range rk and trim rn, before ku: with
// g = 1 + (35 + rn * 19.53125) / 1000, 0.0049417429956896556 / g for rk 0,
// 6.74712643678161 * (0.000732421875 / rk) / g for rk 127 and 24.9, and 1 for any other rk.
double countGain(double rk, double rn);

// The lost samples of one channel (struct_T holds these of all six).
struct LostSamples {
  double zeros = 0.0; // samples exactly 0
  double runs = 0.0;  // windows of 32 lost samples, from the second sample on
};

// data_586_1 for one channel of N samples: the lost samples are counted, the mean of the
// others is removed (lost ones end at 0), and the counts are scaled by countGain(rk, rn) * ku,
// or by ku alone for a simulated module ("sim"). N <= 0 gives a mean of 0.
LostSamples data_586_1(const coder::array<double, 2>& counts, const ChannelGain& gain, double N,
                       bool sim, coder::array<double, 2>& out);

// status_vector_fun_586_1 over the voltages u[3] and currents i[3] for a measurement of
// type_param t: status 1 when a stretch of 32 was lost in a channel that t measures (4 the
// voltages, 8 the currents, 21 both); bits 0x1 << phase for lost voltage samples, 0x8 << phase
// for lost current samples, 0x100 << phase and 0x800 << phase for lost voltage and current
// stretches. A NaN count counts as set.
void status_vector_fun_586_1(const LostSamples u[3], const LostSamples i[3], double t,
                             unsigned* status, unsigned* status_bits);

} // namespace calc_modul_7R_full_ns
