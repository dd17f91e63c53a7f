// The vibration modules without a magnetic channel: types 5, 6, 7, 12, 101 and 102, each
// through its second-generation block. The speed comes from the vibration alone, confirmed
// across the axes; the harmonics give the defect list that reaches DEFECTS and the operators.
#include "pipeline/DataParsing.h"
#include "pipeline/vibration_rows.h"

#include <string>
#include <vector>

#include "blocks/vibro_rs893_2_ve/vibro_rs893_2_ve.h"
#include "blocks/vibro_rs893_4_ve/vibro_rs893_4_ve.h"
#include "blocks/vibro_tk703_2_single_ve/vibro_tk703_2_single_ve.h"
#include "blocks/vibro_tk703_2_ve/vibro_tk703_2_ve.h"
#include "blocks/vibro_tk703_3_ve/vibro_tk703_3_ve.h"
#include "blocks/vibro_tk703_4_ve/vibro_tk703_4_ve.h"
#include "equipment/DataBearing.h"
#include "equipment/DataMotor.h"
#include "equipment/Module.h"
#include "logging/PrintLog.h"

namespace {

using namespace vibration_rows;

const char* const kNoRate = "no data FS or fd in param_info.param_settings or param_module\n";
// The display whose corridor scales the defect rules, and the velocities whose implausible
// value fails a wireless module's row.
const char* const kThresholdsThreeAxes = "VEL_RMS_CF_1_Y";
const std::vector<std::string> kVelocityAxes = {"VEL_RMS_CF_4_X", "VEL_RMS_CF_4_Y",
                                                "VEL_RMS_CF_4_Z"};

// Lengths of the axes' pieces as the message names them, or "" when they agree.
std::string unequalLengths(const Pieces& p, int axes) {
  std::string text;
  bool unequal = false;
  for (int a = 0; a < axes; ++a) {
    const int n = p.vibro[a] != nullptr ? int(p.vibro[a]->values.size()) : 0;
    unequal = unequal || n != (p.vibro[0] != nullptr ? int(p.vibro[0]->values.size()) : 0);
    text += (a == 0 ? "" : " : ") + std::to_string(n);
  }
  return unequal ? text : std::string();
}

} // namespace

const raw* DataParsing::singlePiece() const {
  for (const channel& ch : channels) {
    if (ch.control_point_id != point.id) {
      continue;
    }
    for (const raw& piece : raws) {
      if (piece.param_type_id == 2 && ch.raw_param.find(piece.sub_channel) != std::string::npos) {
        return &piece;
      }
    }
  }
  for (const raw& piece : raws) {
    if (piece.param_type_id == 2) {
      return &piece;
    }
  }
  return nullptr;
}

bool DataParsing::runSecondGeneration(
    DataBearing* bearing, vibration::SecondGenerationInput& in, int axes, const char* block_name,
    void (*block)(vibration::SecondGenerationInput&, vibration::SecondGenerationOutput&),
    const char* threshold_name, const std::vector<std::string>& velocity_names) {
  const bool journal = bearing->type_bearing == kJournalBearing;
  in.word = module->config | (journal ? kJournalBit : 0u);
  in.bearing = {bearing->mean_diameter, bearing->ball_diameter, bearing->angle_rad,
                double(bearing->count_balls)};
  const calc_result place = newResult(0);
  for (const visualization& v : visualizations) {
    if (v.name_param == threshold_name && v.channel_id == place.channel_id &&
        v.control_point_id == place.control_point_id) {
      in.thresholds = {double(v.green), double(v.yellow), double(v.orange)};
    }
  }
  log->print("Lv: " + std::to_string(int(in.Lv)) + "\n");
  log->print("calculation");
  vibration::SecondGenerationOutput out;
  try {
    block(in, out);
    log->print("\n");
  } catch (const std::exception&) {
    log->print(std::string("\nexceptions in the method ") + block_name +
               " id=" + std::to_string(param.id) + " \n");
    return false;
  }

  values["FRM"] = static_cast<float>(out.FRM);
  parsing_TimeSignalData(out.table, axes);
  if (module->config != kNoRotorAnalysis) {
    storeRotorLines(out.bearing, out.harmonics, out.imbalance, axes, journal);
  }
  for (int i = 0; i < 10; ++i) {
    if (out.defects.code[i] != 0) {
      defects[out.defects.code[i]] = out.defects.level[i];
    }
  }
  vibrationResult(out.status_1, out.status_2);
  if (!velocity_names.empty() && implausibleVelocity(velocity_names)) {
    results.back().status_calc = 1;
  }
  return true;
}

bool DataParsing::typeRate(double& fd) {
  fd = moduleDefault("fd");
  if (fd == 0.0) {
    log->print(kNoRate);
    return false;
  }
  return true;
}

bool DataParsing::axisPieces(int axes, bool whole, bool gains,
                             vibration::SecondGenerationInput& in) {
  const Pieces p = gather(raws, axes_xyz_first, axes_xyz_second);
  if (whole) {
    const std::string lengths = unequalLengths(p, axes);
    if (!lengths.empty()) {
      log->print("error length arrays: " + lengths + "\n");
      return false;
    }
  }
  for (int a = 0; a < axes; ++a) {
    in.vibro[a] = samples(p.vibro[a], p.Lv);
    if (gains) {
      in.g_del[a] = channelGain(p.vibro[a], "xyz"[a]);
    }
  }
  in.Lv = p.Lv;
  return true;
}

void DataParsing::singleAxis(bool gain, vibration::SecondGenerationInput& in) {
  const raw* piece = singlePiece();
  const int n = piece != nullptr ? int(piece->values.size()) : 0;
  in.vibro[0] = samples(piece, n);
  if (gain) {
    in.g_del[0] = channelGain(
        piece, piece != nullptr && !piece->sub_channel.empty() ? piece->sub_channel.back() : 'x');
  }
  in.Lv = n;
}

bool DataParsing::computeModule7(DataMotor* motor, DataBearing* bearing) {
  double fv = 0.0, fm = 0.0, FS = 0.0;
  vibrationRates(fv, fm, FS);
  if (fv == 0.0 || FS == 0.0) {
    log->print(kNoRate);
    return false;
  }
  if (FS < kLowestFullScale || FS > kHighestFullScale || fv < kLowestRate || fv > kHighestRate) {
    log->print("error data: FS or fd:" + std::to_string(FS) + " : " + std::to_string(fv) + "\n");
    return false;
  }
  vibration::SecondGenerationInput in;
  if (!axisPieces(3, true, false, in)) {
    return false;
  }
  in.fs = fv, in.FS = FS, in.poles = double(motor->p2);
  return runSecondGeneration(bearing, in, 3, "vibro_tk703_3_ve",
                             vibro_tk703_3_ve_ns::vibro_tk703_3_ve, kThresholdsThreeAxes, {});
}

bool DataParsing::computeModule5(DataMotor* motor, DataBearing* bearing) {
  if (type_param == 5) {
    return temperatureRow("SENSOR_T1", [](double v) { return v == kNoSensorMark; });
  }
  vibration::SecondGenerationInput in;
  if (!typeRate(in.fs)) {
    return false;
  }
  // A short ADS131 piece reads as lost samples, as with the older modules.
  axisPieces(3, false, true, in);
  if (in.g_del[0] < kLeastGain) {
    log->print("no data  g_del_x  in param_info.param_settings or param_module\n");
    return false;
  }
  in.poles = double(motor->p2);
  return runSecondGeneration(bearing, in, 3, "vibro_tk703_4_ve",
                             vibro_tk703_4_ve_ns::vibro_tk703_4_ve, kThresholdsThreeAxes, {});
}

bool DataParsing::computeModule6(DataMotor* motor, DataBearing* bearing) {
  vibration::SecondGenerationInput in;
  if (!typeRate(in.fs) || !axisPieces(2, true, true, in)) {
    return false;
  }
  in.poles = double(motor->p2);
  return runSecondGeneration(bearing, in, 2, "vibro_tk703_2_ve",
                             vibro_tk703_2_ve_ns::vibro_tk703_2_ve, kThresholdsThreeAxes, {});
}

bool DataParsing::computeModule6_single(DataMotor* motor, DataBearing* bearing) {
  vibration::SecondGenerationInput in;
  if (!typeRate(in.fs)) {
    return false;
  }
  singleAxis(true, in);
  in.poles = double(motor->p2);
  return runSecondGeneration(bearing, in, 1, "vibro_tk703_2_single_ve",
                             vibro_tk703_2_single_ve_ns::vibro_tk703_2_single_ve,
                             kThresholdsThreeAxes, {});
}

bool DataParsing::computeModule101(DataMotor* motor, DataBearing* bearing) {
  if (type_param == 200 || type_param == 201) {
    return precomputedValues(kVelocityAxes);
  }
  vibration::SecondGenerationInput in;
  if (!typeRate(in.fs) || !axisPieces(3, true, false, in)) {
    return false;
  }
  in.poles = double(motor->p2);
  return runSecondGeneration(bearing, in, 3, "vibro_rs893_4_ve",
                             vibro_rs893_4_ve_ns::vibro_rs893_4_ve, kThresholdsThreeAxes,
                             kVelocityAxes);
}

bool DataParsing::computeModule102(DataMotor* motor, DataBearing* bearing) {
  if (type_param == 200 || type_param == 201) {
    return precomputedValues({"VEL_RMS_CF_4"});
  }
  vibration::SecondGenerationInput in;
  if (!typeRate(in.fs)) {
    return false;
  }
  singleAxis(false, in);
  in.poles = double(motor->p2);
  return runSecondGeneration(bearing, in, 1, "vibro_rs893_2_ve",
                             vibro_rs893_2_ve_ns::vibro_rs893_2_ve, "VEL_RMS_CF_1",
                             {"VEL_RMS_CF_4"});
}
