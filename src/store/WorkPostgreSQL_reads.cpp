// The reference reads: plant description, measurements, jobs and result histories, each one
// statement in its own committed transaction, walked after the commit.
#include "store/WorkPostgreSQL.h"

#include <exception>
#include <sstream>
#include <stdexcept>
#include <string>

#include <pqxx/pqxx>

namespace {

// Offsets are stored behind a three-character prefix such as "UTC+3:00". A value too short
// to carry one holds no offset at all.
std::string withoutPrefix(const pqxx::field& field) {
  std::string value = field.c_str();
  return value.size() > 3 ? value.substr(3) : std::string();
}

// A boolean column held as 0 or 1 in the records; `null_value` stands for a NULL.
int flag(const pqxx::field& field, int null_value) {
  if (field.is_null()) {
    return null_value;
  }
  return field.as<bool>() ? 1 : 0;
}

} // namespace

void WorkPostgreSQL::readParamInfo(long source, std::string from, std::string to,
                                   std::vector<param_info>& infos) {
  std::string filter;
  if (source != 0) {
    filter = "SOURCE=" + numberText(source) + " AND ";
  }
  const pqxx::result rows =
      execute("SELECT ID, SOURCE, TYPE_MOD, TYPE_PARAM, RECEIPT_DATE, TU_ERROR, PARAM_SETTINGS, "
              "MODULE_CONFIG, KIND FROM PARAM_INFO WHERE " +
              filter + "type_param<>0 AND RECEIPT_DATE>" + sql::quoted(from) +
              " AND RECEIPT_DATE<" + sql::quoted(to) + " ORDER BY RECEIPT_DATE");
  std::stringstream stream;
  for (const auto& row : rows) {
    param_info info;
    readField(stream, row[0], info.id);
    readParamInfoColumns(stream, row, 1, info);
    infos.push_back(info);
  }
}

void WorkPostgreSQL::readMotor(int id, int& power, int& speed, int& i, int& u, int& p2,
                               int& class_vibro) {
  // A motor's rating is typed in by hand; a bad entry must not stop the measurement, which
  // goes on with what could be read.
  try {
    const pqxx::result rows =
        execute("SELECT POWER, SPEED, I, U, P2, CLASS_VIBRO FROM MOTOR WHERE ID=" + numberText(id));
    for (const auto& row : rows) {
      int* targets[] = {&power, &speed, &i, &u, &p2, &class_vibro};
      for (int column = 0; column < 6; ++column) {
        const std::string value = textField(row[column]);
        if (!value.empty()) {
          *targets[column] = std::stoi(value, nullptr, 10);
        }
      }
    }
  } catch (...) {
    log->print("Invalid data in the table MOTOR\n");
  }
}

void WorkPostgreSQL::readBearing(int id, double& ball_diameter, int& count_balls, int& type_bearing,
                                 double& inner_diameter, double& external_diameter, double& angle) {
  // As for motors: a bearing's geometry is typed in by hand and must not stop a measurement.
  try {
    const pqxx::result rows =
        execute("SELECT BALL_DIAMETER, COUNT_BALLS, TYPE_BEARING, INNER_DIAMETER, "
                "EXTERNAL_DIAMETER, ANGLE FROM BEARING WHERE ID=" +
                numberText(id));
    std::stringstream stream;
    for (const auto& row : rows) {
      readField(stream, row[0], ball_diameter);
      readField(stream, row[1], count_balls);
      readField(stream, row[2], type_bearing);
      readField(stream, row[3], inner_diameter);
      readField(stream, row[4], external_diameter);
      readField(stream, row[5], angle);
    }
  } catch (...) {
    log->print("Invalid data in the table BEARING\n");
  }
}

void WorkPostgreSQL::readModule(long source, unsigned int& config, int& type_module,
                                int& gateway_id, int& revision, int& broadcasting_period,
                                bool& multichannel, int& aggregate_id, std::string& utc_value,
                                std::string& organization_alias, int& id) {
  std::string statement = "SELECT TYPE_MODULE, BROADCASTING_PERIOD, GATEWAY_ID, CONFIG, "
                          "MULTICHANNEL, REVISION, ID FROM MODULE WHERE SOURCE=" +
                          numberText(source);
  try {
    // An unknown module gets the configuration word of "no configuration", which the
    // module check then rejects.
    std::string config_text = "0x80000000";
    std::stringstream stream;
    for (const auto& row : execute(statement)) {
      readField(stream, row[0], type_module);
      readField(stream, row[1], broadcasting_period);
      readField(stream, row[2], gateway_id);
      config_text = textField(row[3]);
      if (!row[4].is_null()) {
        multichannel = row[4].as<bool>();
      }
      readField(stream, row[5], revision);
      readField(stream, row[6], id);
    }
    // The word is stored behind a "0x" prefix; a text no longer than the prefix carries no
    // word, and the caller keeps the one it held.
    if (config_text.size() > 2) {
      config = static_cast<unsigned int>(std::stoul(config_text.substr(2), nullptr, 16));
    }

    statement = "SELECT cp.aggregate_id, oo.utc_value, oo.alias_name FROM module LEFT JOIN "
                "channel ch on module.source = ch.source JOIN channel_contol_point ccp "
                "on(ch.id = ccp.channel_id and active = true) LEFT JOIN control_point cp on "
                "ccp.control_point_id = cp.id LEFT JOIN aggregate a on cp.aggregate_id = a.id "
                "LEFT JOIN observed_node o on a.node_id = o.id LEFT JOIN organization_object "
                "oo on o.organization_alias = oo.alias_name WHERE module.source=" +
                numberText(source);
    for (const auto& row : execute(statement)) {
      readField(stream, row[0], aggregate_id);
      utc_value = withoutPrefix(row[1]);
      organization_alias = textField(row[2]);
    }
  } catch (const std::invalid_argument&) {
    log->print("Invalid argument 'config' in the table MODULE\n");
  } catch (const std::exception& error) {
    log->print(error.what());
    log->print("Exception on statement:[" + statement + "]\n");
  } catch (...) {
    log->print("Unknown error convert 'config' in the table MODULE\n");
  }
}

void WorkPostgreSQL::readModule(std::vector<module_data>& modules) {
  const pqxx::result rows = execute(
      "SELECT SOURCE, BROADCASTING_PERIOD, GATEWAY_ID, ORGANIZATION_ALIAS, UTC_VALUE, "
      "TYPE_MODULE, MODULE.CONNECTION_STATUS, MODULE.ID, DATA_IN_UTC_0 FROM MODULE LEFT JOIN "
      "gateway g on module.gateway_id = g.id LEFT JOIN observed_node o on g.node_id = o.id "
      "LEFT JOIN organization_object oo on o.organization_alias = oo.alias_name");
  // The connectivity watch rebuilds its whole list from this read.
  modules.clear();
  std::stringstream stream;
  for (const auto& row : rows) {
    modules.push_back(readModuleData(stream, row, true));
  }
}

module_data WorkPostgreSQL::readModuleData(std::stringstream& stream, const pqxx::row& row,
                                           bool with_gateway) {
  module_data module;
  int column = 0;
  readField(stream, row[column++], module.source);
  readField(stream, row[column++], module.broadcasting_period);
  if (with_gateway) {
    readField(stream, row[column++], module.gateway_id);
  }
  module.organization_alias = textField(row[column++]);
  module.utc_value = withoutPrefix(row[column++]);
  readField(stream, row[column++], module.type_module);
  readField(stream, row[column++], module.connection_status);
  readField(stream, row[column++], module.id);
  // A module that says nothing about its clock is taken to send UTC.
  module.data_in_utc_0 = row[column].is_null() || row[column].as<bool>();
  return module;
}

void WorkPostgreSQL::getModulesGateway(int gateway_id, std::vector<module_data>& modules) {
  const pqxx::result rows =
      execute("SELECT SOURCE, BROADCASTING_PERIOD, ORGANIZATION_ALIAS, UTC_VALUE, TYPE_MODULE, "
              "MODULE.CONNECTION_STATUS, MODULE.ID, DATA_IN_UTC_0 FROM MODULE JOIN gateway g on "
              "module.gateway_id = g.id JOIN observed_node o on g.node_id = o.id JOIN "
              "organization_object oo on o.organization_alias = oo.alias_name WHERE GATEWAY_ID = " +
              numberText(gateway_id) + " AND BROADCASTING_PERIOD IS NOT NULL");
  modules.clear();
  std::stringstream stream;
  for (const auto& row : rows) {
    // The records keep the gateway at its default: the caller knows which one it asked for.
    modules.push_back(readModuleData(stream, row, false));
  }
}

void WorkPostgreSQL::getGateway(int control, std::vector<gateway>& gateways) {
  const pqxx::result rows = execute(
      "SELECT gateway.id, gateway.node_id, gateway.sync_time, observed_node.organization_alias, "
      "organization_object.utc_value, gateway.connection_status_control, "
      "gateway.connection_status FROM gateway INNER JOIN observed_node ON gateway.node_id = "
      "observed_node.id INNER JOIN organization_object ON organization_object.alias_name = "
      "observed_node.organization_alias WHERE connection_status_control = " +
      numberText(control));
  std::stringstream stream;
  for (const auto& row : rows) {
    gateway item;
    readField(stream, row[0], item.id);
    readField(stream, row[1], item.node_id);
    item.sync_time = textField(row[2]);
    item.organization_alias = textField(row[3]);
    item.utc_value = withoutPrefix(row[4]);
    readField(stream, row[5], item.connection_status_control);
    readField(stream, row[6], item.connection_status);
    gateways.push_back(item);
  }
}

void WorkPostgreSQL::getOrganization(std::map<std::string, int>& organizations) {
  const pqxx::result rows =
      execute("SELECT ALIAS_NAME, CONNECTION_STATUS FROM ORGANIZATION_OBJECT");
  std::stringstream stream;
  for (const auto& row : rows) {
    readField(stream, row[1], organizations[textField(row[0])]);
  }
}

void WorkPostgreSQL::readChannel(long source, std::vector<channel>& channels) {
  const pqxx::result rows = execute(
      "SELECT CHANNEL.ID, CHANNEL_CONTOL_POINT.CONTROL_POINT_ID, RAW_PARAM, AXIS_ORDER, "
      "CHANNEL_CONTOL_POINT.ACTIVE FROM CHANNEL LEFT JOIN CHANNEL_CONTOL_POINT ON CHANNEL.ID = "
      "CHANNEL_CONTOL_POINT.CHANNEL_ID WHERE SOURCE = " +
      numberText(source));
  std::stringstream stream;
  for (const auto& row : rows) {
    channel item;
    readField(stream, row[0], item.id);
    readField(stream, row[1], item.control_point_id);
    item.raw_param = textField(row[2]);
    item.axis_order = textField(row[3]);
    // A channel bound to no control point takes part in no point's assessment.
    item.active = !row[4].is_null() && row[4].as<bool>();
    channels.push_back(item);
  }
}

void WorkPostgreSQL::readControlPoint(int aggregate_id, std::map<int, float>& points) {
  const pqxx::result rows =
      execute("SELECT id, significance_coefficient FROM CONTROL_POINT WHERE aggregate_id = " +
              numberText(aggregate_id));
  std::stringstream stream;
  for (const auto& row : rows) {
    int id = 0;
    float coefficient = 0.0f;
    readField(stream, row[0], id);
    readField(stream, row[1], coefficient);
    points.insert({id, coefficient});
  }
}

void WorkPostgreSQL::readStatusElement(int control_point_id, float& status) {
  const pqxx::result rows =
      execute("SELECT status FROM control_point WHERE id = " + numberText(control_point_id));
  std::stringstream stream;
  for (const auto& row : rows) {
    readField(stream, row[0], status);
  }
}

void WorkPostgreSQL::readModuleParam(int type_module, int revision,
                                     std::vector<module_param>& params) {
  const pqxx::result rows =
      execute("SELECT name, value, type_module, type_param, module_revision, type_settings, "
              "sub_1_packet FROM MODULE_PARAM WHERE TYPE_MODULE = " +
              numberText(type_module) + " AND MODULE_REVISION = " + numberText(revision));
  std::stringstream stream;
  for (const auto& row : rows) {
    module_param param;
    param.name = textField(row[0]);
    readField(stream, row[1], param.value);
    readField(stream, row[2], param.type_module);
    readField(stream, row[3], param.type_param);
    readField(stream, row[4], param.module_revision);
    readField(stream, row[5], param.type_settings);
    param.sub_1_packet = textField(row[6]);
    params.push_back(param);
  }
}

void WorkPostgreSQL::readAggregate(int control_point_id, int& id, int& node_id,
                                   int& type_aggregate_id, int& type_equipment_id, int& status_type,
                                   int& rul_days, std::string& trend_start,
                                   std::string& aggregate_name, std::string& organization_alias) {
  const pqxx::result rows =
      execute("SELECT aggregate.id, node_id, type_aggregate_id, type_equipment_id, status_type, "
              "rul_days, trend_start, aggregate.name, organization_alias FROM aggregate JOIN "
              "observed_node on2 ON aggregate.node_id = on2.id WHERE aggregate.id = (SELECT "
              "aggregate_id FROM control_point WHERE id = " +
              numberText(control_point_id) + ")");
  std::stringstream stream;
  for (const auto& row : rows) {
    readField(stream, row[0], id);
    readField(stream, row[1], node_id);
    readField(stream, row[2], type_aggregate_id);
    readField(stream, row[3], type_equipment_id);
    readField(stream, row[4], status_type);
    readField(stream, row[5], rul_days);
    trend_start = textField(row[6]);
    aggregate_name = textField(row[7]);
    organization_alias = textField(row[8]);
  }
}

void WorkPostgreSQL::readVisualization(long source, std::vector<visualization>& items) {
  const pqxx::result rows = execute(
      "SELECT VISUALIZATION.ID, VISUALIZATION.NAME_PARAM, VISUALIZATION.GREEN, "
      "VISUALIZATION.YELLOW, VISUALIZATION.ORANGE, VISUALIZATION.KZ, VISUALIZATION.ACTIVE, "
      "VISUALIZATION.MIDDLE, VISUALIZATION.TREND, CHANNEL_ID, CONTROL_POINT_ID, "
      "LATEST_MIDDLE_VALUE, LATEST_RAW_VALUE, RUL_ACTIVE, op.TYPE_CORRIDOR, "
      "VISUALIZATION.CORRIDOR_ZERO, VISUALIZATION.CORRIDOR_ACTIVE, VISUALIZATION.TYPE_PARAM, "
      "VISUALIZATION.MESSAGE_SETTINGS, VISUALIZATION.RUL_DATA, VISUALIZATION.VALUE_AT FROM "
      "VISUALIZATION JOIN observed_param op on visualization.name_param = op.name WHERE "
      "SOURCE = " +
      numberText(source));
  for (const auto& row : rows) {
    // A fresh stream per row: text left over in one row cannot reach the next.
    std::stringstream stream;
    visualization item;
    item.source = source;
    readField(stream, row[0], item.id);
    item.name_param = textField(row[1]);
    readField(stream, row[2], item.green);
    readField(stream, row[3], item.yellow);
    readField(stream, row[4], item.orange);
    readField(stream, row[5], item.kz);
    item.active = flag(row[6], 0);
    item.middle = flag(row[7], 0);
    item.trend = flag(row[8], 0);
    readField(stream, row[9], item.channel_id);
    readField(stream, row[10], item.control_point_id);
    readField(stream, row[11], item.latest_middle_value);
    readField(stream, row[12], item.latest_raw_value);
    item.rul_active = flag(row[13], item.rul_active);
    readField(stream, row[14], item.type_corridor);
    readField(stream, row[15], item.corridor_zero);
    item.corridor_active = flag(row[16], 0);
    readField(stream, row[17], item.type_param);
    item.message_settings = textField(row[18]);
    item.rul_data = textField(row[19]);
    item.value_at = textField(row[20]);
    items.push_back(item);
  }
}

void WorkPostgreSQL::readRaw(int param_info_id, std::vector<raw>& pieces) {
  const pqxx::result rows =
      execute("SELECT param_type_id, c_type, sub_channel, data, settings FROM fu_raw WHERE "
              "param_info_id=" +
              numberText(param_info_id));
  std::stringstream stream;
  for (const auto& row : rows) {
    raw piece;
    readField(stream, row[0], piece.param_type_id);
    readField(stream, row[1], piece.c_type);
    piece.sub_channel = textField(row[2]);
    piece.data = textField(row[3]);
    piece.settings = textField(row[4]);
    pieces.push_back(piece);
  }
}

void WorkPostgreSQL::readRecalculation(int& id, long& source, std::string& time_start,
                                       std::string& time_stop, std::string& time_calculation) {
  const pqxx::result rows =
      execute("SELECT id, source, time_start, time_stop, time_calculation FROM recalculation "
              "WHERE state=1 AND control=1 ORDER BY created_at ASC LIMIT 1");
  std::stringstream stream;
  for (const auto& row : rows) {
    readField(stream, row[0], id);
    // A job without a module covers all modules.
    if (textField(row[1]).empty()) {
      source = 0;
    } else {
      readField(stream, row[1], source);
    }
    time_start = textField(row[2]);
    time_stop = textField(row[3]);
    time_calculation = textField(row[4]);
  }
}

void WorkPostgreSQL::getStateRecalculation(int id, int& state, int& control) {
  const pqxx::result rows =
      execute("SELECT control, state FROM recalculation WHERE id=" + numberText(id));
  std::stringstream stream;
  for (const auto& row : rows) {
    readField(stream, row[0], control);
    readField(stream, row[1], state);
  }
}

void WorkPostgreSQL::readCalculation(std::vector<int>& ids, int& smallest_last_calculated) {
  const pqxx::result rows = execute("SELECT id, last_calculated FROM VEK_CALCULATION");
  std::stringstream stream;
  // The running minimum starts from 0 and so never rises above it; callers do not use it.
  int smallest = 0;
  for (const auto& row : rows) {
    int id = 0;
    int last_calculated = 0;
    readField(stream, row[0], id);
    readField(stream, row[1], last_calculated);
    ids.push_back(id);
    if (last_calculated < smallest) {
      smallest = last_calculated;
    }
  }
  smallest_last_calculated = smallest;
}

void WorkPostgreSQL::readVekCalculation(int id, std::string& settings) {
  const pqxx::result rows =
      execute("SELECT settings FROM VEK_CALCULATION  WHERE ID = " + numberText(id));
  for (const auto& row : rows) {
    settings = textField(row[0]);
  }
}

void WorkPostgreSQL::getArrayResult(std::string clause, std::string column,
                                    std::vector<std::string>& dates, std::vector<long>& ids,
                                    std::vector<double>& values) {
  const pqxx::result rows =
      execute("SELECT ID, RECEIPT_DATE, " + column + " FROM RESULT_BASE " + clause);
  values.clear();
  std::stringstream stream;
  for (const auto& row : rows) {
    long id = 0;
    double value = 0.0;
    readField(stream, row[0], id);
    readField(stream, row[2], value);
    ids.push_back(id);
    dates.push_back(textField(row[1]));
    values.push_back(value);
  }
}

void WorkPostgreSQL::getArrayResultId(std::string clause, std::string column,
                                      std::vector<int>& param_info_ids,
                                      std::vector<std::string>& dates, std::vector<long>& ids,
                                      std::vector<double>& values) {
  const pqxx::result rows =
      execute("SELECT ID, PARAM_INFO_ID, RECEIPT_DATE, " + column + " FROM RESULT_BASE " + clause);
  values.clear();
  std::stringstream stream;
  for (const auto& row : rows) {
    // Rows whose value is not yet computed take no place in the series.
    if (row[3].is_null()) {
      continue;
    }
    long id = 0;
    int param_info_id = 0;
    double value = 0.0;
    readField(stream, row[0], id);
    readField(stream, row[1], param_info_id);
    readField(stream, row[3], value);
    ids.push_back(id);
    param_info_ids.push_back(param_info_id);
    dates.push_back(textField(row[2]));
    values.push_back(value);
  }
}

void WorkPostgreSQL::getArrayResultFRM(std::string clause, std::vector<int>& param_info_ids,
                                       std::vector<double>& values) {
  const pqxx::result rows = execute("SELECT PARAM_INFO_ID, VALUE FROM RESULT_BASE " + clause);
  values.clear();
  std::stringstream stream;
  for (const auto& row : rows) {
    int param_info_id = 0;
    double value = 0.0;
    readField(stream, row[0], param_info_id);
    readField(stream, row[1], value);
    param_info_ids.push_back(param_info_id);
    values.push_back(value);
  }
}

void WorkPostgreSQL::readResult(std::string clause, std::vector<int>& visualization_ids,
                                std::vector<int>& param_info_ids, std::vector<std::string>& dates,
                                std::vector<int>& ids, std::vector<double>& values) {
  const pqxx::result rows = execute(
      "SELECT ID, PARAM_INFO_ID, RECEIPT_DATE, VALUE, VISUALIZATION_ID FROM RESULT_BASE " + clause);
  values.clear();
  std::stringstream stream;
  for (const auto& row : rows) {
    int id = 0;
    int param_info_id = 0;
    double value = 0.0;
    int visualization_id = 0;
    readField(stream, row[0], id);
    readField(stream, row[1], param_info_id);
    readField(stream, row[3], value);
    readField(stream, row[4], visualization_id);
    ids.push_back(id);
    param_info_ids.push_back(param_info_id);
    dates.push_back(textField(row[2]));
    values.push_back(value);
    visualization_ids.push_back(visualization_id);
  }
}
