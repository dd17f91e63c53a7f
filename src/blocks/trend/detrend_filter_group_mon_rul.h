// The trend block: the history of one parameter at the machine's current operating speed,
// fitted by a cubic, with a measure of how steadily it rises or falls and, on request, the
// time at which the cubic rises through the parameter's orange threshold. A bearing's
// velocity means something only at a given speed, so measurements at other speeds are left
// out before anything is fitted.
#pragma once

#include "coder/coder_array.h"

namespace detrend_filter_group_mon_rul_ns {

// The forecast curve: times in seconds since the first chosen row (the oldest row at the speed
// of now), values in the parameter's unit.
struct struct0_T {
  coder::array<double, 2> x;
  coder::array<double, 2> y;
};

// MATLAB y = splitapply(@median, x, g) over the groups 1..m: y (1 by m) gets for each group
// the median of the x with g == j + 1 (1-based groups), NaN for a group that holds a NaN or
// nothing. Elements whose group is not one of 1..m take no part.
void splitapply_my(const coder::array<double, 1>& x, const coder::array<double, 1>& groups,
                   int group_count, coder::array<double, 2>& result);

// x, frm and t are columns of n values, oldest first: the parameter, the rotor frequency in Hz
// and the seconds since the oldest row. horizon is the forecast's reach in seconds;
// thresholds holds green, yellow and orange, of which orange alone is used; bit 0 of options
// asks for the forecast.
//
// The rows of one speed are chosen: frequencies are rounded to multiples of 2 Hz and grouped;
// a machine running steadily above 5 Hz (its last rounded speed equals the median of the
// last three) takes the group of its last row; a machine standing now takes the highest-speed
// group if its last row lies in the group of the largest median value, else that group.
// monotone = sum(sign(diff(s))) / (c - 1) over the c chosen rows, s the loess smoothing (over
// the time stamps, automatic window) of their trailing mean over six values. trend (1 by n)
// holds at the chosen rows the cubic polyfit(ts, xs, 3) evaluated there, NaN elsewhere. With
// the forecast bit and a running machine, a monotone below 0.3 (or NaN) leaves trend NaN;
// otherwise the cubic is fitted to the chosen values resampled linearly every 600 s and
// extended by horizon on the same step; where it first comes nearest to orange while rising
// through it, rul_days is the days from the newest chosen row to that point and curve the
// fitted points from just after the newest chosen row to ten steps past it (cut at the end).
//
// Nothing computed (fewer than three rows, sizes that differ, a speed that changes at the
// last row, a machine that never ran): trend all NaN, monotone and rul_days NaN. Where the
// forecast's resampling cannot run (stamps that do not rise, or less than one 600 s step of
// chosen history) trend stays NaN and monotone is given. curve is x = [NaN], y = [NaN]
// whenever there is no crossing. monotone_size is always 1 by 1. Pure function, reentrant.
void detrend_filter_group_mon_rul(const coder::array<double, 1>& x,
                                  const coder::array<double, 1>& frm,
                                  const coder::array<double, 1>& t, double horizon,
                                  const double thresholds[3], int options,
                                  coder::array<double, 2>& trend, double* monotone,
                                  int monotone_size[2], double* rul_days, struct0_T* curve);

} // namespace detrend_filter_group_mon_rul_ns
