// One row of a voltage and current module as the module sends it, of both kinds that carry
// analysis: a full measurement (type_param 21: six channels of 16384 samples at 10000 Hz,
// 1.6 s, the power-of-two record the modules' converters fill, as the vibration modules do)
// and a current measurement (type_param 8: three channels of 4096 samples at 500 Hz, the
// record the supply and slip analysis presumes). For each: the whole block, its stages, its
// FFT floor (the plain transforms of the lengths the row needs: a real transform per channel
// for the distortion's periodogram, a complex forward and inverse per analytic signal, the
// Clarke component's and, for the power, each channel's; the power now reads its sums from real
// spectra, but the floor stays that of the analysis as stated, so that figures compare), and
// the row's correlation scans by the kernel beside the same scans in direct form (a sine and a
// cosine per term).
#include "blocks/electrical/calc_modul_7R_full.h"
#include "blocks/electrical/current_signature.h"
#include "blocks/electrical/options.h"
#include "blocks/electrical/parameters.h"
#include "blocks/electrical/power.h"
#include "blocks/vibration/field_analysis.h"
#include "coder/correlation_scan.h"
#include "coder/fft.h"
#include "coder/hilbert.h"
#include "coder/thd.h"
#include "synth/ElectricalSignals.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace calc_modul_7R_full_ns;
// three analytic wattmeters, four-wire, bearing lines by the correlation scan
constexpr unsigned kConfig = 0x40001;

struct Row {
  ElectricalInput in;
  const Stream* stream;
  coder::array<double, 2> u[3], i[3], x; // scaled, and the currents' Clarke component
  coder::array<creal_T, 2> z;
  explicit Row(int type_param) {
    const int n = type_param == 21 ? 16384 : 4096;
    stream = type_param == 21 ? &kFullMeasurement : &kSingleGroup;
    synth::ThreePhaseMotor m;
    m.eccentricity = 0.02, m.sideband_low = m.sideband_high = 0.003, m.current_5th = 0.04;
    m.bearing = {52.5, 7.94, 0.2618, 9}, m.bearing_line = 0.05, m.noise = 0.01;
    for (int p = 0; p < 3; ++p) {
      in.u_gain[p] = {0, 0, 20}, in.i_gain[p] = {0, 0, 1};
      in.u[p] = array(
          synth::channelCounts(synth::phaseVoltage(m, p, stream->rate, n), in.u_gain[p], 8192));
      in.i[p] = array(
          synth::channelCounts(synth::phaseCurrent(m, p, stream->rate, n), in.i_gain[p], 8192));
      data_586_1(in.u[p], in.u_gain[p], n, false, u[p]);
      data_586_1(in.i[p], in.i_gain[p], n, false, i[p]);
    }
    in.N = n, in.bearing = m.bearing, in.motor = {2, 50, 1450, 55};
    in.type_param = type_param, in.config = kConfig;
    x.set_size(1, n);
    for (int k = 0; k < n; ++k) {
      x[k] = (2 * i[0][k] - (i[2][k] + i[1][k])) / 3;
    }
    coder::hilbert(x, z);
  }
  static coder::array<double, 2> array(const std::vector<double>& v) {
    coder::array<double, 2> r;
    r.set_size(1, int(v.size()));
    std::copy(v.begin(), v.end(), r.data());
    return r;
  }
  int n() const { return int(in.N); }
};
const Row& row(int type_param) {
  static const Row full(21), currents(8);
  return type_param == 21 ? full : currents;
}

void BM_whole_block(benchmark::State& state) {
  for (auto _ : state) {
    ElectricalInput in = row(int(state.range(0))).in;
    ElectricalOutput out;
    calc_modul_7R_full(in, out);
    benchmark::DoNotOptimize(out.I[0]);
  }
}

void BM_stage_scaling(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  for (auto _ : state) {
    coder::array<double, 2> out;
    for (int p = 0; p < 3; ++p) {
      data_586_1(r.in.u[p], r.in.u_gain[p], r.in.N, false, out);
      data_586_1(r.in.i[p], r.in.i_gain[p], r.in.N, false, out);
    }
    benchmark::DoNotOptimize(out[0]);
  }
}

void BM_stage_voltages(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  const Options options = config_function_586_1(kConfig);
  for (auto _ : state) {
    ElectricalOutput out;
    calc_modul_v(*r.stream, r.u, r.n(), options, out);
    benchmark::DoNotOptimize(out.THD_U[0]);
  }
}

void BM_stage_current_distortion(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  for (auto _ : state) {
    for (int p = 0; p < 3; ++p) {
      HarmonicTable t;
      benchmark::DoNotOptimize(
          coder::thd(r.i[p], r.stream->rate, r.stream->harmonics, t.power, t.frequency));
    }
  }
}

void BM_stage_supply_and_slip(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(vibration::cal_param_ad_par(2, r.n(), r.x,
                                                         vibration::FrequencyMode::fixed,
                                                         vibration::FieldFilter::amp1)
                                 .s);
  }
}

void BM_stage_bearing_lines(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  for (auto _ : state) {
    double lines[4];
    mcsa_bpfio(*r.stream, r.x, r.z.data(), r.n(), vibration::BearingMode::filter_cor, r.in.bearing,
               lines);
    benchmark::DoNotOptimize(lines[0]);
  }
}

void BM_stage_rotor_sidebands(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  for (auto _ : state) {
    coder::array<creal_T, 2> z;
    coder::hilbert(r.x, z);
    benchmark::DoNotOptimize(rotorSidebands(*r.stream, z.data(), r.n(), 49.93, 0.03).low);
  }
}

void BM_stage_power(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  ElectricalOutput rms;
  for (auto _ : state) {
    coder::array<double, 2> u[3] = {r.u[0], r.u[1], r.u[2]};
    power_modes(PowerMode::mode_three_wattmeter_c, u, r.i, r.n(), rms, rms.power);
    benchmark::DoNotOptimize(rms.power.P[0]);
  }
}

void BM_fft_floor(benchmark::State& state) {
  const int n = row(int(state.range(0))).n();
  const bool full = state.range(0) == 21;
  const size_t len = static_cast<size_t>(n);
  std::vector<double> x(len, 1.0);
  std::vector<creal_T> y(len), z(len, creal_T{1.0, 0.0}), w(len);
  for (auto _ : state) {
    for (int c = 0; c < (full ? 6 : 3); ++c) {
      coder::internal::fftReal(x.data(), n, n, y.data());
    }
    for (int c = 0; c < (full ? 7 : 1); ++c) {
      coder::internal::fftComplex(z.data(), n, n, false, w.data());
      coder::internal::fftComplex(w.data(), n, n, true, z.data());
    }
    benchmark::DoNotOptimize(y[1].re);
  }
}

// The grids the row scans: the supply's coarse (9 points at 0.1 Hz) and fine (401 at 0.002 Hz)
// scans, the two rotor lines' windows of cor_left_and_right (about 1250 points each for two
// pole pairs), the four bearing lines (201 points at 0.01 Hz) and the mains line with its two
// slip sidebands (201 points at 0.002 Hz each), with the time step each assumes.
struct Grid {
  double f0, step, dt;
  int m;
};
std::vector<Grid> grids(const Row& r) {
  const double dt = r.stream->dt;
  std::vector<Grid> g = {{49.6, 0.1, 0.002, 9},
                         {49.6, 0.002, 0.002, 401},
                         {24.96, 0.002, 0.002, 1250},
                         {75.1, -0.002, 0.002, 1250}};
  for (double f : {83.9, 140.7, 9.3, 98.2}) {
    g.push_back({f - 1, 0.01, dt, 201});
  }
  for (double f : {49.93, 46.93, 52.93}) {
    g.push_back({f - 0.2, 0.002, dt, 201});
  }
  return g;
}

template <bool direct> void BM_scans(benchmark::State& state) {
  const Row& r = row(int(state.range(0)));
  const std::vector<Grid> g = grids(r);
  std::vector<creal_T> out(1250);
  for (auto _ : state) {
    for (const Grid& s : g) {
      if (direct) {
        std::vector<double> f(size_t(s.m));
        for (int k = 0; k < s.m; ++k) {
          f[size_t(k)] = s.f0 + k * s.step;
        }
        coder::correlation_scan_direct(r.z.data(), r.n(), s.dt, 0, f.data(), s.m, out.data());
      } else {
        coder::correlation_scan_grid(r.z.data(), r.n(), s.dt, 0, s.f0, s.step, s.m, out.data());
      }
    }
    benchmark::DoNotOptimize(out[0].re);
  }
}

void rows(benchmark::internal::Benchmark* b) {
  b->Arg(21)->Arg(8)->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_whole_block)->Apply(rows);
BENCHMARK(BM_stage_scaling)->Apply(rows);
BENCHMARK(BM_stage_voltages)->Apply(rows);
BENCHMARK(BM_stage_current_distortion)->Apply(rows);
BENCHMARK(BM_stage_supply_and_slip)->Apply(rows);
BENCHMARK(BM_stage_bearing_lines)->Apply(rows);
BENCHMARK(BM_stage_rotor_sidebands)->Apply(rows);
BENCHMARK(BM_stage_power)->Apply(rows);
BENCHMARK(BM_fft_floor)->Apply(rows);
BENCHMARK_TEMPLATE(BM_scans, false)->Apply(rows);
BENCHMARK_TEMPLATE(BM_scans, true)->Apply(rows)->Iterations(2);

} // namespace

BENCHMARK_MAIN();
