// The reference reads of WorkPostgreSQL against real rows of the throwaway PostgreSQL: what
// each read makes of NULLs, which outputs it clears and which it appends to, and the reads
// that swallow their failures.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "OperationLogTest.h"

namespace {

class WorkPostgreSQLReadMeasurements : public OperationLogTest {};

TEST_F(WorkPostgreSQLReadMeasurements, RangeTakesStrictBoundsWithoutTelemetryInTimeOrder) {
  exec("INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error, "
       "param_settings, module_config, kind) VALUES "
       "(1, 42, 10, 3, '2023-07-04 10:00:00', 'T', '[]', '{}', 1), "
       "(2, 42, 10, 0, '2023-07-04 11:00:00', NULL, NULL, NULL, NULL), " // telemetry
       "(3, 42, 10, 3, '2023-07-04 12:00:00', NULL, NULL, NULL, NULL), " // on the upper bound
       "(4, 42, 10, 2, '2023-07-04 10:30:00', NULL, NULL, NULL, NULL), "
       "(5, 43, 11, 1, '2023-07-04 10:45:00', NULL, NULL, NULL, NULL), " // another module
       "(6, 42, 10, 3, '2023-07-04 09:00:00', NULL, NULL, NULL, NULL), " // on the lower bound
       "(7, 42, 10, 1, '2023-07-04 09:30:00', NULL, NULL, NULL, NULL)");

  std::vector<param_info> rows(1); // what the caller had stays in front
  store().readParamInfo(42, "2023-07-04 09:00:00", "2023-07-04 12:00:00", rows);
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].id, 0);
  EXPECT_EQ(rows[1].id, 7);
  EXPECT_EQ(rows[2].id, 1);
  EXPECT_EQ(rows[3].id, 4);
  EXPECT_EQ(rows[2].source, 42);
  EXPECT_EQ(rows[2].type_mod, 10);
  EXPECT_EQ(rows[2].type_param, 3);
  EXPECT_EQ(rows[2].receipt_date, "2023-07-04 10:00:00");
  EXPECT_EQ(rows[2].tu_error, "T");
  EXPECT_EQ(rows[2].param_settings, "[]");
  EXPECT_EQ(rows[2].module_config, "{}");
  EXPECT_EQ(rows[2].kind, 1);
  EXPECT_EQ(rows[3].kind, 0) << "a NULL leaves the record's default";
  EXPECT_EQ(rows[3].tu_error, "");

  rows.clear();
  store().readParamInfo(0, "2023-07-04 09:00:00", "2023-07-04 12:00:00", rows);
  ASSERT_EQ(rows.size(), 4u) << "source 0 takes every module";
  EXPECT_EQ(rows[3].id, 5);
}

TEST_F(WorkPostgreSQLReadMeasurements, RawPiecesAreAppendedWithNullNumbersAtDefault) {
  exec("INSERT INTO fu_raw (param_info_id, param_type_id, c_type, sub_channel, data, settings) "
       "VALUES (9, 1, 2, 'X', '0x0A0B', '{\"k\":1}'), (9, NULL, 3, NULL, NULL, NULL), "
       "(10, 5, 5, 'Y', '0x', '')");
  std::vector<raw> pieces(1);
  store().readRaw(9, pieces);
  ASSERT_EQ(pieces.size(), 3u);
  // The server gives no order without ORDER BY; find the pieces by their c_type.
  const raw& full = pieces[1].c_type == 2 ? pieces[1] : pieces[2];
  const raw& sparse = pieces[1].c_type == 2 ? pieces[2] : pieces[1];
  EXPECT_EQ(full.param_type_id, 1);
  EXPECT_EQ(full.sub_channel, "X");
  EXPECT_EQ(full.data, "0x0A0B");
  EXPECT_EQ(full.settings, "{\"k\":1}");
  EXPECT_EQ(sparse.param_type_id, 0);
  EXPECT_EQ(sparse.c_type, 3);
  EXPECT_EQ(sparse.data, "");
}

class WorkPostgreSQLReadEquipment : public OperationLogTest {};

TEST_F(WorkPostgreSQLReadEquipment, MotorKeepsCallerValuesForEmptyFieldsAndStopsAtBadOne) {
  exec("INSERT INTO motor (id, power, speed, i, u, p2, class_vibro) VALUES "
       "(1, '55', NULL, '12', '', '3', '2'), (2, '75', 'abc', '9', '380', '4', '1')");
  int power = -1, speed = -1, i = -1, u = -1, p2 = -1, class_vibro = -1;
  store().readMotor(1, power, speed, i, u, p2, class_vibro);
  EXPECT_EQ(power, 55);
  EXPECT_EQ(speed, -1) << "NULL leaves the caller's default";
  EXPECT_EQ(i, 12);
  EXPECT_EQ(u, -1) << "an empty text leaves the caller's default";
  EXPECT_EQ(p2, 3);
  EXPECT_EQ(class_vibro, 2);
  EXPECT_EQ(logText(), "");

  power = speed = i = u = p2 = class_vibro = -1;
  store().readMotor(2, power, speed, i, u, p2, class_vibro);
  EXPECT_EQ(power, 75) << "what was read before the bad field stays";
  EXPECT_EQ(speed, -1);
  EXPECT_EQ(i, -1) << "the fields after the bad one are not read";
  EXPECT_EQ(class_vibro, -1);
  EXPECT_EQ(logText(), "Invalid data in the table MOTOR\n");

  // An unknown motor changes nothing and is no failure.
  store().readMotor(3, power, speed, i, u, p2, class_vibro);
  EXPECT_EQ(power, 75);
  EXPECT_EQ(logText(), "Invalid data in the table MOTOR\n");
}

TEST_F(WorkPostgreSQLReadEquipment, BearingReadsGeometryAndSwallowsALostSession) {
  exec("INSERT INTO bearing (id, ball_diameter, count_balls, type_bearing, inner_diameter, "
       "external_diameter, angle) VALUES (1, 7.9375, 9, 2, 25.0, 52.0, NULL)");
  double ball = 0.0, inner = 0.0, external = 0.0, angle = -1.0;
  int count = 0, type = 0;
  store().readBearing(1, ball, count, type, inner, external, angle);
  EXPECT_EQ(ball, 7.9375);
  EXPECT_EQ(count, 9);
  EXPECT_EQ(type, 2);
  EXPECT_EQ(inner, 25.0);
  EXPECT_EQ(external, 52.0);
  EXPECT_EQ(angle, -1.0) << "NULL leaves the caller's value";

  // The administrator ends the store's session: the read reports and returns; the loss shows
  // at the next operation instead.
  const int pid = store().getValueInt("SELECT pg_backend_pid()");
  exec("SELECT pg_terminate_backend(" + std::to_string(pid) + ", 5000)");
  ball = 1.0;
  EXPECT_NO_THROW(store().readBearing(1, ball, count, type, inner, external, angle));
  EXPECT_EQ(ball, 1.0);
  EXPECT_EQ(logText(), "Invalid data in the table BEARING\n");
}

TEST_F(WorkPostgreSQLReadEquipment, ModuleWithActiveBindingGivesMachineOffsetAndAlias) {
  exec("INSERT INTO organization_object (alias_name, utc_value) VALUES ('plant', 'UTC+3:00');"
       "INSERT INTO observed_node (id, organization_alias) VALUES (4, 'plant');"
       "INSERT INTO aggregate (id, node_id) VALUES (30, 4);"
       "INSERT INTO control_point (id, aggregate_id) VALUES (20, 30);"
       "INSERT INTO channel (id, source, raw_param, axis_order) VALUES (10, 42, '', 'XYZ');"
       "INSERT INTO channel_contol_point (channel_id, control_point_id, active) "
       "VALUES (10, 20, true);"
       "INSERT INTO module (id, source, type_module, broadcasting_period, gateway_id, config, "
       "multichannel, revision) VALUES (7, 42, 10, 15, 3, '0x1F', true, 2)");
  unsigned int config = 0;
  int type_module = 0, gateway_id = 0, revision = 0, period = 0, aggregate_id = 0, id = 0;
  bool multichannel = false;
  std::string utc_value, alias;
  store().readModule(42, config, type_module, gateway_id, revision, period, multichannel,
                     aggregate_id, utc_value, alias, id);
  EXPECT_EQ(config, 0x1Fu);
  EXPECT_EQ(type_module, 10);
  EXPECT_EQ(gateway_id, 3);
  EXPECT_EQ(revision, 2);
  EXPECT_EQ(period, 15);
  EXPECT_TRUE(multichannel);
  EXPECT_EQ(aggregate_id, 30);
  EXPECT_EQ(utc_value, "+3:00");
  EXPECT_EQ(alias, "plant");
  EXPECT_EQ(id, 7);

  // An organization without an offset: the module is still placed, with no offset.
  exec("INSERT INTO organization_object (alias_name, utc_value) VALUES ('yard', NULL);"
       "INSERT INTO observed_node (id, organization_alias) VALUES (5, 'yard');"
       "INSERT INTO aggregate (id, node_id) VALUES (31, 5);"
       "INSERT INTO control_point (id, aggregate_id) VALUES (21, 31);"
       "INSERT INTO channel (id, source) VALUES (11, 43);"
       "INSERT INTO channel_contol_point (channel_id, control_point_id, active) "
       "VALUES (11, 21, true);"
       "INSERT INTO module (id, source, config) VALUES (8, 43, '0x')");
  store().readModule(43, config, type_module, gateway_id, revision, period, multichannel,
                     aggregate_id, utc_value, alias, id);
  EXPECT_EQ(aggregate_id, 31);
  EXPECT_EQ(utc_value, "");
  EXPECT_EQ(alias, "yard");
  EXPECT_EQ(config, 0x1Fu) << "a bare prefix carries no word: the caller's stays";
  EXPECT_EQ(logText(), "");
}

TEST_F(WorkPostgreSQLReadEquipment, ModuleNullsUnknownSourceAndBadConfiguration) {
  exec("INSERT INTO channel (id, source) VALUES (11, 43);"
       "INSERT INTO channel_contol_point (channel_id, control_point_id, active) "
       "VALUES (11, 21, false);"
       "INSERT INTO module (id, source, type_module, config, multichannel) VALUES "
       "(8, 43, 11, NULL, NULL), (9, 44, 12, '0xZZ', false), (10, 45, 13, '7', NULL)");
  unsigned int config = 5;
  int type_module = 0, gateway_id = -1, revision = -1, period = -1, aggregate_id = 0, id = 0;
  bool multichannel = true;
  std::string utc_value = "old", alias = "old";

  {
    SCOPED_TRACE("NULL configuration, NULL flags, binding inactive");
    store().readModule(43, config, type_module, gateway_id, revision, period, multichannel,
                       aggregate_id, utc_value, alias, id);
    EXPECT_EQ(config, 5u) << "a NULL configuration leaves the word as it was";
    EXPECT_EQ(type_module, 11);
    EXPECT_EQ(gateway_id, -1);
    EXPECT_EQ(period, -1);
    EXPECT_TRUE(multichannel) << "a NULL flag leaves the caller's value";
    EXPECT_EQ(aggregate_id, 0) << "an inactive binding finds no machine";
    EXPECT_EQ(alias, "old");
    EXPECT_EQ(id, 8);
  }
  {
    SCOPED_TRACE("configuration no longer than its prefix");
    store().readModule(45, config, type_module, gateway_id, revision, period, multichannel,
                       aggregate_id, utc_value, alias, id);
    EXPECT_EQ(config, 5u) << "a text without a word leaves the word as it was";
    EXPECT_EQ(type_module, 13);
    EXPECT_EQ(id, 10);
  }
  {
    SCOPED_TRACE("unknown module");
    type_module = 0;
    store().readModule(99, config, type_module, gateway_id, revision, period, multichannel,
                       aggregate_id, utc_value, alias, id);
    EXPECT_EQ(config, 0x80000000u) << "the word that the module check rejects";
    EXPECT_EQ(type_module, 0);
    EXPECT_EQ(logText(), "");
  }
  {
    SCOPED_TRACE("configuration that is no hexadecimal number");
    config = 5;
    store().readModule(44, config, type_module, gateway_id, revision, period, multichannel,
                       aggregate_id, utc_value, alias, id);
    EXPECT_EQ(config, 5u);
    EXPECT_EQ(type_module, 12) << "the fields of the first statement are kept";
    EXPECT_FALSE(multichannel);
    EXPECT_EQ(logText(), "Invalid argument 'config' in the table MODULE\n");
  }
}

TEST_F(WorkPostgreSQLReadEquipment, ModuleReportsFailedStatementAndLetsTheLossShowLater) {
  exec("INSERT INTO module (id, source, type_module, config) VALUES (1, 42, 10, '0x2')");
  const int pid = store().getValueInt("SELECT pg_backend_pid()");
  exec("SELECT pg_terminate_backend(" + std::to_string(pid) + ", 5000)");
  unsigned int config = 0;
  int type_module = 0, gateway_id = 0, revision = 0, period = 0, aggregate_id = 0, id = 0;
  bool multichannel = false;
  std::string utc_value, alias;
  EXPECT_NO_THROW(store().readModule(42, config, type_module, gateway_id, revision, period,
                                     multichannel, aggregate_id, utc_value, alias, id));
  EXPECT_EQ(type_module, 0);
  const std::string text = logText();
  EXPECT_NE(text.find("Exception on statement:[SELECT TYPE_MODULE"), std::string::npos) << text;
  EXPECT_NE(text.find("WHERE SOURCE=42]\n"), std::string::npos) << text;
  EXPECT_THROW(store().getValueInt("SELECT 1"), pqxx::broken_connection);
}

TEST_F(WorkPostgreSQLReadEquipment, ModuleParametersMachineAndControlPoints) {
  exec("INSERT INTO module_param (name, value, type_module, type_param, module_revision, "
       "type_settings, sub_1_packet) VALUES ('gain', 2.5, 10, 3, 1, 4, 'A'), "
       "('offset', NULL, 10, 3, 1, NULL, NULL), ('other', 1, 10, 3, 2, 0, '');"
       "INSERT INTO observed_node (id, organization_alias) VALUES (4, 'plant');"
       "INSERT INTO aggregate (id, node_id, type_aggregate_id, type_equipment_id, status_type, "
       "rul_days, trend_start, name) VALUES (30, 4, 2, 3, 1, 90, '2023-01-02 03:04:05', 'Pump 1');"
       "INSERT INTO control_point (id, aggregate_id, significance_coefficient, status) VALUES "
       "(20, 30, 0.5, 2.5), (21, 30, NULL, NULL), (22, 31, 1, 1)");

  std::vector<module_param> params(1);
  store().readModuleParam(10, 1, params);
  ASSERT_EQ(params.size(), 3u);
  const module_param& gain = params[1].name == "gain" ? params[1] : params[2];
  const module_param& offset = params[1].name == "gain" ? params[2] : params[1];
  EXPECT_EQ(gain.value, 2.5f);
  EXPECT_EQ(gain.type_module, 10);
  EXPECT_EQ(gain.type_param, 3);
  EXPECT_EQ(gain.module_revision, 1);
  EXPECT_EQ(gain.type_settings, 4);
  EXPECT_EQ(gain.sub_1_packet, "A");
  EXPECT_EQ(offset.value, 0.0f);
  EXPECT_EQ(offset.sub_1_packet, "");

  int id = 0, node = 0, type_aggregate = 0, type_equipment = 0, status_type = 0, rul_days = 0;
  std::string trend_start, name, alias;
  store().readAggregate(21, id, node, type_aggregate, type_equipment, status_type, rul_days,
                        trend_start, name, alias);
  EXPECT_EQ(id, 30);
  EXPECT_EQ(node, 4);
  EXPECT_EQ(type_aggregate, 2);
  EXPECT_EQ(type_equipment, 3);
  EXPECT_EQ(status_type, 1);
  EXPECT_EQ(rul_days, 90);
  EXPECT_EQ(trend_start, "2023-01-02 03:04:05");
  EXPECT_EQ(name, "Pump 1");
  EXPECT_EQ(alias, "plant");

  std::map<int, float> points{{21, 7.0f}};
  store().readControlPoint(30, points);
  EXPECT_EQ(points, (std::map<int, float>{{20, 0.5f}, {21, 7.0f}}))
      << "an entry already there stays";
  points.clear();
  store().readControlPoint(30, points);
  EXPECT_EQ(points, (std::map<int, float>{{20, 0.5f}, {21, 0.0f}})) << "NULL gives 0";

  float status = -1.0f;
  store().readStatusElement(20, status);
  EXPECT_EQ(status, 2.5f);
  store().readStatusElement(21, status);
  EXPECT_EQ(status, 2.5f) << "NULL leaves the value";
  store().readStatusElement(99, status);
  EXPECT_EQ(status, 2.5f) << "no row leaves the value";
}

TEST_F(WorkPostgreSQLReadEquipment, ChannelsWithAndWithoutBinding) {
  exec("INSERT INTO channel (id, source, raw_param, axis_order) VALUES (10, 42, 'AB', 'XYZ'), "
       "(11, 42, NULL, NULL), (12, 43, '', '');"
       "INSERT INTO channel_contol_point (channel_id, control_point_id, active) VALUES "
       "(10, 20, true), (10, 21, NULL)");
  std::vector<channel> channels(1);
  store().readChannel(42, channels);
  ASSERT_EQ(channels.size(), 4u);
  std::map<int, const channel*> by_point;
  for (size_t k = 1; k < channels.size(); ++k) {
    by_point[channels[k].control_point_id] = &channels[k];
  }
  ASSERT_EQ(by_point.size(), 3u);
  EXPECT_EQ(by_point[20]->id, 10);
  EXPECT_EQ(by_point[20]->raw_param, "AB");
  EXPECT_EQ(by_point[20]->axis_order, "XYZ");
  EXPECT_TRUE(by_point[20]->active);
  EXPECT_FALSE(by_point[21]->active) << "a NULL flag is false, not the record's default";
  EXPECT_EQ(by_point[0]->id, 11) << "a channel without binding has control point 0";
  EXPECT_FALSE(by_point[0]->active);
  EXPECT_EQ(by_point[0]->raw_param, "");
}

class WorkPostgreSQLReadConnectivity : public OperationLogTest {
protected:
  void plant() {
    exec("INSERT INTO organization_object (alias_name, utc_value, connection_status) VALUES "
         "('plant', 'UTC+3:00', 1), ('yard', 'GMT-2:30', NULL), ('bare', NULL, 2);"
         "INSERT INTO observed_node (id, organization_alias) VALUES (4, 'plant'), (5, 'yard');"
         "INSERT INTO gateway (id, node_id, sync_time, connection_status_control, "
         "connection_status) VALUES (3, 4, '2023-07-04 09:05:01', 1, 2), "
         "(6, 5, NULL, 2, NULL);"
         "INSERT INTO module (id, source, type_module, broadcasting_period, gateway_id, "
         "connection_status, data_in_utc_0) VALUES "
         "(1, 42, 10, 15, 3, 1, false), (2, 43, 11, NULL, 3, NULL, NULL), "
         "(9, 44, 12, 5, NULL, 0, true)");
  }
};

TEST_F(WorkPostgreSQLReadConnectivity, AllModulesReplaceTheListWithNullsResolved) {
  plant();
  std::vector<module_data> modules(5);
  store().readModule(modules);
  ASSERT_EQ(modules.size(), 3u) << "the list is replaced, not appended to";
  std::map<long, module_data> by_source;
  for (const auto& m : modules) {
    by_source[m.source] = m;
  }
  const module_data& known = by_source.at(42);
  EXPECT_EQ(known.id, 1);
  EXPECT_EQ(known.type_module, 10);
  EXPECT_EQ(known.broadcasting_period, 15);
  EXPECT_EQ(known.gateway_id, 3);
  EXPECT_EQ(known.organization_alias, "plant");
  EXPECT_EQ(known.utc_value, "+3:00");
  EXPECT_EQ(known.connection_status, 1);
  EXPECT_FALSE(known.data_in_utc_0);

  const module_data& silent = by_source.at(43);
  EXPECT_EQ(silent.broadcasting_period, 0);
  EXPECT_EQ(silent.connection_status, 0);
  EXPECT_TRUE(silent.data_in_utc_0) << "a module that says nothing is taken to send UTC";

  const module_data& loose = by_source.at(44);
  EXPECT_EQ(loose.gateway_id, 0) << "no gateway gives 0";
  EXPECT_EQ(loose.organization_alias, "");
  EXPECT_EQ(loose.utc_value, "");
  EXPECT_TRUE(loose.data_in_utc_0);
}

TEST_F(WorkPostgreSQLReadConnectivity, GatewayModulesGatewaysAndOrganizations) {
  plant();
  std::vector<module_data> modules(2);
  store().getModulesGateway(3, modules);
  ASSERT_EQ(modules.size(), 1u) << "cleared first; only modules with a period";
  EXPECT_EQ(modules[0].source, 42);
  EXPECT_EQ(modules[0].id, 1);
  EXPECT_EQ(modules[0].broadcasting_period, 15);
  EXPECT_EQ(modules[0].gateway_id, 0) << "the gateway is not taken into the record";
  EXPECT_EQ(modules[0].utc_value, "+3:00");
  EXPECT_EQ(modules[0].organization_alias, "plant");

  std::vector<gateway> gateways(1);
  store().getGateway(2, gateways);
  ASSERT_EQ(gateways.size(), 2u) << "appended to";
  EXPECT_EQ(gateways[1].id, 6);
  EXPECT_EQ(gateways[1].node_id, 5);
  EXPECT_EQ(gateways[1].sync_time, "");
  EXPECT_EQ(gateways[1].organization_alias, "yard");
  EXPECT_EQ(gateways[1].utc_value, "-2:30");
  EXPECT_EQ(gateways[1].connection_status_control, 2);
  EXPECT_EQ(gateways[1].connection_status, 0);
  gateways.clear();
  store().getGateway(1, gateways);
  ASSERT_EQ(gateways.size(), 1u);
  EXPECT_EQ(gateways[0].sync_time, "2023-07-04 09:05:01");
  EXPECT_EQ(gateways[0].connection_status, 2);

  std::map<std::string, int> organizations{{"yard", 9}};
  store().getOrganization(organizations);
  EXPECT_EQ(organizations, (std::map<std::string, int>{{"bare", 2}, {"plant", 1}, {"yard", 9}}))
      << "a NULL status leaves what the caller held";
}

class WorkPostgreSQLReadVisualization : public OperationLogTest {};

TEST_F(WorkPostgreSQLReadVisualization, FlagsNullsAndSourceFromTheArgument) {
  exec("INSERT INTO observed_param (name, type_corridor) VALUES ('SKZ', 2), ('TEMP', NULL);"
       "INSERT INTO visualization (id, source, name_param, green, yellow, orange, kz, active, "
       "middle, trend, rul_active, corridor_active, channel_id, control_point_id, type_param, "
       "corridor_zero, latest_raw_value, latest_middle_value, message_settings, rul_data, "
       "value_at) VALUES "
       "(101, 42, 'SKZ', 1.5, 2.5, 4.5, 0.25, true, false, true, true, true, 10, 20, 1, 3, "
       "3.75, 3.5, '{\"m\":1}', NULL, '2023-07-04 09:05:01.5'), "
       "(102, 42, 'TEMP', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, "
       "2, NULL, NULL, NULL, NULL, NULL, NULL), "
       "(103, 43, 'SKZ', 1, 1, 1, 1, true, true, true, true, true, 1, 1, 1, 1, 1, 1, '', "
       "NULL, NULL)");
  std::vector<visualization> items(1);
  store().readVisualization(42, items);
  ASSERT_EQ(items.size(), 3u);
  const visualization& full = items[1].id == 101 ? items[1] : items[2];
  const visualization& bare = items[1].id == 101 ? items[2] : items[1];

  EXPECT_EQ(full.source, 42);
  EXPECT_EQ(full.name_param, "SKZ");
  EXPECT_EQ(full.green, 1.5f);
  EXPECT_EQ(full.yellow, 2.5f);
  EXPECT_EQ(full.orange, 4.5f);
  EXPECT_EQ(full.kz, 0.25f);
  EXPECT_EQ(full.active, 1);
  EXPECT_EQ(full.middle, 0);
  EXPECT_EQ(full.trend, 1);
  EXPECT_EQ(full.rul_active, 1);
  EXPECT_EQ(full.corridor_active, 1);
  EXPECT_EQ(full.channel_id, 10);
  EXPECT_EQ(full.control_point_id, 20);
  EXPECT_EQ(full.type_param, 1);
  EXPECT_EQ(full.type_corridor, 2);
  EXPECT_EQ(full.corridor_zero, 3);
  EXPECT_EQ(full.latest_raw_value, 3.75);
  EXPECT_EQ(full.latest_middle_value, 3.5);
  EXPECT_EQ(full.message_settings, "{\"m\":1}");
  EXPECT_EQ(full.rul_data, "");
  EXPECT_EQ(full.value_at, "2023-07-04 09:05:01.5");

  EXPECT_EQ(bare.source, 42);
  EXPECT_EQ(bare.type_param, 2);
  EXPECT_EQ(bare.active, 0);
  EXPECT_EQ(bare.middle, 0);
  EXPECT_EQ(bare.trend, 0);
  EXPECT_EQ(bare.rul_active, 0);
  EXPECT_EQ(bare.corridor_active, 0);
  EXPECT_EQ(bare.type_corridor, 1) << "a NULL corridor type keeps the record's default";
  EXPECT_EQ(bare.green, 0.0f);
  EXPECT_EQ(bare.latest_raw_value, 0.0);
  EXPECT_EQ(bare.value_at, "");
}

class WorkPostgreSQLReadJobs : public OperationLogTest {};

TEST_F(WorkPostgreSQLReadJobs, OldestWaitingRunnableJobAndItsState) {
  int id = -1;
  long source = -1;
  std::string start, stop, calculation = "kept";
  exec("INSERT INTO recalculation (id, source, time_start, time_stop, state, control, "
       "created_at) VALUES (1, 42, '2023-01-01', '2023-02-01', 1, 2, '2023-03-01')");
  store().readRecalculation(id, source, start, stop, calculation);
  EXPECT_EQ(start, "") << "a paused job is not found";
  EXPECT_EQ(id, -1);
  EXPECT_EQ(calculation, "kept");

  exec("INSERT INTO recalculation (id, source, time_start, time_stop, time_calculation, state, "
       "control, created_at) VALUES "
       "(2, 43, '2023-01-02', '2023-02-02', '2023-01-15 10:00:00', 1, 1, '2023-03-03'), "
       "(3, NULL, '2023-01-03', '2023-02-03', NULL, 1, 1, '2023-03-02'), "
       "(4, 44, '2023-01-04', '2023-02-04', NULL, 2, 1, '2023-03-01')");
  store().readRecalculation(id, source, start, stop, calculation);
  EXPECT_EQ(id, 3) << "the oldest waiting job first";
  EXPECT_EQ(source, 0) << "no module means all modules";
  EXPECT_EQ(start, "2023-01-03 00:00:00");
  EXPECT_EQ(stop, "2023-02-03 00:00:00");
  EXPECT_EQ(calculation, "");

  exec("UPDATE recalculation SET state = 2 WHERE id = 3");
  store().readRecalculation(id, source, start, stop, calculation);
  EXPECT_EQ(id, 2);
  EXPECT_EQ(source, 43);
  EXPECT_EQ(calculation, "2023-01-15 10:00:00");

  int state = 0, control = 0;
  store().getStateRecalculation(4, state, control);
  EXPECT_EQ(state, 2);
  EXPECT_EQ(control, 1);
  store().getStateRecalculation(1, state, control);
  EXPECT_EQ(state, 1);
  EXPECT_EQ(control, 2);
  store().getStateRecalculation(99, state, control);
  EXPECT_EQ(state, 1) << "no row leaves both";
  EXPECT_EQ(control, 2);
}

TEST_F(WorkPostgreSQLReadJobs, InstanceRecordsAndSettings) {
  exec("INSERT INTO vek_calculation (id, last_calculated, settings) VALUES "
       "(1, 500, '{\"log\":true}'), (2, 300, NULL), (3, NULL, '')");
  std::vector<int> ids{99};
  int smallest = 7;
  store().readCalculation(ids, smallest);
  ASSERT_EQ(ids.size(), 4u);
  EXPECT_EQ(ids[0], 99) << "appended to";
  std::sort(ids.begin() + 1, ids.end());
  EXPECT_EQ(ids, (std::vector<int>{99, 1, 2, 3}));
  EXPECT_EQ(smallest, 0) << "a running minimum from 0 over progress marks stays 0";

  std::string settings = "kept";
  store().readVekCalculation(4, settings);
  EXPECT_EQ(settings, "kept") << "no row leaves the text";
  store().readVekCalculation(1, settings);
  EXPECT_EQ(settings, "{\"log\":true}");
  store().readVekCalculation(2, settings);
  EXPECT_EQ(settings, "") << "NULL settings give the empty text";
}

class WorkPostgreSQLResultArrays : public OperationLogTest {
protected:
  void history() {
    // The trigger on visualization makes the partition result_5.
    exec("INSERT INTO visualization (id, source, name_param) VALUES (5, 42, 'SKZ');"
         "INSERT INTO result_base (id, param_info_id, visualization_id, receipt_date, source, "
         "value, status_calc, has_raw_data, middle) VALUES "
         "(1, 11, 5, '2023-07-04 09:00:00', 42, 1.5, 0, true, 1.25), "
         "(2, 12, 5, '2023-07-04 10:00:00', 42, NULL, 0, true, NULL), "
         "(3, 13, 5, '2023-07-04 11:00:00', 42, 3.5, 0, true, 3.25)");
  }
};

TEST_F(WorkPostgreSQLResultArrays, ValuesAreClearedTheOtherOutputsAppendedTo) {
  history();
  std::vector<std::string> dates{"old"};
  std::vector<long> ids{-1};
  std::vector<double> values{-1.0, -2.0};
  store().getArrayResult("WHERE VISUALIZATION_ID = 5 ORDER BY RECEIPT_DATE", "VALUE", dates, ids,
                         values);
  EXPECT_EQ(ids, (std::vector<long>{-1, 1, 2, 3}));
  EXPECT_EQ(dates, (std::vector<std::string>{"old", "2023-07-04 09:00:00", "2023-07-04 10:00:00",
                                             "2023-07-04 11:00:00"}));
  EXPECT_EQ(values, (std::vector<double>{1.5, 0.0, 3.5})) << "NULL gives 0.0";

  std::vector<int> param_info_ids{-1};
  dates = {"old"};
  ids = {-1};
  values = {-1.0};
  store().getArrayResultId("WHERE VISUALIZATION_ID = 5 ORDER BY RECEIPT_DATE", "MIDDLE",
                           param_info_ids, dates, ids, values);
  EXPECT_EQ(param_info_ids, (std::vector<int>{-1, 11, 13})) << "rows without a value are left out";
  EXPECT_EQ(ids, (std::vector<long>{-1, 1, 3}));
  EXPECT_EQ(dates, (std::vector<std::string>{"old", "2023-07-04 09:00:00", "2023-07-04 11:00:00"}));
  EXPECT_EQ(values, (std::vector<double>{1.25, 3.25}));

  param_info_ids = {-1};
  values = {-1.0};
  store().getArrayResultFRM("WHERE VISUALIZATION_ID = 5 ORDER BY RECEIPT_DATE DESC LIMIT 2",
                            param_info_ids, values);
  EXPECT_EQ(param_info_ids, (std::vector<int>{-1, 13, 12}));
  EXPECT_EQ(values, (std::vector<double>{3.5, 0.0}));

  std::vector<int> visualization_ids{-1}, int_ids{-1};
  param_info_ids = {-1};
  dates = {"old"};
  values = {-1.0};
  store().readResult("WHERE PARAM_INFO_ID >= 12 ORDER BY ID", visualization_ids, param_info_ids,
                     dates, int_ids, values);
  EXPECT_EQ(visualization_ids, (std::vector<int>{-1, 5, 5}));
  EXPECT_EQ(param_info_ids, (std::vector<int>{-1, 12, 13}));
  EXPECT_EQ(int_ids, (std::vector<int>{-1, 2, 3}));
  EXPECT_EQ(dates.size(), 3u);
  EXPECT_EQ(values, (std::vector<double>{0.0, 3.5}));
}

} // namespace
