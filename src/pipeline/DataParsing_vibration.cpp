// The vibration modules with a magnetic channel (type 10): from the row's sample pieces to the
// statistics, speed, bearing and harmonic parameters of one result, through the block
// vibro_tk701_3_ve; and the case temperature the same modules send in a row of its own.
#include "pipeline/DataParsing.h"

#include <cctype>
#include <cmath>
#include <string>

#include "blocks/vibro_tk701_3_ve/vibro_tk701_3_ve.h"
#include "equipment/DataBearing.h"
#include "equipment/DataMotor.h"
#include "equipment/Module.h"
#include "logging/PrintLog.h"

namespace {

// The sensor's full scale in g, and the sample rates in Hz, that the modules can have.
constexpr double kLowestFullScale = 1.0, kHighestFullScale = 100.0;
constexpr double kLowestRate = 100.0, kHighestRate = 50000.0;
// The option word in which only the top bit is set: the rotor analysis is off.
constexpr unsigned kNoRotorAnalysis = 0x80000000u;
// A journal bearing: oil whirl in place of the rolling-element fault lines.
constexpr int kJournalBearing = 3;
constexpr unsigned kJournalBit = 0x10u;
// Below this a case temperature sensor has failed, degrees.
constexpr double kColdestCase = -100.0;
// Disagreement of the speeds alone (axes, field, or both) does not fail a calculation.
bool onlyDisagreement(unsigned status) {
  return status == 0x100u || status == 0x200u || status == 0x300u;
}

bool isAxis(const std::string& sub_channel) {
  return sub_channel == "x" || sub_channel == "y" || sub_channel == "z";
}

// The piece's samples as a block's row of n values; missing samples are 0, which the block
// takes for lost ones and repairs.
coder::array<double, 2> samples(const raw* piece, int n) {
  coder::array<double, 2> row;
  row.set_size(1, n);
  for (int k = 0; k < n; ++k) {
    row[k] = piece != nullptr && k < int(piece->values.size()) ? piece->values[size_t(k)] : 0.0;
  }
  return row;
}

} // namespace

void DataParsing::parsing_TimeSignalData(const vibration::AxisStatistics* table, int axes) {
  static const char* const kAcc[] = {"MEAN",     "STD",      "SKEWNESS", "KURTOSIS", "PEAK2PEAK",
                                     "PEAK2RMS", "RMS_CF_1", "RMS_CF_2", "RMS_CF_3"};
  static const char* const kVel[] = {"MEAN",     "STD",      "SKEWNESS", "KURTOSIS", "PEAK2PEAK",
                                     "PEAK2RMS", "RMS_CF_1", "RMS_CF_4", "RMS_CF_5", "RMS_CF_6"};
  static const char* const kLetters = "XYZ";
  for (int a = 0; a < axes; ++a) {
    const std::string suffix = axes == 1 ? "" : std::string("_") + kLetters[a];
    for (int r = 0; r < 10; ++r) {
      if (r < 9) {
        values[std::string("ACC_") + kAcc[r] + suffix] = static_cast<float>(table[a].acc[r]);
      }
      values[std::string("VEL_") + kVel[r] + suffix] = static_cast<float>(table[a].vel[r]);
      if (r < 5) {
        values[std::string("DSP_") + kVel[r] + suffix] = static_cast<float>(table[a].dsp[r]);
      }
    }
  }
}

bool DataParsing::caseTemperature() {
  const int base = kindStatusBase();
  calc_result result = newResult(base);
  for (const visualization& shown : visualizations) {
    if (shown.name_param != "T_CASE" || shown.active != 1 ||
        shown.channel_id != result.channel_id ||
        shown.control_point_id != result.control_point_id) {
      continue;
    }
    for (const raw& piece : raws) {
      if (piece.param_type_id != 4 || piece.values.empty()) {
        continue;
      }
      if (piece.values.front() >= kColdestCase) {
        values["T_CASE"] = static_cast<float>(piece.values.front());
      } else {
        sensorFailure(result, "T_CASE", base, !channels.empty());
      }
      break;
    }
    break;
  }
  result.receipt_date = param.receipt_date;
  finishResult(result);
  // The row comes from a vibration module, which the display treats as one with signals.
  results.back().has_raw_data = true;
  return true;
}

bool DataParsing::computeModule10(DataMotor* motor, DataBearing* bearing) {
  if (type_param == 10) {
    return caseTemperature();
  }
  // The rates from the pieces' own settings, then from the module type's defaults, where a
  // default of this measurement kind or of every kind applies and the last one counts.
  double fv = 0.0, fm = 0.0, FS = 0.0;
  for (const raw& piece : raws) {
    const auto setting = [&piece](const char* name, double& into) {
      const auto found = piece.settings_values.find(name);
      if (found != piece.settings_values.end()) {
        into = found->second;
      }
    };
    if (piece.param_type_id == 2) {
      setting("fd", fv);
      setting("FS", FS);
    } else if (piece.param_type_id == 1) {
      setting("fd", fm);
    }
  }
  const double found[3] = {fv, fm, FS};
  for (const module_param& p : module_params) {
    if (p.type_param != 0 && p.type_param != type_param) {
      continue;
    }
    if (found[0] == 0.0 && p.name == "fd" && p.sub_1_packet == "vibro") {
      fv = static_cast<double>(p.value);
    } else if (found[1] == 0.0 && p.name == "fd" && p.sub_1_packet == "magnet") {
      fm = static_cast<double>(p.value);
    } else if (found[2] == 0.0 && p.name == "FS") {
      FS = static_cast<double>(p.value);
    }
  }
  if (fv == 0.0 || fm == 0.0 || FS == 0.0) {
    log->print("no data FS or fd in param_info.param_settings or param_module\n");
    return false;
  }
  if (FS < kLowestFullScale || FS > kHighestFullScale || fv < kLowestRate || fv > kHighestRate ||
      fm < kLowestRate || fm > kHighestRate) {
    log->print("error data: FS or fv or fm:" + std::to_string(FS) + " : " + std::to_string(fv) +
               " : " + std::to_string(fm) + "\n");
    return false;
  }
  unsigned word = module->config;
  const bool journal = bearing->type_bearing == kJournalBearing;
  if (journal) {
    word |= kJournalBit;
  }

  // The pieces of each axis through the axis maps of the point's channel.
  const raw* vibro[3] = {nullptr, nullptr, nullptr};
  const raw* magnet[3] = {nullptr, nullptr, nullptr};
  int Lv = 0, Lm = 0;
  static const char* const kAxes[] = {"x", "y", "z"};
  for (const raw& piece : raws) {
    if (!isAxis(piece.sub_channel) || (piece.param_type_id != 1 && piece.param_type_id != 2)) {
      continue;
    }
    const bool is_vibro = piece.param_type_id == 2;
    (is_vibro ? Lv : Lm) = int(piece.values.size());
    for (int a = 0; a < 3; ++a) {
      if (piece.sub_channel == (is_vibro ? axes_xyz_first : axes_xyz_second)[kAxes[a]]) {
        (is_vibro ? vibro : magnet)[a] = &piece;
      }
    }
  }
  coder::array<double, 2> vx = samples(vibro[0], Lv), vy = samples(vibro[1], Lv),
                          vz = samples(vibro[2], Lv), mx = samples(magnet[0], Lm),
                          my = samples(magnet[1], Lm), mz = samples(magnet[2], Lm);
  log->print("Lv: " + std::to_string(Lv) + ", Lm: " + std::to_string(Lm) + "\n");
  log->print("calculation");

  vibration::FirstGenerationOutput out;
  try {
    const vibration::BearingGeometry geometry{bearing->mean_diameter, bearing->ball_diameter,
                                              bearing->angle_rad, double(bearing->count_balls)};
    vibro_tk701_3_ve_ns::vibro_tk701_3_ve(mx, my, mz, vx, vy, vz, Lv, fv, Lm, fm,
                                          double(motor->power), double(motor->p2), geometry, FS,
                                          word, out);
    log->print("\n");
  } catch (const std::exception&) {
    // The name of the older block stands in this message on purpose: the operators' log
    // filters look for it.
    log->print("\nexceptions in the method vibro_tk701_2_ve id=" + std::to_string(param.id) +
               " \n");
    return false;
  }

  values["FREAL"] = static_cast<float>(out.FREAL);
  values["FRM"] = static_cast<float>(out.FRM);
  values["SAD"] = static_cast<float>(out.SAD);
  values["SPEED"] = static_cast<float>(out.SPEED);
  parsing_TimeSignalData(out.table, 3);
  if (module->config != kNoRotorAnalysis) {
    if (journal) {
      values["OIL_WHIRL_INSTABILITY"] = static_cast<float>(out.bearing[4]);
    } else {
      values["BEARING_OUTER_RING"] = static_cast<float>(out.bearing[0]);
      values["BEARING_INNER_RING"] = static_cast<float>(out.bearing[1]);
      values["BSF"] = static_cast<float>(out.bearing[3]);
      values["FTF"] = static_cast<float>(out.bearing[2]);
    }
    static const char* const kLetters[] = {"X", "Y", "Z"};
    for (int a = 0; a < 3; ++a) {
      for (int k = 0; k < 3; ++k) {
        values["AFRM_" + std::to_string(k + 1) + "_" + kLetters[a]] =
            static_cast<float>(out.harmonics[a][k]);
      }
    }
    for (int a = 0; a < 3; ++a) {
      values[std::string("IMBALANCE_") + kLetters[a]] = static_cast<float>(out.imbalance[a]);
    }
  }

  const int base = param.kind == 1 ? 2 : 0;
  calc_result result = newResult(base);
  result.status_calc = onlyDisagreement(out.status_2) ? base : base + int(out.status_1);
  result.status_vector = int(out.status_2);
  result.receipt_date = param.receipt_date;
  finishResult(result);
  results.back().has_raw_data = true;
  return true;
}
