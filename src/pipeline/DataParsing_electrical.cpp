// The voltage and current module (type 3) through the block calc_modul_7R_full: the gains of
// each channel's input stage, the pieces arranged by phase, and the RMS values, distortion and
// power that the measurement's kind asks for.
#include "pipeline/DataParsing.h"

#include <cmath>
#include <map>
#include <string>

#include "blocks/electrical/calc_modul_7R_full.h"
#include "equipment/DataBearing.h"
#include "equipment/DataMotor.h"
#include "equipment/Module.h"
#include "logging/PrintLog.h"

namespace {

constexpr int kVoltagePiece = 5, kCurrentPiece = 6;
// A bearing without rolling elements: the block skips the bearing lines.
constexpr int kPlainBearing = 3;
constexpr unsigned kNoBearingLines = 0x10u;
// The operators' switch for a motor that may stand: its currents below a third of the rated
// current are the noise of an idle machine.
constexpr unsigned kIdleRule = 0x100000u;

bool isPhase(const std::string& sub_channel) {
  return sub_channel == "a" || sub_channel == "b" || sub_channel == "c";
}

// The gains of all channels: rk, ku and rn by channel letter, for the voltages and currents.
struct GainMaps {
  std::map<std::string, double> rk[2], ku[2], rn[2]; // [0] voltage, [1] current
  bool rk_bad = false, ku_bad = false, rn_bad = false;

  GainMaps() {
    for (int kind = 0; kind < 2; ++kind) {
      for (const char* p : {"a", "b", "c"}) {
        rk[kind][p] = ku[kind][p] = rn[kind][p] = 0.0;
      }
    }
  }
  bool bad() const { return rk_bad || ku_bad || rn_bad; }

  // A setting named rk, ku or rn for the channel its packet names ("au": voltage a, "bi":
  // current b). With `ranged` a value outside what the module's stage can have is refused and
  // flags its name.
  void take(const std::string& name, double value, const std::string& packet, bool ranged) {
    const bool rk_ok = value > 0.0001 && value <= 1024.0, ku_ok = value > 0.0001 && value < 1e6,
               rn_ok = value >= 0.0 && value <= 127.0;
    bool* flag = name == "rk" ? &rk_bad : name == "ku" ? &ku_bad : name == "rn" ? &rn_bad : nullptr;
    if (flag == nullptr) {
      return;
    }
    if (ranged && !(name == "rk" ? rk_ok : name == "ku" ? ku_ok : rn_ok)) {
      *flag = true;
      return;
    }
    if (packet.empty() || (packet.back() != 'u' && packet.back() != 'i')) {
      return;
    }
    const int kind = packet.back() == 'u' ? 0 : 1;
    (name == "rk" ? rk : name == "ku" ? ku : rn)[kind][packet.substr(0, 1)] = value;
  }
};

} // namespace

bool DataParsing::computeModule3(DataMotor* motor, DataBearing* bearing) {
  // The gains from the pieces' own settings; an rk that no stage has sends the whole set to
  // the measurement's settings, and what is still wrong there to the module type's defaults.
  GainMaps gains;
  for (const raw& piece : raws) {
    if (piece.param_type_id != kVoltagePiece && piece.param_type_id != kCurrentPiece) {
      continue;
    }
    const int kind = piece.param_type_id == kVoltagePiece ? 0 : 1;
    const auto& settings = piece.settings_values;
    if (settings.count("rk") != 0) {
      const double rk = settings.at("rk");
      if (rk > 0.0 && rk <= 1024.0) {
        gains.rk[kind][piece.sub_channel] = rk;
      } else {
        gains.rk_bad = true;
      }
    }
    if (settings.count("ku") != 0) {
      gains.ku[kind][piece.sub_channel] = settings.at("ku");
    }
    if (settings.count("rn") != 0) {
      gains.rn[kind][piece.sub_channel] = settings.at("rn");
    }
  }
  if (gains.bad() && !param.param_settings.empty()) {
    gains.rk_bad = gains.ku_bad = gains.rn_bad = false;
    for (const param_setting& s : param.settings) {
      gains.take(s.name, s.value, s.sub_1_packet, true);
    }
  }
  if (gains.bad()) {
    for (const module_param& p : module_params) {
      gains.take(p.name, static_cast<double>(p.value), p.sub_1_packet, false);
    }
  }

  calc_modul_7R_full_ns::ElectricalInput in;
  static const char* const kPhases[] = {"a", "b", "c"};
  for (int p = 0; p < 3; ++p) {
    const std::string& u = axes_abc_first[kPhases[p]];
    const std::string& i = axes_abc_second[kPhases[p]];
    in.u_gain[p] = {gains.rk[0][u], gains.rn[0][u], gains.ku[0][u]};
    in.i_gain[p] = {gains.rk[1][i], gains.rn[1][i], gains.ku[1][i]};
  }
  in.config = module->config;
  if (bearing->type_bearing == kPlainBearing) {
    in.config |= kNoBearingLines;
  }

  int Lwin = 0;
  for (const raw& piece : raws) {
    if ((piece.param_type_id == kVoltagePiece || piece.param_type_id == kCurrentPiece) &&
        isPhase(piece.sub_channel)) {
      Lwin = int(piece.values.size());
    }
  }
  log->print("Lwin: " + std::to_string(Lwin) + "\n");
  // A phase without a piece stays at 0, which the block counts as lost; a piece of another
  // length is cut or filled with lost samples.
  for (int p = 0; p < 3; ++p) {
    in.u[p].set_size(1, Lwin);
    in.i[p].set_size(1, Lwin);
    for (int k = 0; k < Lwin; ++k) {
      in.u[p][k] = in.i[p][k] = 0.0;
    }
  }
  for (const raw& piece : raws) {
    const bool voltage = piece.param_type_id == kVoltagePiece;
    if (!voltage && piece.param_type_id != kCurrentPiece) {
      continue;
    }
    for (int p = 0; p < 3; ++p) {
      if ((voltage ? axes_abc_first : axes_abc_second)[kPhases[p]] == piece.sub_channel) {
        coder::array<double, 2>& to = voltage ? in.u[p] : in.i[p];
        for (int k = 0; k < Lwin && k < int(piece.values.size()); ++k) {
          to[k] = piece.values[size_t(k)];
        }
      }
    }
  }
  in.N = Lwin;
  in.bearing = {bearing->mean_diameter, bearing->ball_diameter, bearing->angle_rad,
                double(bearing->count_balls)};
  in.motor = {double(motor->p2), 50.0, double(motor->speed), double(motor->power)};
  in.type_param = type_param;

  log->print("calculation");
  calc_modul_7R_full_ns::ElectricalOutput out;
  try {
    calc_modul_7R_full_ns::calc_modul_7R_full(in, out);
    log->print("\n");
  } catch (...) {
    // whatever the numeric library threw, the row yields no result and the loop goes on
    log->print("\nexceptions in the method calc_modul_7R_full id=" + std::to_string(param_info_id) +
               " \n");
    return false;
  }

  // The names each kind of measurement stores, with the kinds that store them.
  struct Stored {
    const char* name;
    double value;
    int kinds[4]; // 0 fills: a telemetry row never comes here
  };
  const Stored stored[] = {{"U_AB", out.U_line[0], {4, 21}},   {"U_BC", out.U_line[1], {4, 21}},
                           {"U_CA", out.U_line[2], {4, 21}},   {"U_A", out.U[0], {1, 15, 21, 4}},
                           {"U_B", out.U[1], {2, 16, 21, 4}},  {"U_C", out.U[2], {3, 17, 21, 4}},
                           {"THD_U_A", out.THD_U[0], {4, 21}}, {"THD_U_B", out.THD_U[1], {4, 21}},
                           {"THD_U_C", out.THD_U[2], {4, 21}}, {"I_A", out.I[0], {5, 18, 8, 21}},
                           {"I_B", out.I[1], {6, 19, 8, 21}},  {"I_C", out.I[2], {7, 20, 8, 21}},
                           {"THD_I_A", out.THD_I[0], {8, 21}}, {"THD_I_B", out.THD_I[1], {8, 21}},
                           {"THD_I_C", out.THD_I[2], {8, 21}}};
  for (const Stored& s : stored) {
    for (int kind : s.kinds) {
      if (kind == type_param) {
        values[s.name] = static_cast<float>(s.value);
      }
    }
  }
  values["P"] = static_cast<float>(out.power.P[0] / 1000.0);
  if ((module->config & kIdleRule) != 0 && out.I[0] < motor->i / 3) {
    values["I_A"] = values["I_B"] = values["I_C"] = values["P"] = 0.0f;
  }

  const int base = param.kind == 1 ? 2 : 0;
  calc_result result = newResult(base);
  result.status_calc = base + int(out.status);
  result.status_vector = int(out.status_bits);
  result.receipt_date = param.receipt_date;
  finishResult(result);
  results.back().has_raw_data = true;
  return true;
}
