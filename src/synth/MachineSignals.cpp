#include "synth/MachineSignals.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace synth {
namespace {

constexpr double kPi = 3.141592653589793;

} // namespace

std::vector<double> acceleration(const Machine& m, int axis, double rate, int n) {
  const double fr = m.rotorFrequency(), gain = kAxisGain[axis];
  const double bpfo = vibration::faultFrequencies(m.bearing, fr).bpfo;
  std::mt19937 random(m.seed * 3u + unsigned(axis));
  std::normal_distribution<double> noise(0.0, m.noise > 0.0 ? m.noise : 1.0);
  std::vector<double> x(size_t(n > 0 ? n : 0));
  for (int k = 0; k < n; ++k) {
    const double t = k / rate;
    double v = 0.0;
    for (int h = 0; h < 3; ++h) {
      // each axis and harmonic at its own phase, so that no test relies on a lucky one
      v += m.harmonics[h] * gain * std::cos(2.0 * kPi * (h + 1) * fr * t + 0.7 * axis + 1.3 * h);
    }
    if (m.outer_race > 0.0) {
      const double defect = std::cos(2.0 * kPi * bpfo * t + 0.4 * axis);
      v += m.outer_race * gain * defect;
      if (m.resonance > 0.0) {
        v += m.outer_race * gain * (1.0 + defect) * std::cos(2.0 * kPi * m.resonance * t);
      }
    }
    x[size_t(k)] = v + (m.noise > 0.0 ? noise(random) : 0.0);
  }
  return x;
}

std::vector<double> magneticField(const Machine& m, double rate, int n) {
  const double F = m.supply, fr = m.rotorFrequency();
  std::vector<double> x(size_t(n > 0 ? n : 0));
  for (int k = 0; k < n; ++k) {
    const double t = k / rate;
    x[size_t(k)] = 2048.0 + m.field * std::cos(2.0 * kPi * F * t) +
                   m.field_rotor * std::cos(2.0 * kPi * (F - fr) * t + m.rotor_phase) +
                   m.field_rotor * std::cos(2.0 * kPi * (F + fr) * t);
  }
  return x;
}

std::vector<double> accelerometerCounts(const std::vector<double>& g, double FS) {
  std::vector<double> counts;
  for (double v : g) {
    counts.push_back(std::clamp(std::round(v * 32768.0 / FS), -32768.0, 32767.0));
  }
  return counts;
}

std::vector<double> ads131Counts(const std::vector<double>& g, double g_del) {
  std::vector<double> counts;
  for (double v : g) {
    const double c = std::clamp(std::round(v * g_del * 8388608.0 / 1200.0), -8388607.0, 8388607.0);
    counts.push_back(c < 0.0 ? c + 16777215.0 : c);
  }
  return counts;
}

std::vector<double> rs89xCounts(const std::vector<double>& g) {
  std::vector<double> counts;
  for (double v : g) {
    counts.push_back(std::round(v * 1e6));
  }
  return counts;
}

std::string moduleSamples(const std::vector<double>& counts) {
  static const char* const kDigits = "0123456789abcdef";
  std::string text = "0x";
  for (double c : counts) {
    const unsigned v = static_cast<unsigned>(static_cast<int>(c)) & 0xffffu;
    for (const unsigned byte : {v & 0xffu, v >> 8}) {
      text += kDigits[byte >> 4];
      text += kDigits[byte & 0xfu];
    }
  }
  return text;
}

std::string type10Row(const Machine& m, int id, long source, const std::string& date) {
  const std::string row = std::to_string(id);
  std::string sql = "INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, kind) "
                    "VALUES (" +
                    row + ", " + std::to_string(source) + ", 10, 9, " + date +
                    ", 0);\nINSERT INTO fu_raw (param_info_id, param_type_id, c_type, "
                    "sub_channel, data, settings) VALUES\n";
  static const char* const kAxes[] = {"x", "y", "z"};
  for (int a = 0; a < 3; ++a) {
    sql += "(" + row + ", 2, 2, '" + kAxes[a] + "', '" +
           moduleSamples(accelerometerCounts(acceleration(m, a, 26667.0, 16384), 16.0)) +
           "', '[{\"name_param\": \"fd\", \"value\": 26667}, {\"name_param\": \"FS\", "
           "\"value\": 16}]'),\n";
  }
  std::vector<double> field = magneticField(m, 500.0, 4096);
  for (double& v : field) {
    v = std::round(v);
  }
  return sql + "(" + row + ", 1, 2, 'x', '" + moduleSamples(field) +
         "', '[{\"name_param\": \"fd\", \"value\": 500}]');\n";
}

} // namespace synth
