#include "support/TypicalPlant.h"

#include <cmath>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <vector>

namespace vek_test {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kVibrationRate = 25600.0; // Hz
constexpr double kMagneticRate = 6400.0;   // Hz
constexpr double kSupply = 50.0;           // Hz
constexpr double kRotor = 24.6;            // Hz, a four-pole motor under load

// A vibration axis in counts: rotor line, second harmonic, supply line and noise from a fixed
// linear congruential sequence, so every run writes the same rows.
std::vector<double> vibration(int samples, double amplitude, double phase, unsigned seed) {
  std::vector<double> values(static_cast<std::size_t>(samples));
  unsigned state = seed;
  for (int n = 0; n < samples; ++n) {
    const double t = n / kVibrationRate;
    state = state * 1664525u + 1013904223u;
    const double noise = (static_cast<double>(state >> 16) / 65535.0 - 0.5) * 60.0;
    values[static_cast<std::size_t>(n)] = amplitude * std::sin(kTwoPi * kRotor * t + phase) +
                                          0.3 * amplitude * std::sin(2.0 * kTwoPi * kRotor * t) +
                                          150.0 * std::sin(kTwoPi * kSupply * t) + noise;
  }
  return values;
}

// A magnetic axis in counts: the supply line.
std::vector<double> magnetic(int samples, double phase) {
  std::vector<double> values(static_cast<std::size_t>(samples));
  for (int n = 0; n < samples; ++n) {
    values[static_cast<std::size_t>(n)] =
        8000.0 * std::sin(kTwoPi * kSupply * n / kMagneticRate + phase);
  }
  return values;
}

} // namespace

std::string timeAfter(const std::string& start, long seconds) {
  std::tm parts{};
  std::istringstream in(start);
  in >> std::get_time(&parts, "%Y-%m-%d %H:%M:%S");
  const std::time_t at = timegm(&parts) + seconds;
  std::tm out{};
  gmtime_r(&at, &out);
  std::ostringstream text;
  text << std::put_time(&out, "%Y-%m-%d %H:%M:%S");
  return text.str();
}

void addTypicalPlant(PlantBuilder& builder, const TypicalPlant& plant) {
  builder.add(OrganizationRow("plant").utc("UTC+3:00").connectionStatus(0))
      .add(NodeRow(1, "plant"))
      .add(GatewayRow(1, 1).syncTime(plant.start).connectionStatus(0))
      .add(MessageRow("13"))
      .add(MessageRow("26"))
      .add(MessageRow("30"));

  for (int m = 1; m <= plant.machines; ++m) {
    const long source = 1000 + m;
    const int point = 10 * m + 1;
    const int channel = 100 * m;
    builder
        .add(AggregateRow(m, 1)
                 .typeAggregate(1)
                 .equipmentType(1)
                 .statusType(1)
                 .rulDays(30)
                 .trendStart(plant.start)
                 .name("pump " + std::to_string(m)))
        .add(ControlPointRow(point, m).weight(1.0))
        .add(MotorRow(m).nameplate(55, 1480, 98, 380, 4, 2))
        .add(ControlPointMotorRow(point, m))
        .add(BearingRow(m).geometry(7.9, 9, 1, 25.0, 52.0, 0.0))
        .add(ControlPointBearingRow(point, m))
        .add(ModuleRow(m, source, 10)
                 .revision(1)
                 .config(0x0)
                 .period(5)
                 .gateway(1)
                 .multichannel(false))
        .add(ChannelRow(channel, source).axisOrder("xyzxyz"))
        .add(BindingRow(channel, point));
    struct Parameter {
      const char* name;
      int type_param;
      double green, yellow, orange;
    };
    const Parameter parameters[] = {
        {"FREAL", 1, 49.0, 48.5, 48.0},
        {"FRM", 1, 30.0, 35.0, 40.0},
        {"SPEED", 1, 1500.0, 1550.0, 1600.0},
        {"IMBALANCE_X", 1, 2.8, 4.5, 7.1},
        {"IMBALANCE_Y", 1, 2.8, 4.5, 7.1},
        {"IMBALANCE_Z", 1, 2.8, 4.5, 7.1},
        {"BEARING_OUTER_RING", 1, 0.1, 0.2, 0.4},
        {"T_CASE", 1, 60.0, 75.0, 90.0},
        {"TEMP", 2, 60.0, 75.0, 90.0},
        {"RSSI", 2, -90.0, -100.0, -110.0},
        {"U_BATTERY", 2, 30.0, 28.0, 26.0},
    };
    int k = 0;
    for (const auto& parameter : parameters) {
      builder.add(VisualizationRow(1000 * m + k++, source, parameter.name)
                      .typeParam(parameter.type_param)
                      .channel(channel)
                      .controlPoint(point)
                      .thresholds(parameter.green, parameter.yellow, parameter.orange)
                      .kz(1.0)
                      .middle(true)
                      .trend(true));
    }
  }

  int id = plant.first_measurement_id;
  for (int round = 0; round < plant.measurements; ++round) {
    const std::string at = timeAfter(plant.start, 60L * plant.minutes_between * round);
    for (int m = 1; m <= plant.machines; ++m) {
      const long source = 1000 + m;
      const double amplitude = 400.0 * m + 20.0 * round;
      const std::string vibration_rates = settingsRaw({{"fd", kVibrationRate}, {"FS", kSupply}});
      const std::string magnetic_rate = settingsRaw({{"fd", kMagneticRate}});
      MeasurementRow row(id++, source);
      row.module(10, 9).at(at).kind(0);
      const char* axes[] = {"x", "y", "z"};
      for (int axis = 0; axis < 3; ++axis) {
        const auto seed = static_cast<unsigned>(id * 3 + axis);
        row.raw(RawRow(2, 2)
                    .subChannel(axes[axis])
                    .settings(vibration_rates)
                    .samples(vibration(plant.samples, amplitude, 0.7 * axis, seed)));
        row.raw(RawRow(1, 2)
                    .subChannel(axes[axis])
                    .settings(magnetic_rate)
                    .samples(magnetic(plant.samples / 4, kTwoPi * axis / 3.0)));
      }
      builder.add(row);
      builder.add(MeasurementRow(id++, source)
                      .module(10, 10)
                      .at(at)
                      .kind(0)
                      .raw(RawRow(4, 2).samples({41.0 + m + 0.5 * round})));
      builder.add(MeasurementRow(id++, source)
                      .module(10, 0)
                      .at(at)
                      .kind(0)
                      .telemetry(35 + m, -70 - round, 3, 36));
    }
  }
}

} // namespace vek_test
