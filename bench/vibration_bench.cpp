// One row of a type 10 module as the sensor delivers it (three axes of 16384 samples at
// 26667 Hz, a magnetic channel of 4096 samples at 500 Hz, two pole pairs): the whole block,
// each of its stages, and its FFT floor, the plain transforms of the lengths the row needs
// (per axis a real transform of 4 and of 16 times the record for the band sums, a complex
// forward and inverse of the record for the analytic signal), timed in the same run.
// Built a second time as vibration_direct_bench, with the scans and FIR filters in their
// direct forms (a sine and a cosine per term, convolution by loops) linked in place of the
// fast kernels, for the block's speed-up over the method as written.
#include "blocks/vibration/bearing.h"
#include "blocks/vibration/conditioning.h"
#include "blocks/vibration/field_analysis.h"
#include "blocks/vibration/rotor.h"
#include "blocks/vibration/sensor_samples.h"
#include "blocks/vibro_tk701_3_ve/vibro_tk701_3_ve.h"
#include "coder/detrend.h"
#include "coder/fft.h"
#include "coder/hilbert.h"
#include "synth/MachineSignals.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#ifdef VEK_DIRECT_FORMS
#include "direct_forms.h"
#endif

namespace {

constexpr double kRate = 26667, kFullScale = 16;
constexpr int kSamples = 16384, kField = 4096;

struct Row {
  coder::array<double, 2> axes[3], field, none;
  synth::Machine machine;
  Row() {
    machine.slip = 0.0312, machine.noise = 0.002, machine.outer_race = 0.02;
    machine.bearing = {52.5, 7.94, 0.2618, 9};
    for (int a = 0; a < 3; ++a)
      axes[a] = array(
          synth::accelerometerCounts(synth::acceleration(machine, a, kRate, kSamples), kFullScale));
    field = array(synth::magneticField(machine, 500, kField));
  }
  static coder::array<double, 2> array(const std::vector<double>& v) {
    coder::array<double, 2> r;
    r.set_size(1, int(v.size()));
    std::copy(v.begin(), v.end(), r.data());
    return r;
  }
};
const Row& row() {
  static const Row r;
  return r;
}

// The process's peak resident memory so far, MB (VmHWM).
double peakMegabytes() {
  std::ifstream status("/proc/self/status");
  std::string key;
  double kb = 0;
  while (status >> key) {
    if (key == "VmHWM:") {
      status >> kb;
      break;
    }
  }
  return kb / 1024;
}

void BM_row_whole_block(benchmark::State& state) {
  for (auto _ : state) {
    Row r = row();
    vibration::FirstGenerationOutput out;
    vibro_tk701_3_ve_ns::vibro_tk701_3_ve(r.field, r.none, r.none, r.axes[0], r.axes[1], r.axes[2],
                                          kSamples, kRate, kField, 500, 55, 2, r.machine.bearing,
                                          kFullScale, 0, out);
    benchmark::DoNotOptimize(out.FRM);
  }
  state.counters["peak_MB"] = peakMegabytes();
}

void BM_stage_conditioning(benchmark::State& state) {
  for (auto _ : state) {
    for (int a = 0; a < 3; ++a) {
      coder::array<double, 2> g, acc, vel, dsp;
      vibration::v_data_IIS3DWBTR(row().axes[a], kFullScale, g);
      vibration::ACC_VEL_DSP(g, kRate, acc, vel, dsp);
      vibration::AxisStatistics s;
      vibration::paramData_v(kSamples, kRate, acc, vel, dsp, vibration::kFirstGeneration, s);
      benchmark::DoNotOptimize(s.vel[7]);
    }
  }
}

// Of the conditioning: the nine least-squares line removals of a row (three per axis).
void BM_conditioning_detrend(benchmark::State& state) {
  coder::array<double, 2> g, out;
  vibration::v_data_IIS3DWBTR(row().axes[0], kFullScale, g);
  for (auto _ : state) {
    for (int k = 0; k < 9; ++k) {
      coder::detrend(g, out);
      benchmark::DoNotOptimize(out[0]);
    }
  }
}

void BM_stage_field(benchmark::State& state) {
  coder::array<double, 2> mag;
  vibration::dell_null_data(row().field, kField, mag);
  for (auto _ : state) {
    benchmark::DoNotOptimize(vibration::cal_param_ad_par(2, kField, mag,
                                                         vibration::FrequencyMode::fixed,
                                                         vibration::FieldFilter::amp1)
                                 .fr);
  }
}

// The analytic velocity of each axis, as the scans take it.
struct Analytic {
  coder::array<double, 2> g[3];
  coder::array<creal_T, 2> z[3];
  Analytic() {
    for (int a = 0; a < 3; ++a) {
      coder::array<double, 2> acc, vel, dsp;
      vibration::v_data_IIS3DWBTR(row().axes[a], kFullScale, g[a]);
      vibration::ACC_VEL_DSP(g[a], kRate, acc, vel, dsp);
      coder::hilbert(vel, z[a]);
    }
  }
};

void BM_stage_rotor_search(benchmark::State& state) {
  const Analytic an;
  const creal_T* z[3] = {an.z[0].data(), an.z[1].data(), an.z[2].data()};
  for (auto _ : state) {
    vibration::RotorLine lines[3];
    vibration::search_rotor_frequency_vibro_Freal(50, kRate, kSamples, 2, z,
                                                  vibration::FrequencyMode::fixed, lines);
    benchmark::DoNotOptimize(lines[0].frequency);
  }
}

void BM_stage_bearing_lines(benchmark::State& state) {
  const Analytic an;
  for (auto _ : state) {
    for (int a = 0; a < 3; ++a) {
      benchmark::DoNotOptimize(
          vibration::vibro_rms_bpfio_1(kRate, kSamples, 24.18, row().machine.bearing, an.g[a],
                                       vibration::BearingMode::filter_cor, kRate)
              .bpfo);
    }
  }
}

void BM_stage_harmonics_and_imbalance(benchmark::State& state) {
  const Analytic an;
  for (auto _ : state) {
    for (int a = 0; a < 3; ++a) {
      vibration::Harmonic h[3];
      vibration::find_rotor_freq_all(24.18, 1 / kRate, kSamples, an.z[a].data(), h);
      double fr = 24.18;
      benchmark::DoNotOptimize(vibration::find_rotor_freq(1 / kRate, kSamples, an.z[a].data(), fr));
    }
  }
}

void BM_fft_floor(benchmark::State& state) {
  std::vector<double> x(kSamples, 1.0);
  std::vector<creal_T> y(16 * kSamples), z(kSamples, creal_T{1.0, 0.0}), w(kSamples);
  for (auto _ : state) {
    for (int a = 0; a < 3; ++a) {
      coder::internal::fftReal(x.data(), kSamples, 4 * kSamples, y.data());
      coder::internal::fftReal(x.data(), kSamples, 16 * kSamples, y.data());
      coder::internal::fftComplex(z.data(), kSamples, kSamples, false, w.data());
      coder::internal::fftComplex(w.data(), kSamples, kSamples, true, z.data());
    }
    benchmark::DoNotOptimize(y[1].re);
  }
}

BENCHMARK(BM_row_whole_block)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_conditioning)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_conditioning_detrend)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_field)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_rotor_search)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_bearing_lines)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stage_harmonics_and_imbalance)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_fft_floor)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
