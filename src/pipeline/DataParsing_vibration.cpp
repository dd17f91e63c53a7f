// The vibration modules with a magnetic channel: type 10 through the block vibro_tk701_3_ve,
// types 1 and 9 through vibro_tk701_2_ve. From the row's sample pieces to the statistics,
// speed, bearing and harmonic parameters of one result; and the temperatures the same modules
// send in rows of their own.
#include "pipeline/DataParsing.h"
#include "pipeline/vibration_rows.h"

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

using namespace vibration_rows;

// Below this a case temperature sensor has failed, degrees.
constexpr double kColdestCase = -100.0;
// The LIS344 gains a module must have: below these, none was given.
constexpr double kLeastKu = 1e-07;
// Disagreement of the speeds alone (axes, field, or both) does not fail a calculation.
bool onlyDisagreement(unsigned status) {
  return status == 0x100u || status == 0x200u || status == 0x300u;
}

} // namespace

void DataParsing::parsing_TimeSignalData(const vibration::AxisStatistics* table, int axes) {
  static const char* const kAcc[] = {"MEAN",     "STD",      "SKEWNESS", "KURTOSIS", "PEAK2PEAK",
                                     "PEAK2RMS", "RMS_CF_1", "RMS_CF_2", "RMS_CF_3"};
  static const char* const kVel[] = {"MEAN",     "STD",      "SKEWNESS", "KURTOSIS", "PEAK2PEAK",
                                     "PEAK2RMS", "RMS_CF_1", "RMS_CF_4", "RMS_CF_5", "RMS_CF_6"};
  for (int a = 0; a < axes; ++a) {
    const std::string suffix = axisSuffix(a, axes);
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

bool DataParsing::temperatureRow(const std::string& name,
                                 const std::function<bool(double)>& failed) {
  const int base = kindStatusBase();
  calc_result result = newResult(base);
  if (shownHere(name, result) != nullptr) {
    for (const raw& piece : raws) {
      if (piece.param_type_id != 4 || piece.values.empty()) {
        continue;
      }
      if (!failed(piece.values.front())) {
        values[name] = static_cast<float>(piece.values.front());
      } else {
        sensorFailure(result, name, base, !channels.empty());
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

void DataParsing::vibrationRates(double& fv, double& fm, double& FS) const {
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
}

double DataParsing::moduleDefault(const std::string& name, double none) const {
  double value = none;
  for (const module_param& p : module_params) {
    if (applies(p, type_param) && p.name == name) {
      value = static_cast<double>(p.value);
    }
  }
  return value;
}

double DataParsing::channelGain(const raw* piece, char letter) const {
  const std::string name = std::string("g_del_") + letter;
  double gain = moduleDefault(name, kLeastGain);
  for (const param_setting& s : param.settings) {
    if (s.name == name) {
      gain = s.value;
    }
  }
  if (piece != nullptr && piece->settings_values.count("g_del") != 0) {
    gain = piece->settings_values.at("g_del");
  }
  return gain;
}

bool DataParsing::computeModule10(DataMotor* motor, DataBearing* bearing) {
  if (type_param == 10) {
    return temperatureRow("T_CASE", [](double v) { return !(v >= kColdestCase); });
  }
  double fv = 0.0, fm = 0.0, FS = 0.0;
  vibrationRates(fv, fm, FS);
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
    return temperatureRow("T_CASE", [](double v) { return !(v >= kColdestCase); });
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
    storeRotorLines(out.bearing, out.harmonics, out.imbalance, 3, journal);
  }
  return vibrationResult(out.status_1, out.status_2);
}

void DataParsing::storeRotorLines(const double bearing[5], const double harmonics[][3],
                                  const double imbalance[], int axes, bool journal) {
  if (journal) {
    values["OIL_WHIRL_INSTABILITY"] = static_cast<float>(bearing[4]);
  } else {
    values["BEARING_OUTER_RING"] = static_cast<float>(bearing[0]);
    values["BEARING_INNER_RING"] = static_cast<float>(bearing[1]);
    values["BSF"] = static_cast<float>(bearing[3]);
    values["FTF"] = static_cast<float>(bearing[2]);
  }
  for (int a = 0; a < axes; ++a) {
    for (int k = 0; k < 3; ++k) {
      values["AFRM_" + std::to_string(k + 1) + axisSuffix(a, axes)] =
          static_cast<float>(harmonics[a][k]);
    }
  }
  for (int a = 0; a < axes; ++a) {
    values["IMBALANCE" + axisSuffix(a, axes)] = static_cast<float>(imbalance[a]);
  }
}

bool DataParsing::vibrationResult(unsigned status_1, unsigned status_2) {
  const int base = param.kind == 1 ? 2 : 0;
  calc_result result = newResult(base);
  result.status_calc = onlyDisagreement(status_2) ? base : base + int(status_1);
  result.status_vector = int(status_2);
  result.receipt_date = param.receipt_date;
  finishResult(result);
  results.back().has_raw_data = true;
  return true;
}
