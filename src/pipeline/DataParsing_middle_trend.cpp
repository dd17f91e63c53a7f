// The middle and the trend of a control point's parameters: after each measurement the
// history of every parameter that asks for them is read back, smoothed by the running median
// (middle) or fitted at the machine's current speed (trend, monotone and the forecast of the
// days left before orange), and written back over the whole history in one bulk update per
// column through the scratch table result_temp. The newest values go into the result, from
// where the loop puts them on display.
#include "pipeline/DataParsing.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "blocks/median_filter/median_filter.h"
#include "blocks/trend/detrend_filter_group_mon_rul.h"
#include "logging/PrintLog.h"
#include "logging/time_helpers.h"
#include "records/settings_parsers.h"
#include "store/DataBase.h"
#include "store/sql_quote.h"

namespace {

// type_message of a forecast notification.
constexpr int kForecastMessage = 6;
// A series that short is not written back: three values say nothing about a history.
constexpr int kShortestWritten = 3;
// A control point with this many trend parameters or fewer is not worth a trend.
constexpr std::size_t kFewestTrendParameters = 5;
// The rotor frequency above which the machine counts as turning.
constexpr double kTurningFrequency = 0.1;
constexpr int kDefaultRulDays = 28;
constexpr double kSecondsPerDay = 86400.0;

// The bulk rewrite of one column over the rows staged in result_temp: stage, join, empty.
// Nothing else may use result_temp between the three statements.
void rewriteColumn(DataBase* db, const std::string& column, const std::vector<result_temp>& rows) {
  const std::string ids = db->writeResultTmp(rows);
  db->writeData("UPDATE RESULT_BASE SET " + column +
                "=result_temp.value FROM result_temp WHERE result_base.visualization_id IN (" +
                ids +
                ") AND result_base.visualization_id=result_temp.v_id AND "
                "result_base.receipt_date=result_temp.receipt_date");
  db->writeData("TRUNCATE TABLE result_temp");
}

// One parameter's history for the middle, newest first.
struct str_middle {
  std::string name;
  int visualization_id = 0;
  int count = 0;
  std::vector<long> ids;
  std::vector<std::string> dates;
  std::vector<double> values;
  std::vector<double> middle;
};

// The middle of the parameters of one control point for one measurement.
class Middle2 {
public:
  Middle2(DataBase* db_, long source_, int param_info_id_, std::vector<std::string> names_,
          PrintLog* log_, int window_, std::map<std::string, int> visualization_ids_,
          int status_calc_)
      : db(db_), param_info_id(param_info_id_), log(log_), source(source_),
        visualization_ids(std::move(visualization_ids_)), names(std::move(names_)), window(window_),
        status_calc(status_calc_) {
    if (!visualization_ids.empty()) {
      readData();
    }
  }

  // Up to `window` good values of each parameter up to this measurement, newest first.
  void readData() {
    log->print("reading data for middle\n");
    for (const std::string& name : names) {
      str_middle s;
      s.name = name;
      s.visualization_id = visualization_ids[name];
      db->getArrayResult(" WHERE VISUALIZATION_ID = " + std::to_string(s.visualization_id) +
                             " AND PARAM_INFO_ID <= " + std::to_string(param_info_id) +
                             " AND VALUE IS NOT NULL" +
                             " AND STATUS_CALC = " + std::to_string(status_calc) +
                             " ORDER BY RECEIPT_DATE DESC LIMIT " + std::to_string(window),
                         "VALUE", s.dates, s.ids, s.values);
      s.count = static_cast<int>(s.values.size());
      if (s.count > 0 && s.dates.size() == s.values.size()) {
        series.push_back(std::move(s));
      }
    }
  }

  void calculateMiddle2() {
    std::size_t rows = 0;
    for (const str_middle& s : series) {
      rows += s.values.size();
    }
    updates.reserve(rows);
    for (str_middle& s : series) {
      const int n = s.count;
      coder::array<double, 2> x;
      coder::array<double, 2> y;
      x.set_size(1, n);
      for (int k = 0; k < n; ++k) {
        x[k] = s.values[static_cast<std::size_t>(n - 1 - k)];
      }
      median_filter_ns::median_filter(x, y);
      s.middle.clear();
      for (int j = 0; j < n; ++j) {
        s.middle.push_back(y[n - 1 - j]);
        // Nothing reads a series' dates after this: they move into the staged rows.
        updates.push_back(
            {s.visualization_id, std::move(s.dates[static_cast<std::size_t>(j)]), y[n - 1 - j]});
      }
    }
  }

  // Writes the middles back when the first series is long enough and returns the newest
  // middle of each parameter, written or not.
  std::map<std::string, double> write() {
    std::map<std::string, double> newest;
    if (series.empty()) {
      return newest;
    }
    // The oldest row of the last parameter is left as it is; the users' tools know it so.
    updates.pop_back();
    if (series.front().count > kShortestWritten && !updates.empty()) {
      rewriteColumn(db, "middle", updates);
      log->print("write middle\n");
    }
    for (const str_middle& s : series) {
      if (!s.middle.empty()) {
        newest[s.name] = s.middle.front();
      }
    }
    return newest;
  }

private:
  DataBase* db;
  int param_info_id;
  PrintLog* log;
  long source;
  std::map<std::string, int> visualization_ids;
  std::vector<std::string> names;
  int window;
  int status_calc;
  std::vector<result_temp> updates;
  std::vector<str_middle> series;
};

// One parameter's history for the trend, newest first, with the rotor frequency of each row.
struct str_trend {
  std::string name;
  int visualization_id = 0;
  int count = 0;
  std::vector<long> ids;
  std::vector<std::string> dates;
  std::vector<double> values;
  std::vector<double> frm;
  std::vector<double> trend;
  std::vector<double> rul_x; // seconds from the newest row
  std::vector<double> rul_y;
};

// The trend, monotone and forecast of the parameters of one control point.
class Trend {
public:
  Trend(DataBase* db_, long source_, int param_info_id_, std::string trend_start_, int rul_days_,
        std::vector<std::string> names_, PrintLog* log_, std::map<std::string, int> trend_ids_,
        std::map<std::string, int> rul_ids_, int frm_visualization_id_, int status_calc_)
      : db(db_), param_info_id(param_info_id_), log(log_), source(source_),
        trend_start(std::move(trend_start_)), frm_visualization_id(frm_visualization_id_),
        trend_ids(std::move(trend_ids_)), rul_ids(std::move(rul_ids_)), names(std::move(names_)),
        status_calc(status_calc_), rul_days(rul_days_ == 0 ? kDefaultRulDays : rul_days_) {
    if (!trend_ids.empty()) {
      readData();
    }
  }

  // The rotor-frequency history decides which measurements count (frequency known and above
  // 0, since trend_start, of the right status, the newest `limit`); each parameter's rows of
  // those measurements follow.
  void readData() {
    const std::string filter = trend_start.empty()
                                   ? ""
                                   : " AND RECEIPT_DATE >= TO_TIMESTAMP(" +
                                         sql::quoted(trend_start) + ",'yyyy-mm-dd hh24:mi:ss.ff6')";
    log->print("reading data for trend, trend_start: " + trend_start + "\n");
    std::vector<int> frm_ids;
    std::vector<double> frm_values;
    db->getArrayResultFRM(" WHERE VISUALIZATION_ID = " + std::to_string(frm_visualization_id) +
                              " AND VALUE > 0 AND VALUE IS NOT NULL" +
                              " AND PARAM_INFO_ID <= " + std::to_string(param_info_id) + filter +
                              " AND STATUS_CALC = " + std::to_string(status_calc) +
                              " ORDER BY RECEIPT_DATE DESC LIMIT " + std::to_string(limit),
                          frm_ids, frm_values);
    // The frequency of each measurement by its id, sorted for the search of every row of every
    // parameter; of an id read twice the later value counts.
    std::vector<std::pair<int, double>> frequency;
    for (std::size_t i = 0; i < frm_ids.size() && i < frm_values.size(); ++i) {
      frequency.emplace_back(frm_ids[i], frm_values[i]);
    }
    std::stable_sort(frequency.begin(), frequency.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::size_t kept = 0;
    for (const auto& entry : frequency) {
      if (kept > 0 && frequency[kept - 1].first == entry.first) {
        --kept;
      }
      frequency[kept++] = entry;
    }
    frequency.resize(kept);
    const int largest = frm_ids.empty() ? 0 : frm_ids.front();
    const int smallest = frm_ids.empty() ? 0 : frm_ids.back();
    for (const std::string& name : names) {
      std::vector<int> param_info_ids;
      std::vector<std::string> dates;
      std::vector<long> ids;
      std::vector<double> values;
      db->getArrayResultId(" WHERE VISUALIZATION_ID = " + std::to_string(trend_ids[name]) +
                               " AND PARAM_INFO_ID >= " + std::to_string(smallest) +
                               " AND PARAM_INFO_ID <= " + std::to_string(largest) +
                               " ORDER BY RECEIPT_DATE DESC",
                           "VALUE", param_info_ids, dates, ids, values);
      str_trend s;
      s.name = name;
      s.visualization_id = trend_ids[name];
      for (std::size_t i = 0; i < values.size(); ++i) {
        const auto found = std::lower_bound(
            frequency.begin(), frequency.end(), param_info_ids[i],
            [](const std::pair<int, double>& entry, int id) { return entry.first < id; });
        if (found == frequency.end() || found->first != param_info_ids[i]) {
          continue;
        }
        s.ids.push_back(ids[i]);
        s.dates.push_back(std::move(dates[i]));
        s.values.push_back(values[i]);
        s.frm.push_back(found->second);
      }
      s.count = static_cast<int>(s.values.size());
      if (s.count > 0) {
        series.push_back(std::move(s));
      }
    }
  }

  void calculateTrend(const std::vector<visualization>& list) {
    log->print("calculation trend\n");
    for (const str_trend& s : series) {
      if (s.values.size() != s.frm.size()) {
        bad_sizes = true;
      }
    }
    if (series.size() <= kFewestTrendParameters || bad_sizes) {
      return;
    }
    std::size_t rows = 0;
    for (const str_trend& s : series) {
      rows += s.values.size();
    }
    trend_rows.reserve(rows);
    // The dates of all parameters come from the same measurements: one reader for them all.
    LocalDateReader dates;
    for (str_trend& s : series) {
      const int n = s.count;
      coder::array<double, 1> x;
      coder::array<double, 1> f;
      coder::array<double, 1> t;
      x.set_size(n);
      f.set_size(n);
      t.set_size(n);
      // Whole seconds from the oldest row.
      const long oldest = dates.seconds(s.dates[static_cast<std::size_t>(n - 1)]);
      for (int k = 0; k < n; ++k) {
        const auto row = static_cast<std::size_t>(n - 1 - k);
        x[k] = s.values[row];
        f[k] = s.frm[row];
        t[k] = static_cast<double>(dates.seconds(s.dates[row]) - oldest);
      }
      double thresholds[3] = {0.0, 0.0, 0.0};
      for (const visualization& v : list) {
        if (v.id == s.visualization_id) {
          thresholds[0] = static_cast<double>(v.green);
          thresholds[1] = static_cast<double>(v.yellow);
          thresholds[2] = static_cast<double>(v.orange);
          break;
        }
      }
      const int options = rul_ids.count(s.name) != 0 ? 1 : 0;
      const double horizon = static_cast<double>(rul_days) * kSecondsPerDay;

      coder::array<double, 2> y;
      double monotone = 0.0;
      int monotone_size[2] = {0, 0};
      double days = 0.0;
      detrend_filter_group_mon_rul_ns::struct0_T curve;
      detrend_filter_group_mon_rul_ns::detrend_filter_group_mon_rul(
          x, f, t, horizon, thresholds, options, y, &monotone, monotone_size, &days, &curve);

      // The display counts the curve's times from the newest row. The block counts them from
      // the oldest row at the speed of now and the span runs from the history's oldest row:
      // the two agree when the history begins at the speed of now, as it does on a machine
      // of one speed; the users' tools read the curve so.
      if (curve.x.numel() > 1 && curve.y.numel() == curve.x.numel()) {
        const long span = dates.seconds(s.dates.front()) - oldest;
        if (span > 0) {
          for (int j = 0; j < curve.x.numel(); ++j) {
            if (!std::isnan(curve.x[j]) && !std::isnan(curve.y[j])) {
              s.rul_x.push_back(curve.x[j] - static_cast<double>(span));
              s.rul_y.push_back(curve.y[j]);
            }
          }
        }
      }
      // Only the newest row carries a monotone: it describes the history up to it.
      monotone_rows.push_back({s.visualization_id, s.dates.front(), monotone});
      latest_monotone[s.name] = monotone;
      s.trend.clear();
      // The dates move into the staged rows; only the newest is read again, by the forecast's
      // notice.
      trend_rows.push_back({s.visualization_id, s.dates.front(), y[n - 1]});
      s.trend.push_back(y[n - 1]);
      for (int j = 1; j < n; ++j) {
        s.trend.push_back(y[n - 1 - j]);
        trend_rows.push_back(
            {s.visualization_id, std::move(s.dates[static_cast<std::size_t>(j)]), y[n - 1 - j]});
      }
    }
  }

  // Writes the trend over each history and the monotone of each newest row; returns the
  // newest trend and the monotone of each parameter.
  std::vector<std::map<std::string, double>> write() {
    std::map<std::string, double> newest_trend;
    // Rows the block left out carry NaN and clear an older trend there.
    if (!series.empty() && series.front().count > kShortestWritten && !trend_rows.empty()) {
      rewriteColumn(db, "trend", trend_rows);
      log->print("write trend\n");
    }
    for (const str_trend& s : series) {
      if (!s.trend.empty()) {
        newest_trend[s.name] = s.trend.front();
      }
    }
    if (!monotone_rows.empty()) {
      rewriteColumn(db, "monotone", monotone_rows);
    }
    return {newest_trend, latest_monotone};
  }

  // The days left of each parameter with a forecast curve, announced by the "rulActive" codes
  // of its message settings.
  void rulNotification(int channel_id, int control_point_id, const std::string& organization_alias,
                       const std::vector<visualization>& list,
                       const std::function<int(const std::vector<int>&)>& recommend) {
    for (const str_trend& s : series) {
      if (s.rul_x.empty()) {
        continue;
      }
      // The end of the curve lies ten grid steps beyond the crossing; that end is reported.
      const int days =
          static_cast<int>(std::ceil(static_cast<float>(s.rul_x.back() / kSecondsPerDay)));
      log->print("rul: " + s.name + " : v id: " + std::to_string(s.visualization_id) + " : " +
                 std::to_string(days) + "\n");
      std::string text;
      const std::size_t size = s.name.size();
      if (size >= 2 && s.name[size - 2] == '_' &&
          (s.name[size - 1] == 'X' || s.name[size - 1] == 'Y' || s.name[size - 1] == 'Z')) {
        text = "ось " + s.name.substr(size - 1) + ", достигнет порога за " + std::to_string(days) +
               " (дни)";
      }
      std::map<std::string, std::vector<int>> codes;
      for (const visualization& v : list) {
        if (v.id == s.visualization_id && !v.message_settings.empty()) {
          codes = json_parse_message_settings(v.message_settings, "rulActive");
          break;
        }
      }
      if (codes.empty() || days <= 0) {
        continue;
      }
      for (const auto& [code, recommendations] : codes) {
        if (!db->isMessageActive(code)) {
          continue;
        }
        db->notificationSave(code, source, s.dates.front(), 0, 0, text, kForecastMessage,
                             organization_alias, recommend(recommendations), channel_id,
                             control_point_id, true, s.visualization_id);
      }
    }
  }

  // Stores each forecast curve as records of a little-endian 64-bit time and 32-bit float
  // value; a parameter without a curve keeps the one of an earlier run.
  void rulWrite() {
    for (const str_trend& s : series) {
      if (s.rul_x.empty()) {
        continue;
      }
      // The body of an E string: "\\x" becomes the bytea hexadecimal prefix.
      std::string text = "'\\\\x";
      text.reserve(text.size() + s.rul_x.size() * 24 + 1);
      for (std::size_t j = 0; j < s.rul_x.size(); ++j) {
        const auto time = static_cast<std::uint64_t>(static_cast<std::int64_t>(s.rul_x[j]));
        const auto value = static_cast<float>(s.rul_y[j]);
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        appendLittleEndianHex(text, time, 8);
        appendLittleEndianHex(text, bits, 4);
      }
      db->writeRulVisualization(s.visualization_id, text + "'");
    }
  }

  std::map<std::string, std::string> rul_texts; // stays empty: no text per parameter yet

private:
  // Appends the `bytes` low bytes of `number`, least significant first, two lower-case digits
  // each.
  static void appendLittleEndianHex(std::string& text, std::uint64_t number, int bytes) {
    static const char kDigits[] = "0123456789abcdef";
    for (int b = 0; b < bytes; ++b) {
      const auto byte = static_cast<unsigned>((number >> (8 * b)) & 0xffu);
      text += kDigits[byte >> 4];
      text += kDigits[byte & 0xfu];
    }
  }

  DataBase* db;
  int param_info_id;
  PrintLog* log;
  long source;
  std::string trend_start;
  bool bad_sizes = false;
  int frm_visualization_id;
  std::map<std::string, int> trend_ids;
  std::map<std::string, int> rul_ids;
  std::vector<std::string> names;
  std::map<std::string, double> latest_monotone;
  int limit = 1000;
  int status_calc;
  int rul_days;
  std::vector<result_temp> monotone_rows;
  std::vector<result_temp> trend_rows;
  std::vector<str_trend> series;
};

} // namespace

void DataParsing::computeMiddle(std::vector<visualization> list, int window, int result_index) {
  if (result_index < 0 || static_cast<std::size_t>(result_index) >= results.size()) {
    return;
  }
  const calc_result& result = results[static_cast<std::size_t>(result_index)];
  std::vector<std::string> names;
  std::map<std::string, int> visualization_ids;
  for (const visualization& v : list) {
    const auto value = result.params.find(v.name_param);
    // A parameter without a value now has nothing new to smooth.
    if (v.middle != 1 || value == result.params.end() || std::isnan(value->second) ||
        visualization_ids.count(v.name_param) != 0) {
      continue;
    }
    names.push_back(v.name_param);
    visualization_ids[v.name_param] = v.id;
  }
  const int status_calc = param.kind == 1 ? 2 : 0;
  if (visualization_ids.empty()) {
    return;
  }
  Middle2 middle(db, source, param_info_id, names, log, window, visualization_ids, status_calc);
  middle.calculateMiddle2();
  std::map<std::string, double> newest = middle.write();
  updateLatest("middle", result_index, newest);
}

void DataParsing::computeTrend(std::string trend_start, int rul_days,
                               std::vector<visualization> list, int result_index) {
  if (result_index < 0 || static_cast<std::size_t>(result_index) >= results.size()) {
    return;
  }
  const calc_result& result = results[static_cast<std::size_t>(result_index)];
  const int notified_channel = list.empty() ? 0 : list.front().channel_id;
  const int notified_point = list.empty() ? 0 : list.front().control_point_id;
  std::vector<std::string> names;
  std::map<std::string, int> trend_ids;
  std::map<std::string, int> rul_ids;
  int frm_visualization_id = 0;
  for (const visualization& v : list) {
    if (v.trend == 1 && result.params.count(v.name_param) != 0 &&
        trend_ids.count(v.name_param) == 0) {
      names.push_back(v.name_param);
      trend_ids[v.name_param] = v.id;
      if (v.rul_active != 0) {
        rul_ids[v.name_param] = v.id;
      }
    }
    if (v.name_param == "FRM") {
      frm_visualization_id = v.id;
    }
  }
  const int status_calc = param.kind == 1 ? 2 : 0;
  // A machine that does not turn has no operating speed to take the history at.
  const auto frm = values.find("FRM");
  if (frm == values.end() || !(static_cast<double>(frm->second) > kTurningFrequency)) {
    return;
  }
  Trend trend(db, source, param_info_id, trend_start, rul_days, names, log, trend_ids, rul_ids,
              frm_visualization_id, status_calc);
  if (trend_ids.empty()) {
    return;
  }
  trend.calculateTrend(list);
  std::vector<std::map<std::string, double>> newest = trend.write();
  updateLatest("trend", result_index, newest[0]);
  updateLatest("monotone", result_index, newest[1]);
  trend.rulNotification(notified_channel, notified_point, organization_alias, list,
                        [this](const std::vector<int>& candidates) {
                          return activeRecommendation(candidates, kForecastMessage);
                        });
  trend.rulWrite();
  updateRul(result_index, trend.rul_texts);
}
