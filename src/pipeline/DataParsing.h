// The object that lives for one PARAM_INFO row: it decodes the row's fu_raw pieces, picks the
// computation by module type and measurement kind, turns what the computation found into
// results, hands them to the store, and judges the row's telemetry block.
//
// The main loop and a recalculation job build one per row, in this order: constructor,
// print, verify; then for a telemetry row (type_param 0) control_tu, write_tu_msg,
// tu_threshold_control; for any other row readData, and setControlPoint + run once per
// control point of the machine (or run(false) once for a machine without points), followed
// by updateLatest, print_result, write, write_kafka, computeMiddle, computeTrend for each
// result and computeStatus at the end.
//
// The store, the log writer, the module, the machine and the status cache are borrowed: they
// outlive the object and are never deleted by it. Everything else is owned by value.
//
// The operations live in one source file per concern:
//   DataParsing.cpp                    construction, telemetry block, verify, print
//   DataParsing_decode.cpp             readData and the sample formats of fu_raw
//   DataParsing_dispatch.cpp           run: axis maps, motor and bearing, dispatch table
//   DataParsing_telemetry.cpp          modules 2, 8, 11, 103 to 106 and analyzeRul
//   DataParsing_output.cpp             updateLatest, updateRul, print_result, write, write_kafka
//   DataParsing_vibration.cpp          vibration modules with a magnetic channel (1, 9, 10)
//   DataParsing_vibration_only.cpp     vibration modules without one (5, 6, 7, 12, 101, 102)
//   DataParsing_electrical.cpp         computeModule3, the voltage and current module
//   DataParsing_telemetry_control.cpp  control_tu, write_tu_msg
//   DataParsing_thresholds.cpp         tu_threshold_control, control_defects
//   DataParsing_status.cpp             computeStatus
//   DataParsing_middle_trend.cpp       computeMiddle, computeTrend and the forecast curve
// Helpers of the folder:
// hex_text (hexadecimal samples) and sql_text (floats in statement texts as the store's driver
// prints them).
#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "records/types.h"

class Aggregate;
class DataBase;
class DataBearing;
class DataCache;
class DataMotor;
class Module;
namespace vibration {
struct AxisStatistics;
struct BearingGeometry;
struct FirstGenerationOutput;
struct SecondGenerationInput;
struct SecondGenerationOutput;
} // namespace vibration
class PrintLog;

class DataParsing {
public:
  // status_vector bit of a measured value that lay outside what the sensor can report.
  static constexpr int kSensorOutOfRange = 0x20000000;

  // Takes the row, its borrowed companions and the visualizations of classes 1, 2 and 3 of
  // the source. Collects the channels of the machine's control points (or, for a machine
  // without points, the fallback channel of the whole module), reads the telemetry block of
  // param.tu_error and the MODULE_PARAM defaults of the module type and revision. Does not
  // read fu_raw. `recalculation` is the loop's replay flag, always true in a recalculation
  // job: it suppresses notifications and hardware status bits. db, module, log and aggregate
  // must not be null. Throws std::invalid_argument or std::out_of_range for a semicolon
  // telemetry block with a field that is not a number; store failures pass through.
  DataParsing(DataBase* db, Module* module, param_info param, PrintLog* log, bool recalculation,
              Aggregate* aggregate, std::vector<visualization> visualizations, DataCache* cache);

  // ---- Decoding of the row (DataParsing.cpp, DataParsing_decode.cpp) ---------------------

  // Reads the fu_raw pieces of the row into `raws` and decodes each (decodeRaw). Sets
  // no_data when there is no piece or a piece of a named sub-channel is not a whole number of
  // values. Throws std::invalid_argument when a sample is not hexadecimal.
  void readData();

  // Decodes one fu_raw piece in place: settings_values from settings, then values,
  // timed_values or, for a named value, the name into data and the value into values.
  // Returns false when the piece names a sub-channel and its data after the two prefix
  // characters is not a whole number of values. Throws std::invalid_argument when a sample
  // or a name byte is not hexadecimal. Needs no store: the fuzz target calls it directly.
  static bool decodeRaw(raw& piece);

  // Number of hexadecimal characters of one value of the sample format c_type: 4 for 1 and 2,
  // 6 for 3 and 4, 8 for 5, 6 and 7, and 2 for 8 and every unknown format.
  static int sampleWidth(int c_type);

  // One sample, already in most-significant-first digit order, read by its format: 1, 3, 8
  // unsigned; 2 signed 16 bits; 4 and 6 the low 32 bits as signed; 5 unsigned 32 bits; 7 the
  // bits of an IEEE single. Any other format gives NaN without looking at the text. Throws
  // std::invalid_argument for an empty text or one with a character that is no hex digit.
  static double string_to_double(std::string hex, int c_type);

  // Whether the pair type_mod, type_param is processed at all; a refused pair with a
  // measurement (type_param not 0) logs "type_mod/type_param  will not be processed\n".
  bool verify();

  // The row's log line: date, source, module type and measurement kind, and for a telemetry
  // row with all four block values the " tu: " tail.
  std::string print();

  // Splits the semicolon form of the telemetry block into `out` (appended to). Each field
  // ends in ";"; the tail after the last ";" counts only as a fourth field.
  void parsing_tu(std::string text, std::vector<std::string>& out);

  // Makes `point` the control point that run, the computations and control_defects work on.
  void setControlPoint(control_point point);

  // ---- Run and dispatch (DataParsing_dispatch.cpp) ---------------------------------------

  // Sets the axis maps from the point's channel (or the fallback channel without a point),
  // reads the point's motor and bearing, and runs the computation of type_mod and
  // type_param; its return value goes to `computed`, its results to `results`. Logs "no data
  // in fu_raw\n" and computes nothing when no_data is set. Exceptions of a computation pass.
  void run(bool has_point);

  // ---- Vibration and electrical adapters (DataParsing_vibration*.cpp, _electrical.cpp) ----
  // Each turns the decoded samples into one or more results through its math block and
  // returns whether it computed; the motor and bearing are passed valid or not.

  bool computeModule1(DataMotor* motor, DataBearing* bearing);        // modules 1 and 9
  bool computeModule3(DataMotor* motor, DataBearing* bearing);        // voltage and current
  bool computeModule5(DataMotor* motor, DataBearing* bearing);        // module 5
  bool computeModule6(DataMotor* motor, DataBearing* bearing);        // module 6, one channel
  bool computeModule6_single(DataMotor* motor, DataBearing* bearing); // multichannel 6, 12
  bool computeModule7(DataMotor* motor, DataBearing* bearing);        // module 7
  bool computeModule10(DataMotor* motor, DataBearing* bearing);       // module 10
  bool computeModule101(DataMotor* motor, DataBearing* bearing);      // wireless vibration
  bool computeModule102(DataMotor* motor, DataBearing* bearing);      // wireless vibration

  // ---- Telemetry modules (DataParsing_telemetry.cpp) -------------------------------------

  // Pressure transmitter: one PRESSURE result per timed record of the first piece, dated by
  // the record. False when there is no piece.
  bool computeModule2();
  // Up to four temperature sensors SENSOR_T1..SENSOR_T4 in one result; a sensor without an
  // active visualization at the result's place is dropped. Always true.
  bool computeModule8();
  // Temperature with timed records: one TEMPERATURE result per record of the first piece,
  // with the forecast check of analyzeRul. False when there is no piece.
  bool computeModule11();
  // Wireless temperature (TEMPERATURE), or the named values of type_param 200 and 201.
  bool computeModule103();
  // Wireless humidity (HUMIDITY) or pressure (PRESSURE), or the named values.
  bool computeModule104();
  // As computeModule104.
  bool computeModule105();
  // Valve position (VALVE_STATUS).
  bool computeModule106();

  // Raises the forecast notification of a stored curve: when row.rul_data reaches above
  // row.orange and row.message_settings has "rulActive" codes, each active code is raised
  // with the curve's span in hours. Throws std::invalid_argument for a curve text with an
  // incomplete record or a digit that is not hexadecimal; store failures pass.
  void analyzeRul(visualization row);

  // ---- Result output (DataParsing_output.cpp) --------------------------------------------

  // Builds results[index].result_params from its params, for the names that have a
  // visualization at the result's channel and control point in `list`; a value beyond
  // plus or minus 1e6 becomes NaN. An index outside results does nothing.
  void updateLatest(int index, std::vector<visualization> list);
  // Puts computed_values[name] into the middle, trend or monotone field (kind "middle", "trend",
  // "monotone") of each result_param of results[index] with that name; beyond plus or minus
  // 1e6 NaN. Any other kind, or an index outside results, does nothing.
  void updateLatest(std::string kind, int index, std::map<std::string, double>& computed_values);
  // Gives each result_param of results[index] named in rul_texts its remaining-life text.
  void updateRul(int index, std::map<std::string, std::string> rul_texts);
  // The result's log text: its place and status, then one "name: value" line per parameter.
  std::string print_result(calc_result result);
  // Stores the result in RESULT_BASE and MATH_HISTORY, and the row's defects if any.
  void write(calc_result result);
  // Announces a result on standard output: "write_kafka: topic: <topic>, id: <id>\n". The
  // service has no broker client; the result itself is not used.
  void write_kafka(calc_result result, std::string topic, int id);

  // ---- Telemetry control (DataParsing_telemetry_control.cpp) -----------------------------

  // Judges whether the telemetry block can be believed (reset counter, signal strength,
  // battery) and raises messages "11", "29" and "4". `list` holds the type 2 visualizations
  // of the first bound channel. True when the block is to be believed.
  bool control_tu(std::vector<visualization> list);
  // Writes the telemetry block as one result with one parameter per entry of `list`: into
  // RESULT_BASE, MATH_HISTORY and the latest values. An entry at another place or of a value
  // the block lacks gives a parameter of no visualization, which the store refuses with
  // pqxx::sql_error after the parameters before it are written. Adds nothing to `results`.
  void write_tu_msg(std::vector<visualization> list);

  // ---- Threshold control and defects (DataParsing_thresholds.cpp) ------------------------

  // Compares each telemetry value with the thresholds of its visualization in `list` and
  // raises the "corridorActive" notifications and recommendations of its message settings.
  void tu_threshold_control(std::vector<visualization> list);
  // Raises message 2000 + defect number at level + 1 for each entry of `defects`, at the
  // current point. The caller decides whether a replay raises anything.
  void control_defects();

  // ---- Assessment (DataParsing_status.cpp, DataParsing_middle_trend.cpp) ----------------------

  // Colours the parameters of each control point that has a good result against `list` (the
  // re-read visualizations of classes 1, 2, 3), stores the point's status in the cache and in
  // CONTROL_POINT, and raises the notifications of parameters in the two worst colours.
  void computeStatus(std::vector<visualization> list);
  // Running median over `window` stored values of each parameter of results[result_index]
  // that `list` asks a median for; folds the newest medians into the result.
  void computeMiddle(std::vector<visualization> list, int window, int result_index);
  // Trend, monotonicity and forecast of each parameter of results[result_index] that `list`
  // asks a trend for, over the history since trend_start with a horizon of rul_days.
  void computeTrend(std::string trend_start, int rul_days, std::vector<visualization> list,
                    int result_index);

  // ---- Fields, in the order of the data model -------------------------------------------

  bool recalculation = false;     // replay or recalculation job: no notifications, no hardware bits
  DataBase* db = nullptr;         // borrowed store
  Module* module = nullptr;       // borrowed: the row's module
  std::string organization_alias; // the machine's organization; passed to every store write
  long source = 0;                // param.source
  bool computed = false;          // what the module computation returned
  std::string receipt_date;       // param.receipt_date
  int type_param = 0;             // param.type_param
  int type_mod = 0;               // param.type_mod
  param_info param;               // a copy of the row
  int channel_id = 0;             // fallback channel of a machine without control points
  std::string axis_order;         // axis text of the fallback channel
  std::vector<raw> raws;          // the fu_raw pieces of the row, decoded by readData
  std::vector<module_param> module_params; // MODULE_PARAM defaults of the module type
  std::array<double, 18> block_table{};    // output storage handed to the vibration blocks
  double block_scalar = 0.0;               // one further output of the vibration blocks
  std::map<int, int> defects;              // defect number to level, from the vibration adapters
  std::map<std::string, int> tu_values;    // telemetry: TEMP, RSSI, RESET_COUNT, U_BATTERY, STATE
  // Which letter stands in each axis's place, for the first and second triple of the axis
  // text; identities until run reads an axis text, and never reset between points.
  std::map<std::string, std::string> axes_xyz_first{{"x", "x"}, {"y", "y"}, {"z", "z"}};
  std::map<std::string, std::string> axes_xyz_second{{"x", "x"}, {"y", "y"}, {"z", "z"}};
  std::map<std::string, std::string> axes_abc_first{{"a", "a"}, {"b", "b"}, {"c", "c"}};
  std::map<std::string, std::string> axes_abc_second{{"a", "a"}, {"b", "b"}, {"c", "c"}};
  DataCache* cache = nullptr; // borrowed control-point status cache
  PrintLog* log = nullptr;    // borrowed log writer
  std::string log_text;       // printed by the loop after readData; nothing fills it
  bool no_data = false;       // no usable fu_raw data
  int param_info_id = 0;      // param.id
  // Parameter values of the current computation, copied into each result's params. Not
  // cleared between control points of one row: a later point's result carries what an earlier
  // point put here unless its computation overwrites it.
  std::map<std::string, float> values;
  std::vector<calc_result> results;          // what this measurement yields
  Aggregate* aggregate = nullptr;            // borrowed: the monitored machine
  std::vector<channel> channels;             // the channels of the machine's control points
  control_point point;                       // the control point under calculation
  std::vector<visualization> visualizations; // classes 1, 2, 3 of the source

private:
  // A result at the current place: source, status base, channel and control point.
  calc_result newResult(int status_base) const;
  // Ends a result: its measurement, a copy of `values`, no signal data, appended to results.
  void finishResult(calc_result& result);
  // The status base of modules 2, 8 and 11: 2 for a row of kind 1, else 0.
  int kindStatusBase() const;
  // A sensor out of range: NaN under name, the failed status, message "28" and hardware
  // bit 1 at the result's place unless recalculation (or `notify` is false).
  void sensorFailure(calc_result& result, const std::string& name, int status_base, bool notify);
  // Modules 103 to 105 with type_param 200 or 201: each named piece's first value under its
  // name, U_BATTERY clamped to 0..100.
  void namedValues(calc_result& result);
  // Wireless vibration modules 101 and 102 with type_param 200 or 201: the module computed its
  // parameters itself and names each piece by its sub-channel; the names' axes follow the
  // channel's axis order. A velocity above the limit on the axes `velocity_names` fails it.
  bool precomputedValues(const std::vector<std::string>& velocity_names);
  // The statistics tables of a vibration block as parameters: ACC_, VEL_ and DSP_ rows of
  // each axis, suffixed _X, _Y, _Z for three axes, _X, _Y for two, nothing for one.
  void parsing_TimeSignalData(const vibration::AxisStatistics* table, int axes);
  // A vibration module's temperature row: the first value of its temperature piece under
  // `name` when an active display of it is shown at this place, or the sensor failure where
  // `failed` says so. Always gives a result.
  bool temperatureRow(const std::string& name, const std::function<bool(double)>& failed);
  // The bearing and stator temperatures of a type 1 or 9 module's row of kind 7: the first
  // eight values of its temperature piece in tenths of a degree, each where it is shown;
  // -32767 is the sensor failure. Always gives a result.
  bool windingAndBearingTemperatures();
  // What the two first-generation adapters share around their block: the option word with
  // the journal-bearing bit, the log lines, the block's call (`block` gets the word, the
  // bearing and the outputs) guarded against exceptions, and the parameters and result.
  bool runFirstGeneration(DataBearing* bearing, int Lv, int Lm,
                          const std::function<void(unsigned, const vibration::BearingGeometry&,
                                                   vibration::FirstGenerationOutput&)>& block);
  // The rates of a vibration row: fv and FS from the vibration pieces' own settings ("fd",
  // "FS"), fm from the magnetic pieces' ("fd"), each still 0 from the module type's defaults
  // ("fd" of "vibro" and of "magnet", "FS") where the last default that applies counts.
  void vibrationRates(double& fv, double& fm, double& FS) const;
  // The module type's default `name` that applies to this row (the last one counts), or `none`.
  double moduleDefault(const std::string& name, double none = 0.0) const;
  // The channel gain g_del of the axis named by `letter` whose piece is `piece`: the piece's own
  // setting, else the row's g_del_<letter>, else the module type's; 1 where none is given.
  double channelGain(const raw* piece, char letter) const;
  // The bearing or oil-whirl lines, the harmonics AFRM_n and the imbalance of `axes` axes.
  void storeRotorLines(const double bearing[5], const double harmonics[][3],
                       const double imbalance[], int axes, bool journal);
  // The result of a vibration row from the block's two status words: a disagreement of the
  // speeds alone is no failed calculation.
  bool vibrationResult(unsigned status_1, unsigned status_2);
  // Whether the velocities `names` are all there and one of them is above what a machine can
  // shake (a module fault, not a measurement).
  bool implausibleVelocity(const std::vector<std::string>& names);
  // What the second-generation adapters share around their block: the option word, the
  // thresholds of the display named `threshold_name` at this place, the block's call guarded
  // against exceptions, the parameters, the defect list, and the result; with
  // `velocity_names`, the test of implausible velocities.
  bool runSecondGeneration(
      DataBearing* bearing, vibration::SecondGenerationInput& in, int axes, const char* block_name,
      void (*block)(vibration::SecondGenerationInput&, vibration::SecondGenerationOutput&),
      const char* threshold_name, const std::vector<std::string>& velocity_names);
  // The one vibration piece of a single-channel module that concerns the current point.
  const raw* singlePiece() const;
  // The sample rate of the module's type ("fd"); false, logged, when the type names none.
  bool typeRate(double& fd);
  // The first `axes` axis pieces of the row into `in`, with each axis's channel gain when the
  // sensor needs one. False, logged, when `whole` is set and the pieces differ in length.
  bool axisPieces(int axes, bool whole, bool gains, vibration::SecondGenerationInput& in);
  // The one piece of a single-channel module into `in`, with its gain when the sensor needs one.
  void singleAxis(bool gain, vibration::SecondGenerationInput& in);
  // The first active visualization named `name` at the result's channel and control point,
  // or null: a value nobody is shown is not judged.
  const visualization* shownHere(const std::string& name, const calc_result& result) const;
  // Whether the multichannel module of type 6 has a piece for the current point.
  bool rawMatchesPoint() const;
  // The recommendation passed with a message of type_message: the first of `candidates` that
  // RECOMMENDATION has enabled for that type, or 0 when none is.
  int activeRecommendation(const std::vector<int>& candidates, int type_message) const;
};
