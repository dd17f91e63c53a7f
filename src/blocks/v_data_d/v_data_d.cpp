#include "blocks/v_data_d/v_data_d.h"

namespace v_data_d_ns {

double v_data_d(double v) {
  double c;
  if (v > 8388607.0) {
    c = 1200.0 * (v - 16777215.0);
  } else {
    c = 1200.0 * v;
  }
  return (3.97 * (c / 8388608.0) / 1000.0 - 0.5) / 0.4;
}

} // namespace v_data_d_ns
