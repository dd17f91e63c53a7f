// The fixed FIR sets of the magnetic channel's analysis, all for 500 Hz: the band that takes
// the supply line, the windows around the rotor lines, the stops that remove the supply line
// and the third stage of each pole-pair count.
#pragma once

#include <vector>

namespace vibration {

enum class FirSet {
  filter, // 301 taps, pass 47.0 to 53.25 Hz
  b_filter,
  c_filter,
  d_filter,
  e_filter, // 501 taps, pass 19.25-27, 115-122.25, 12.25-18,
  f_filter,
  g_filter, // 43.25-49, 16-21.25, 40.25-44 Hz
  h_filter,
  i_filter,
  j_filter,
  k_filter, // 301 taps, stop 5.5-96.5, 32.5-67.75, 34.75-65.75,
            // 42.5-57.75 Hz
  third_1,
  third_2,
  third_3,
  third_4 // 301 taps: low-pass 104.5 Hz; pass 21.5-78.5,
          // 28.75-71.5, 35.25-65 Hz
};

// The taps of a set: a linear-phase windowed design (the ideal response with its edges at the
// listed frequencies, times a Kaiser window of beta 4.55, not rescaled), whose gain is one
// half at each edge, within 0.3 % of one in its pass band and 48 dB down in its stop band
// beyond 2.5 Hz of the edges. Made once, on first use, and never changed.
const std::vector<double>& firSet(FirSet set);

} // namespace vibration
