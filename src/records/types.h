// The plain records that carry a measurement from the database through the pipeline and back.
//
// Every record is a value type: public fields, default construction and copy, nothing else.
// A record read from the database mirrors one SELECT column by column. A float or double
// without a value is NaN; ids of 0 mean "no such thing" and become NULL in statements.
#pragma once

#include <limits>
#include <map>
#include <string>
#include <vector>

// One name and value pair of a row's PARAM_SETTINGS text.
struct param_setting {
  std::string name;         // the object's name_param
  double value = 0.0;       // the object's value; the text null gives 0.0
  std::string sub_1_packet; // the object's sub_1_packet
};

// One row of PARAM_INFO: one measurement of one sensor module.
struct param_info {
  int id = 0;                          // ID; the main loop walks these in rising order
  std::string receipt_date;            // RECEIPT_DATE as the database prints it
  long source = 0;                     // SOURCE, the sensor module's address
  int type_mod = 0;                    // TYPE_MOD, the module type; selects the computation
  int type_param = 0;                  // TYPE_PARAM; 0 is a telemetry-only row
  std::string tu_error;                // TU_ERROR, the telemetry block of the row
  std::string param_settings;          // PARAM_SETTINGS, JSON text
  std::vector<param_setting> settings; // param_settings parsed, when the text is not empty
  std::string module_config;           // MODULE_CONFIG, JSON text
  int kind = 0;                        // KIND; 1 shifts the status of results by 2
};

// One row of MODULE_PARAM: a module type's default for one setting.
struct module_param {
  std::string name;
  float value = 0.0f;
  int type_module = 0;
  int type_param = 0;
  int module_revision = 0;
  int type_settings = 0;
  std::string sub_1_packet;
};

// One row of fu_raw, a piece of a measurement, with what was decoded from it.
struct raw {
  int param_type_id = 0;   // how data is laid out
  int c_type = 0;          // width and encoding of one value
  std::string sub_channel; // a channel letter or name
  std::string data;        // two prefix characters, then hex digits, least significant byte
                           // first; for param_type_id 15 decoding puts the parameter's name here
  std::string settings;    // JSON text
  std::map<std::string, double> settings_values; // settings parsed
  std::vector<double> values;                    // plain values decoded from data
  std::map<std::string, double> timed_values;    // timestamp text to value, decoded from data
};

// One row of CHANNEL left-joined to CHANNEL_CONTOL_POINT; a channel bound to two control
// points gives two records.
struct channel {
  int id = 0;               // CHANNEL.ID
  int control_point_id = 0; // 0 when the channel has no binding
  std::string raw_param;    // the sub-channels this channel takes; empty for the whole module
  std::string axis_order;   // up to six letters
  bool active = true;       // CHANNEL_CONTOL_POINT.ACTIVE; the store writes false for NULL
};

// A monitored point of a machine, built from the channels.
struct control_point {
  int id = 0;
  std::vector<int> channel_ids; // the first one is the channel of every result of the point
  int motor_id = 0;             // row of MOTOR
  std::vector<int> bearing_ids; // rows of BEARING; only the first is used
  // Carried and copied for symmetry with the stored control point; nothing reads them.
  int reserved_status = 0;
  float reserved_coefficient = 0.0f;
  std::string reserved_text;
};

// One row of VISUALIZATION joined to observed_param: a parameter of a channel and control
// point, with its thresholds and latest values. The boolean columns are held as 0 or 1.
struct visualization {
  int id = 0;
  long source = 0;    // the module, from the query's argument, not from a column
  int type_param = 0; // 1, 2 and 3 are the classes the loop asks for; 2 is telemetry
  int channel_id = 0;
  int control_point_id = 0;
  std::string name_param; // the parameter's name, such as TEMP or SPEED
  float green = 0.0f;
  float yellow = 0.0f;
  float orange = 0.0f;
  float kz = 0.0f;
  int active = 0; // NULL gives 0
  int middle = 0; // a median is wanted
  int trend = 0;  // a trend is wanted
  double latest_middle_value = 0.0;
  double latest_raw_value = 0.0;
  std::string value_at;  // time of the latest value
  int rul_active = 0;    // NULL leaves the default
  int type_corridor = 1; // op.TYPE_CORRIDOR
  int corridor_zero = 0;
  int corridor_active = 0;      // NULL gives 0
  std::string message_settings; // JSON text
  std::string rul_data;
};

// One parameter of a calc_result as it is written.
struct result_param {
  std::string name;
  float value = std::numeric_limits<float>::quiet_NaN();
  float middle = std::numeric_limits<float>::quiet_NaN(); // running median
  float trend = std::numeric_limits<float>::quiet_NaN();
  float monotone = std::numeric_limits<float>::quiet_NaN();
  int visualization_id = 0; // the visualization the value belongs to
  std::string rul;          // remaining-useful-life text
};

// What a computation yields for one channel and control point at one time.
struct calc_result {
  int param_info_id = 0;
  std::string receipt_date; // the form "yyyy-mm-dd hh24:mi:ss.ff6" understands
  long source = 0;
  int channel_id = 0;
  int control_point_id = 0; // or 0
  int status_calc = 0;      // 0 or 2 good, 1 or 3 failed; 2 and 3 when param_info.kind is 1
  int status_vector = 0;    // bit set; 0x20000000 is a sensor value out of range
  std::map<std::string, float> params;     // name to value, NaN where there is no value
  std::vector<result_param> result_params; // params as written
  bool has_raw_data = true; // false for telemetry modules, whose rows carry no signal
};

// One row of gateway joined to observed_node and organization_object.
struct gateway {
  int id = 0;
  int node_id = 0;
  std::string sync_time;
  std::string organization_alias;
  std::string utc_value;
  int connection_status_control = 0;
  int connection_status = 0;
};

// One row of MODULE for the connectivity watch. The store always sets the first four fields;
// they start at 0 so that a record never holds an indeterminate value.
struct module_data {
  int id = 0;
  long source = 0;
  int type_module = 0;
  int gateway_id = 0;
  int broadcasting_period = 0;
  std::string utc_value;
  std::string organization_alias;
  int connection_status = 0;
  bool data_in_utc_0 = false;
};

// One row for the scratch table result_temp; value is written as NULL when it is not a number.
struct result_temp {
  int v_id = 0; // the visualization
  std::string receipt_date;
  double value = 0.0;
};
