#include "blocks/vibration/first_generation.h"

#include "blocks/vibration/field_analysis.h"
#include "blocks/vibration/options.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/sensor_samples.h"
#include "coder/hilbert.h"
#include "coder/rt_nonfinite.h"

#include <algorithm>
#include <cmath>

namespace vibration {
namespace {

// A machine whose velocity in the 10-990 Hz band sums to less than this over its three axes
// counts as stopped: no speed is believed, mm/s.
constexpr double kStopped = 1.2;
// Frequencies that disagree by more than this are flagged, percent.
constexpr double kDisagreement = 1.0;

} // namespace

void runFirstGeneration(const FirstGenerationForm& form, FirstGenerationInput& in,
                        FirstGenerationOutput& out) {
  const Options options = config_function(in.word);
  const double P = in.poles;
  const int n = in.Lv > 0.0 ? int(std::min(in.Lv, double(in.vibro[0].numel()))) : 0;

  coder::array<double, 2> magnet(in.magnet), mag;
  zeroNaN(magnet);
  dell_null_data(magnet, in.Lm, mag);

  coder::array<double, 2> g[3], acc[3], vel[3], dsp[3];
  LostSamples lost[3];
  for (int a = 0; a < 3; ++a) {
    zeroNaN(in.vibro[a]);
    if (form.lis344) {
      lost[a] = v_data_LIS344(in.vibro[a], in.ku[a], in.g_del[a], g[a]);
    } else {
      v_data_IIS3DWBTR(in.vibro[a], in.FS, g[a]);
    }
  }

  std::fill(&out.bearing[0], &out.bearing[0] + 5, rtNaN);
  std::fill(&out.harmonics[0][0], &out.harmonics[0][0] + 9, rtNaN);
  std::fill(&out.imbalance[0], &out.imbalance[0] + 3, rtNaN);
  out.FREAL = out.supply_amplitude = out.FRM = out.SAD = out.SPEED = rtNaN;
  double flag_a = 0.0, flag_b = 0.0, magnet_error = 0.0, harmonic_flags[3][3] = {};

  const double rate = form.statistics.band_rate > 0.0 ? form.statistics.band_rate : in.fv;
  for (int a = 0; a < 3; ++a) {
    ACC_VEL_DSP(g[a], rate, acc[a], vel[a], dsp[a]);
    paramData_v(in.Lv, rate, acc[a], vel[a], dsp[a], form.statistics, out.table[a]);
  }

  double frm = rtNaN;
  if (!options.skip_rotor) {
    const SupplyAndSlip field = cal_param_ad_par(P, in.Lm, mag, options.frequency, options.field);
    out.FREAL = field.F;
    out.supply_amplitude = field.amplitude;
    out.SAD = field.s;
    out.SPEED = field.speed;
    frm = field.fr;
    magnet_error = field.error;

    // The rotor as the vibration sees it, on each axis.
    coder::array<creal_T, 2> z[3];
    for (int a = 0; a < 3; ++a) {
      coder::hilbert(vel[a], z[a]);
    }
    const creal_T* analytic[3] = {z[0].data(), z[1].data(), z[2].data()};
    RotorLine lines[3];
    search_rotor_frequency_vibro_Freal(out.FREAL, rate, n, P, analytic, options.frequency, lines);
    double f[3] = {lines[0].frequency, lines[1].frequency, lines[2].frequency};
    double fvib, fmax, fmin;
    if (options.two_lowest) {
      std::sort(f, f + 3);
      fvib = (f[0] + f[1]) / 2.0;
      fmax = std::max(f[0], f[1]);
      fmin = std::min(f[0], f[1]);
    } else {
      fvib = (f[0] + f[1] + f[2]) / 3.0;
      fmax = std::max({f[0], f[1], f[2]});
      fmin = std::min({f[0], f[1], f[2]});
    }
    const double diff_a = std::fabs((frm - fvib) / fvib) * 100.0;
    const double diff_b = std::fabs((fmax - fmin) / fmax) * 100.0;
    flag_a = diff_a > kDisagreement;
    flag_b = diff_b > kDisagreement;
    // Axes that agree better among themselves than with the field take over the speed.
    if (diff_b < diff_a) {
      const double fs = out.FREAL / P;
      out.SAD = (fs - fvib) / fs;
      frm = (1.0 - out.SAD) * out.FREAL / P;
      out.SPEED = frm * 60.0;
    }
    const double bands[3] = {out.table[0].vel[7], out.table[1].vel[7], out.table[2].vel[7]};
    const double rss = rootSumSquares(bands, 3);

    if (flag_a != 0.0 && flag_b != 0.0 && !(rss < kStopped)) {
      out.FREAL = frm = out.SAD = out.SPEED = rtNaN;
    } else if (rss < kStopped || magnet_error != 0.0) {
      out.FREAL = frm = out.SAD = out.SPEED = 0.0;
    } else {
      const double dt = 1.0 / rate;
      if (!options.journal) {
        const BearingMode mode = form.envelope_only ? BearingMode::envspectrum : options.bearing;
        double amplitudes[4][3];
        for (int a = 0; a < 3; ++a) {
          const BearingLines b =
              vibro_rms_bpfio_1(rate, n, frm, in.bearing, g[a], mode, form.envelope_rate);
          amplitudes[0][a] = b.bpfo;
          amplitudes[1][a] = b.bpfi;
          amplitudes[2][a] = b.ftf;
          amplitudes[3][a] = b.bsf;
        }
        for (int i = 0; i < 4; ++i) {
          out.bearing[i] = rootSumSquares(amplitudes[i], 3);
        }
      } else {
        double whirl[2];
        for (int a = 0; a < 2; ++a) {
          double fr = frm, flag = 0.0;
          whirl[a] = toMillimetres(find_oil_whirl_instability_freq(dt, n, analytic[a], fr, flag));
        }
        out.bearing[4] = rootSumSquares(whirl, 2);
      }
      const double harmonic_dt = form.harmonic_dt > 0.0 ? form.harmonic_dt : dt;
      for (int a = 0; a < 3; ++a) {
        Harmonic h[3];
        find_rotor_freq_all(frm, harmonic_dt, n, analytic[a], h);
        for (int k = 0; k < 3; ++k) {
          out.harmonics[a][k] = toMillimetres(h[k].amplitude);
          harmonic_flags[a][k] = h[k].flag;
        }
        double fr = frm;
        out.imbalance[a] = toMillimetres(find_rotor_freq(dt, n, analytic[a], fr));
      }
    }
  }

  // status_vector_fun_all: a bit for every argument that is not 0.0 (NaN included).
  const auto bit = [](double v, unsigned mask) { return v != 0.0 ? mask : 0u; };
  out.status_1 = 0;
  out.status_2 = bit(flag_b, 0x100u) | bit(flag_a, 0x200u) | bit(magnet_error, 0x400u);
  for (int a = 0; a < 3; ++a) {
    for (int k = 0; k < 3; ++k) {
      out.status_2 |= bit(harmonic_flags[a][k], 0x800u << (3 * a + k));
    }
  }
  if (form.lis344) {
    for (int a = 0; a < 3; ++a) {
      out.status_2 |= bit(lost[a].runs, 1u << a);
      out.status_1 |= bit(lost[a].runs, 1u);
    }
  }
  out.FRM = frm;
}

} // namespace vibration
