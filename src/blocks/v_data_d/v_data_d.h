// The pressure block: a pressure transmitter's 24-bit count turned into pressure.
#pragma once

namespace v_data_d_ns {

// The count v is a 24-bit two's complement value of the converter: above 8388607.0 it is
// negative, c = 1200.0 * (v - 16777215.0), else c = 1200.0 * v (the complement is taken
// against 16777215, not 16777216, as the installed transmitters' readings require). The
// pressure is (3.97 * (c / 8388608.0) / 1000.0 - 0.5) / 0.4, evaluated in that order.
double v_data_d(double v);

} // namespace v_data_d_ns
