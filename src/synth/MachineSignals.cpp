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

} // namespace synth
