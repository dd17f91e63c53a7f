// One row of each of two wireless modules as the sensors deliver it: type 7, three IIS3DWBTR
// axes of 16384 samples at 26667 Hz on a converter-fed motor of one pole pair, whose rotor is
// looked for over the whole range such a drive can turn it ("frequency_control", 5401 scan
// points after decimating by 8); and type 6, two ADS131 axes of 16384 samples at 16000 Hz on a
// motor of two pole pairs. For each, the whole block, its stages, and its FFT floor: per axis two
// real transforms of 16 times the record (the band sums of the acceleration and of the velocity,
// both padded 16-fold in this generation) and two pairs of complex forward and inverse
// transforms of the record (the analytic velocity of the rotor search and the harmonic scans,
// and the analytic acceleration of the bearing lines), timed in the same run.
// Built a second time as second_generation_direct_bench, with the scans and FIR filters in
// their direct forms, for the block's speed-up over the method as written.
#include "blocks/vibration/bearing.h"
#include "blocks/vibration/conditioning.h"
#include "blocks/vibration/defects.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/sensor_samples.h"
#include "blocks/vibro_tk703_2_ve/vibro_tk703_2_ve.h"
#include "blocks/vibro_tk703_3_ve/vibro_tk703_3_ve.h"
#include "coder/fft.h"
#include "coder/hilbert.h"
#include "synth/MachineSignals.h"

#ifdef VEK_DIRECT_FORMS
#include "direct_forms.h"
#endif

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr int kSamples = 16384;
constexpr unsigned kFrequencyControl = 0x100;
constexpr double kFullScale = 16, kChannelGain = 100;

// The two rows: the module type's rate, its axes, the motor's pole pairs and supply.
struct RowForm {
  double rate;
  int axes;
  double pole_pairs, supply;
  bool ads131;
};
constexpr RowForm kType7{26667, 3, 1, 40.0, false}, kType6{16000, 2, 2, 45.0, true};

struct Row {
  vibration::SecondGenerationInput in;
  double frm;
  explicit Row(const RowForm& f) {
    synth::Machine m;
    m.pole_pairs = f.pole_pairs, m.supply = f.supply, m.noise = 0.002, m.outer_race = 0.02;
    m.harmonics[1] = 0.02;
    m.bearing = {52.5, 7.94, 0.2618, 9};
    frm = m.rotorFrequency();
    for (int a = 0; a < f.axes; ++a) {
      const std::vector<double> g = synth::acceleration(m, a, f.rate, kSamples);
      const std::vector<double> counts = f.ads131 ? synth::ads131Counts(g, kChannelGain)
                                                  : synth::accelerometerCounts(g, kFullScale);
      in.vibro[a].set_size(1, kSamples);
      std::copy(counts.begin(), counts.end(), in.vibro[a].data());
      in.g_del[a] = kChannelGain;
    }
    in.Lv = kSamples, in.fs = f.rate, in.poles = f.pole_pairs, in.FS = kFullScale;
    in.bearing = m.bearing;
    in.word = kFrequencyControl;
  }
};
const Row& row(const RowForm& f) {
  static const Row type7(kType7), type6(kType6);
  return &f == &kType7 ? type7 : type6;
}
const RowForm& form(const benchmark::State& state) {
  return state.range(0) == 7 ? kType7 : kType6;
}

void BM_whole_block(benchmark::State& state) {
  const RowForm& f = form(state);
  for (auto _ : state) {
    Row r = row(f);
    vibration::SecondGenerationOutput out;
    if (f.axes == 3) {
      vibro_tk703_3_ve_ns::vibro_tk703_3_ve(r.in, out);
    } else {
      vibro_tk703_2_ve_ns::vibro_tk703_2_ve(r.in, out);
    }
    benchmark::DoNotOptimize(out.FRM);
  }
}

// The acceleration in g, its integrals and their analytic velocity, per axis, as the stages
// after the conditioning take them.
struct Axes {
  coder::array<double, 2> g[3], vel[3];
  coder::array<creal_T, 2> z[3];
  explicit Axes(const RowForm& f) {
    for (int a = 0; a < f.axes; ++a) {
      coder::array<double, 2> acc, dsp;
      if (f.ads131) {
        vibration::v_data_ads131_v2(row(f).in.vibro[a], kChannelGain, g[a]);
      } else {
        vibration::v_data_IIS3DWBTR(row(f).in.vibro[a], kFullScale, g[a]);
      }
      vibration::ACC_VEL_DSP(g[a], f.rate, acc, vel[a], dsp);
      coder::hilbert(vel[a], z[a]);
    }
  }
};

void BM_stage_conditioning(benchmark::State& state) {
  const RowForm& f = form(state);
  for (auto _ : state) {
    for (int a = 0; a < f.axes; ++a) {
      coder::array<double, 2> g, acc, vel, dsp;
      if (f.ads131) {
        vibration::v_data_ads131_v2(row(f).in.vibro[a], kChannelGain, g);
      } else {
        vibration::v_data_IIS3DWBTR(row(f).in.vibro[a], kFullScale, g);
      }
      vibration::ACC_VEL_DSP(g, f.rate, acc, vel, dsp);
      vibration::AxisStatistics s;
      vibration::paramData_v(kSamples, f.rate, acc, vel, dsp, vibration::kSecondGeneration, s);
      benchmark::DoNotOptimize(s.vel[7]);
    }
  }
}

void BM_stage_rotor_search(benchmark::State& state) {
  const RowForm& f = form(state);
  const Axes axes(f);
  for (auto _ : state) {
    for (int a = 0; a < f.axes; ++a) {
      benchmark::DoNotOptimize(vibration::find_rotor_freq_base(f.rate, f.pole_pairs,
                                                               axes.z[a].data(), kSamples,
                                                               vibration::FrequencyMode::control)
                                   .frequency);
    }
  }
}

void BM_stage_bearing_lines(benchmark::State& state) {
  const RowForm& f = form(state);
  const Axes axes(f);
  for (auto _ : state) {
    for (int a = 0; a < f.axes; ++a) {
      benchmark::DoNotOptimize(
          vibration::vibro_rms_bpfio_1(f.rate, kSamples, row(f).frm, row(f).in.bearing, axes.g[a],
                                       vibration::BearingMode::filter_cor, f.rate)
              .bpfo);
    }
  }
}

void BM_stage_harmonics_imbalance_defects(benchmark::State& state) {
  const RowForm& f = form(state);
  const Axes axes(f);
  const double dt = 1.0 / f.rate;
  for (auto _ : state) {
    for (int a = 0; a < f.axes; ++a) {
      vibration::Harmonic h[3];
      vibration::find_rotor_freq_all(row(f).frm, dt, kSamples, axes.z[a].data(), h);
      double fr = row(f).frm;
      benchmark::DoNotOptimize(
          vibration::find_rotor_freq(dt, kSamples, axes.z[a].data(), fr, 0.2, 0.002));
    }
    benchmark::DoNotOptimize(vibration::deffect_module(row(f).frm, dt, kSamples, axes.z[0].data(),
                                                       axes.z[1].data(), {},
                                                       vibration::FrequencyMode::control)
                                 .count);
  }
}

void BM_fft_floor(benchmark::State& state) {
  const RowForm& f = form(state);
  std::vector<double> x(kSamples, 1.0);
  std::vector<creal_T> y(16 * kSamples), z(kSamples, creal_T{1.0, 0.0}), w(kSamples);
  for (auto _ : state) {
    for (int a = 0; a < f.axes; ++a) {
      coder::internal::fftReal(x.data(), kSamples, 16 * kSamples, y.data());
      coder::internal::fftReal(x.data(), kSamples, 16 * kSamples, y.data());
      for (int pair = 0; pair < 2; ++pair) {
        coder::internal::fftComplex(z.data(), kSamples, kSamples, false, w.data());
        coder::internal::fftComplex(w.data(), kSamples, kSamples, true, z.data());
      }
    }
    benchmark::DoNotOptimize(y[1].re);
  }
}

// 7: the type 7 row; 6: the type 6 row.
BENCHMARK(BM_whole_block)->Arg(7)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_conditioning)->Arg(7)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_rotor_search)->Arg(7)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_bearing_lines)->Arg(7)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_harmonics_imbalance_defects)->Arg(7)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_fft_floor)->Arg(7)->Arg(6)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
