#include "synth/ElectricalSignals.h"

#include "synth/MachineSignals.h"

#include <cmath>
#include <random>

namespace synth {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kSqrt2 = 1.4142135623730951;
// The counts' middle: the module's converter reads around it, and no count of a full-scale
// line reaches 0, which the block would take for a lost sample.
constexpr double kMidScale = 8192.0;

// One line of a balanced set: phase p lags phase A by p turns of `sequence` thirds.
double line(double amplitude, double f, double t, double shift, int p, int sequence) {
  return amplitude * std::cos(2.0 * kPi * f * t + shift - sequence * 2.0 * kPi * p / 3.0);
}

} // namespace

std::vector<double> phaseVoltage(const ThreePhaseMotor& m, int phase, double rate, int n) {
  const double a = kSqrt2 * m.voltage * (phase == 0 ? 1.0 + m.unbalance : 1.0), f = m.supply;
  std::vector<double> v(size_t(n > 0 ? n : 0));
  for (int k = 0; k < n; ++k) {
    const double t = k / rate;
    v[size_t(k)] = line(a, f, t, 0.0, phase, 1) + line(a * m.voltage_5th, 5 * f, t, 0.3, phase, 5) +
                   line(a * m.voltage_7th, 7 * f, t, 0.9, phase, 7);
  }
  return v;
}

std::vector<double> phaseCurrent(const ThreePhaseMotor& m, int phase, double rate, int n) {
  const double a = kSqrt2 * m.current, f = m.supply, fr = m.rotorFrequency(), s = m.slip;
  const vibration::FaultFrequencies lines = vibration::faultFrequencies(m.bearing, 25.0);
  const double bearing[4] = {lines.bpfo, lines.bpfi, lines.ftf, lines.bsf};
  std::mt19937 random(m.seed * 7u + unsigned(phase));
  std::normal_distribution<double> noise(0.0, m.noise > 0.0 ? m.noise : 1.0);
  std::vector<double> x(size_t(n > 0 ? n : 0));
  for (int k = 0; k < n; ++k) {
    const double t = k / rate;
    double v = line(a, f, t, -m.angle, phase, 1) +
               line(a * m.current_5th, 5 * f, t, 1.1, phase, 5) +
               line(a * m.current_7th, 7 * f, t, 0.2, phase, 7) +
               line(a * m.eccentricity, f - fr, t, 0.4, phase, 1) +
               line(a * m.eccentricity, f + fr, t, 1.7, phase, 1) +
               line(a * m.sideband_low, (1.0 - 2.0 * s) * f, t, 0.8, phase, 1) +
               line(a * m.sideband_high, (1.0 + 2.0 * s) * f, t, 2.3, phase, 1);
    double modulation = 1.0;
    for (int b = 0; b < 4 && m.bearing_line > 0.0; ++b) {
      if (m.carrier > 0.0) {
        modulation += m.bearing_line * std::cos(2.0 * kPi * bearing[b] * t + b);
      } else {
        v += line(m.bearing_line, bearing[b], t, 0.5 * b, phase, 1);
      }
    }
    if (m.carrier > 0.0) {
      v += line(m.carrier_amplitude * modulation, m.carrier, t, 0.0, phase, 1);
    }
    x[size_t(k)] = v + (m.noise > 0.0 ? noise(random) : 0.0);
  }
  return x;
}

std::vector<double> channelCounts(const std::vector<double>& values,
                                  const calc_modul_7R_full_ns::ChannelGain& gain, double mid) {
  const double per_count = calc_modul_7R_full_ns::countGain(gain.rk, gain.rn) * gain.ku;
  std::vector<double> counts;
  for (double v : values) {
    counts.push_back(std::round(mid + v / per_count));
  }
  return counts;
}

std::string type3Row(const ThreePhaseMotor& m, int id, long source, const std::string& date,
                     int type_param, int n) {
  const std::string row = std::to_string(id);
  const double rate = type_param == 21 ? 10000.0 : 500.0;
  std::string sql = "INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, kind) "
                    "VALUES (" +
                    row + ", " + std::to_string(source) + ", 3, " + std::to_string(type_param) +
                    ", " + date + ", 0);\nINSERT INTO fu_raw (param_info_id, param_type_id, " +
                    "c_type, sub_channel, data, settings) VALUES\n";
  static const char* const kPhases[] = {"a", "b", "c"};
  std::string pieces;
  for (int kind = 5; kind <= 6; ++kind) {
    if ((kind == 5 && type_param == 8) || (kind == 6 && type_param == 4)) {
      continue;
    }
    const double ku = kind == 5 ? 20.0 : 1.0;
    for (int p = 0; p < 3; ++p) {
      const std::vector<double> values =
          kind == 5 ? phaseVoltage(m, p, rate, n) : phaseCurrent(m, p, rate, n);
      pieces += std::string(pieces.empty() ? "" : ",\n") + "(" + row + ", " + std::to_string(kind) +
                ", 2, '" + kPhases[p] + "', '" +
                moduleSamples(channelCounts(values, {0.0, 0.0, ku}, kMidScale)) +
                "', '[{\"name_param\": \"ku\", \"value\": " + std::to_string(int(ku)) + "}]')";
    }
  }
  return sql + pieces + ";\n";
}

} // namespace synth
