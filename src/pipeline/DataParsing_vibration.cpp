// The vibration modules with a magnetic channel: type 10 through the block vibro_tk701_3_ve,
// types 1 and 9 through vibro_tk701_2_ve. From the row's sample pieces to the statistics,
// speed, bearing and harmonic parameters of one result; and the temperatures the same modules
// send in rows of their own.
#include "pipeline/DataParsing.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>

#include "blocks/vibro_tk701_2_ve/vibro_tk701_2_ve.h"
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
// The converter's mark of a temperature sensor that does not answer; other readings are
// tenths of a degree.
constexpr double kNoSensorMark = -32767.0;
// The LIS344 gains a module must have: below these, none was given.
constexpr double kLeastKu = 1e-07, kLeastGain = 1.0;
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

// The sample pieces of a row by the block's axes, through the axis maps of the point's
// channel, and the sample counts: the last piece of each kind sets its count.
struct Pieces {
  const raw* vibro[3] = {nullptr, nullptr, nullptr};
  const raw* magnet[3] = {nullptr, nullptr, nullptr};
  int Lv = 0, Lm = 0;
};
Pieces gather(const std::vector<raw>& raws, std::map<std::string, std::string>& first,
              std::map<std::string, std::string>& second) {
  static const char* const kAxes[] = {"x", "y", "z"};
  Pieces p;
  for (const raw& piece : raws) {
    if (!isAxis(piece.sub_channel) || (piece.param_type_id != 1 && piece.param_type_id != 2)) {
      continue;
    }
    const bool is_vibro = piece.param_type_id == 2;
    (is_vibro ? p.Lv : p.Lm) = int(piece.values.size());
    for (int a = 0; a < 3; ++a) {
      if (piece.sub_channel == (is_vibro ? first : second)[kAxes[a]]) {
        (is_vibro ? p.vibro : p.magnet)[a] = &piece;
      }
    }
  }
  return p;
}

// A module-type default applies to a measurement of its own kind or to every kind.
bool applies(const module_param& p, int type_param) {
  return p.type_param == 0 || p.type_param == type_param;
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
  if (shownHere("T_CASE", result) != nullptr) {
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
  // The rates from the pieces' own settings, then from the module type's defaults, where the
  // last default that applies counts.
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
  const double given[3] = {fv, fm, FS};
  for (const module_param& p : module_params) {
    if (!applies(p, type_param)) {
      continue;
    }
    if (given[0] == 0.0 && p.name == "fd" && p.sub_1_packet == "vibro") {
      fv = static_cast<double>(p.value);
    } else if (given[1] == 0.0 && p.name == "fd" && p.sub_1_packet == "magnet") {
      fm = static_cast<double>(p.value);
    } else if (given[2] == 0.0 && p.name == "FS") {
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
  const Pieces p = gather(raws, axes_xyz_first, axes_xyz_second);
  coder::array<double, 2> vx = samples(p.vibro[0], p.Lv), vy = samples(p.vibro[1], p.Lv),
                          vz = samples(p.vibro[2], p.Lv), mx = samples(p.magnet[0], p.Lm),
                          my = samples(p.magnet[1], p.Lm), mz = samples(p.magnet[2], p.Lm);
  return runFirstGeneration(bearing, p.Lv, p.Lm,
                            [&](unsigned word, const vibration::BearingGeometry& geometry,
                                vibration::FirstGenerationOutput& out) {
                              vibro_tk701_3_ve_ns::vibro_tk701_3_ve(
                                  mx, my, mz, vx, vy, vz, p.Lv, fv, p.Lm, fm, double(motor->power),
                                  double(motor->p2), geometry, FS, word, out);
                            });
}

bool DataParsing::computeModule1(DataMotor* motor, DataBearing* bearing) {
  if (type_param == 6) {
    return caseTemperature();
  }
  if (type_param == 7) {
    return windingAndBearingTemperatures();
  }
  if (type_param != 8) {
    return false;
  }
  const Pieces p = gather(raws, axes_xyz_first, axes_xyz_second);
  // The LIS344 gains of each axis: from the axis's own piece, then from the measurement's
  // settings (ku_vx, g_del_x, ...), then from the module type's defaults of the same names.
  static const char* const kLetters[] = {"x", "y", "z"};
  double ku[3] = {kLeastKu, kLeastKu, kLeastKu}, g_del[3] = {kLeastGain, kLeastGain, kLeastGain};
  bool given_ku[3] = {false, false, false}, given_g[3] = {false, false, false};
  for (int a = 0; a < 3; ++a) {
    if (p.vibro[a] == nullptr) {
      continue;
    }
    const auto& settings = p.vibro[a]->settings_values;
    if (settings.count("ku") != 0) {
      ku[a] = settings.at("ku"), given_ku[a] = true;
    }
    if (settings.count("g_del") != 0) {
      g_del[a] = settings.at("g_del"), given_g[a] = true;
    }
  }
  const auto fallback = [&](const std::string& name, double value) {
    for (int a = 0; a < 3; ++a) {
      if (!given_ku[a] && name == std::string("ku_v") + kLetters[a]) {
        ku[a] = value;
      }
      if (!given_g[a] && name == std::string("g_del_") + kLetters[a]) {
        g_del[a] = value;
      }
    }
  };
  for (const param_setting& s : param.settings) {
    fallback(s.name, s.value);
  }
  for (int a = 0; a < 3; ++a) {
    given_ku[a] = given_ku[a] || ku[a] != kLeastKu;
    given_g[a] = given_g[a] || g_del[a] != kLeastGain;
  }
  for (const module_param& m : module_params) {
    if (applies(m, type_param)) {
      fallback(m.name, static_cast<double>(m.value));
    }
  }
  if (ku[0] < kLeastKu || g_del[0] < kLeastGain) {
    log->print("no data  ku_vx  or  g_del_x  in param_info.param_settings or param_module\n");
    return false;
  }
  coder::array<double, 2> vx = samples(p.vibro[0], p.Lv), vy = samples(p.vibro[1], p.Lv),
                          vz = samples(p.vibro[2], p.Lv), mx = samples(p.magnet[0], p.Lm);
  return runFirstGeneration(bearing, p.Lv, p.Lm,
                            [&](unsigned word, const vibration::BearingGeometry& geometry,
                                vibration::FirstGenerationOutput& out) {
                              vibro_tk701_2_ve_ns::vibro_tk701_2_ve(
                                  mx, vx, vy, vz, p.Lv, p.Lm, ku, double(motor->power),
                                  double(motor->p2), g_del, geometry, word, out);
                            });
}

bool DataParsing::windingAndBearingTemperatures() {
  static const char* const kNames[] = {
      "T1_BEARING",      "T2_BEARING",         "T_A_STATOR_CORE",    "T_B_STATOR_CORE",
      "T_C_STATOR_CORE", "T_A_STATOR_WINDING", "T_B_STATOR_WINDING", "T_C_STATOR_WINDING"};
  const int base = kindStatusBase();
  calc_result result = newResult(base);
  const auto piece =
      std::find_if(raws.begin(), raws.end(), [](const raw& r) { return r.param_type_id == 4; });
  for (size_t k = 0; piece != raws.end() && k < piece->values.size() && k < 8; ++k) {
    if (shownHere(kNames[k], result) == nullptr) {
      continue;
    }
    if (piece->values[k] == kNoSensorMark) {
      sensorFailure(result, kNames[k], base, !channels.empty());
    } else {
      values[kNames[k]] = static_cast<float>(piece->values[k] / 10.0);
    }
  }
  result.receipt_date = param.receipt_date;
  finishResult(result);
  results.back().has_raw_data = true;
  return true;
}

bool DataParsing::runFirstGeneration(
    DataBearing* bearing, int Lv, int Lm,
    const std::function<void(unsigned, const vibration::BearingGeometry&,
                             vibration::FirstGenerationOutput&)>& block) {
  unsigned word = module->config;
  const bool journal = bearing->type_bearing == kJournalBearing;
  if (journal) {
    word |= kJournalBit;
  }
  log->print("Lv: " + std::to_string(Lv) + ", Lm: " + std::to_string(Lm) + "\n");
  log->print("calculation");
  vibration::FirstGenerationOutput out;
  try {
    block(word,
          {bearing->mean_diameter, bearing->ball_diameter, bearing->angle_rad,
           double(bearing->count_balls)},
          out);
    log->print("\n");
  } catch (const std::exception&) {
    // The name of the older block stands in this message for both module families on
    // purpose: the operators' log filters look for it.
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
