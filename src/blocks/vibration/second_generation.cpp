#include "blocks/vibration/second_generation.h"

#include "blocks/vibration/options.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/sensor_samples.h"
#include "coder/hilbert.h"
#include "coder/rt_nonfinite.h"

#include <algorithm>
#include <cmath>

namespace vibration {
namespace {

// A machine whose velocity in the 10-990 Hz band sums to less than this over its axes counts
// as stopped: the speed is 0, mm/s.
constexpr double kStopped = 0.6;
// The imbalance line: the window about the rotor frequency and its step, Hz.
constexpr double kImbalanceHalfWidth = 0.2, kImbalanceStep = 0.002;

void convert(const SecondGenerationForm& form, const SecondGenerationInput& in, int a,
             coder::array<double, 2>& g) {
  switch (form.converter) {
  case Converter::IIS3DWBTR:
    v_data_IIS3DWBTR(in.vibro[a], in.FS, g);
    break;
  case Converter::ADS131:
    v_data_ads131_v2(in.vibro[a], in.g_del[a], g);
    break;
  case Converter::RS89x:
    v_data_rs_89x_x(in.vibro[a], g);
    break;
  }
}

} // namespace

void runSecondGeneration(const SecondGenerationForm& form, SecondGenerationInput& in,
                         SecondGenerationOutput& out) {
  const Options options = config_function(in.word);
  const int axes = form.axes;
  const int n = in.Lv > 0.0 ? int(std::min(in.Lv, double(in.vibro[0].numel()))) : 0;
  const double fs = in.fs;

  std::fill(&out.bearing[0], &out.bearing[0] + 5, rtNaN);
  std::fill(&out.harmonics[0][0], &out.harmonics[0][0] + 9, rtNaN);
  std::fill(&out.imbalance[0], &out.imbalance[0] + 3, rtNaN);
  out.FRM = rtNaN;
  out.defects = DefectList{};

  coder::array<double, 2> g[3], acc[3], vel[3], dsp[3];
  for (int a = 0; a < axes; ++a) {
    zeroNaN(in.vibro[a]);
    convert(form, in, a, g[a]);
    ACC_VEL_DSP(g[a], fs, acc[a], vel[a], dsp[a]);
    paramData_v(in.Lv, fs, acc[a], vel[a], dsp[a], kSecondGeneration, out.table[a]);
  }

  double disagreement = 0.0, harmonic_flags[3][3] = {};
  if (!options.skip_rotor) {
    // One analytic velocity per axis serves the rotor search and every scan after it.
    coder::array<creal_T, 2> z[3];
    double f[3] = {0.0, 0.0, 0.0};
    for (int a = 0; a < axes; ++a) {
      coder::hilbert(vel[a], z[a]);
      f[a] = find_rotor_freq_base(fs, in.poles, z[a].data(), n, options.frequency).frequency;
    }
    if (axes == 3) {
      disagreement = error_froot_fun_703_3(f[0], f[1], f[2]);
    } else if (axes == 2) {
      disagreement = error_froot_fun_703_2(f[0], f[1]);
    }
    double bands[3];
    for (int a = 0; a < axes; ++a) {
      bands[a] = out.table[a].vel[7];
    }
    if (disagreement != 0.0 || rootSumSquares(bands, axes) < kStopped) {
      out.FRM = 0.0;
    } else {
      const double frm = f[axes > 1 ? 1 : 0], dt = 1.0 / fs;
      if (!options.journal) {
        double amplitudes[4][3];
        for (int a = 0; a < axes; ++a) {
          const BearingLines b =
              vibro_rms_bpfio_1(fs, n, frm, in.bearing, g[a], options.bearing, form.envelope_rate);
          amplitudes[0][a] = b.bpfo;
          amplitudes[1][a] = b.bpfi;
          amplitudes[2][a] = b.ftf;
          amplitudes[3][a] = b.bsf;
        }
        for (int i = 0; i < 4; ++i) {
          out.bearing[i] = rootSumSquares(amplitudes[i], axes);
        }
      } else {
        double whirl[2];
        const int whirl_axes = std::min(axes, 2);
        for (int a = 0; a < whirl_axes; ++a) {
          double fr = frm, flag = 0.0;
          whirl[a] = toMillimetres(find_oil_whirl_instability_freq(dt, n, z[a].data(), fr, flag));
        }
        out.bearing[4] = rootSumSquares(whirl, whirl_axes);
      }
      for (int a = 0; a < axes; ++a) {
        Harmonic h[3];
        find_rotor_freq_all(frm, dt, n, z[a].data(), h);
        for (int k = 0; k < 3; ++k) {
          out.harmonics[a][k] = toMillimetres(h[k].amplitude);
          harmonic_flags[a][k] = h[k].flag;
        }
        double fr = frm;
        out.imbalance[a] = toMillimetres(
            find_rotor_freq(dt, n, z[a].data(), fr, kImbalanceHalfWidth, kImbalanceStep));
      }
      // One axis stands for both X and Y in the rules of the single-axis blocks.
      out.defects = deffect_module(frm, dt, n, z[0].data(), z[axes > 1 ? 1 : 0].data(),
                                   in.thresholds, options.frequency);
      out.FRM = frm;
    }
  }

  out.status_1 = 0;
  out.status_2 = disagreement != 0.0 ? 0x100u : 0u;
  for (int a = 0; a < axes; ++a) {
    for (int k = 0; k < 3; ++k) {
      out.status_2 |= harmonic_flags[a][k] != 0.0 ? 0x800u << (3 * a + k) : 0u;
    }
  }
}

} // namespace vibration
