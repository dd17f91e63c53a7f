// The power of the connection of a full measurement (type_param 21), by the method the
// module's wiring calls for.
#pragma once

#include "blocks/electrical/calc_modul_7R_full.h"
#include "blocks/electrical/options.h"
#include "blocks/electrical/parameters.h"

namespace calc_modul_7R_full_ns {

// phdiffmeasure: the angle of y's strongest bin less that of x's, radians, from the spectra
// of both with the mean removed and a Hanning window; not folded into (-pi, pi].
double phdiffmeasure(const coder::array<double, 2>& x, const coder::array<double, 2>& y);

// The power fields of the mode, from the scaled voltages and currents and their RMS values in
// `rms` (U, U_line, I). With C(a, b) = (0.5 / N) sum(hilbert(a) .* conj(hilbert(b))), the
// complex power of a wattmeter:
//   mode_three_wattmeter    P_x = mean(u_x i_x), S_x = U_x I_x, Q_x = tan(acos(P_x / S_x)) P_x
//   mode_two_wattmeter      P + jQ = C(u_a, i_a) + C(u_b, i_c) (u_a, u_b the line voltages
//                           AB and CB), S = |P + jQ|; totals only
//   mode_two_wattmeter_faz  u_a -= u_b, u_c -= u_b in place; from the measured angles p1, p2
//                           of (u_a, i_a), (u_c, i_c): P = |cos p1| U_AB I_A + |cos p2| U_BC
//                           I_C, Q likewise with sin, S = sqrt(P^2 + Q^2); totals only
//   mode_three_wattmeter_c  P_x + jQ_x = C(u_x, i_x), S_x = |C|; S the sum of the S_x
// and nothing in not_mode_power and mode_three_wattmeter_c_3.
void power_modes(PowerMode mode, Phases& u, const Phases& i, double N, const ElectricalOutput& rms,
                 PowerFields& out);

} // namespace calc_modul_7R_full_ns
