-- A small demo installation of simple sensor modules on two machines, and an hour of their
-- measurements for the service to compute.
--
-- Machine 1, "cooling pump" (the mean of its points decides): point 11 (weight 1.0) carries a
-- wired temperature module (source 3001, type 8, two sensors, with a telemetry block), point
-- 12 (weight 0.5) a wireless humidity module (3002, type 104).
-- Machine 2, "feed line" (its worst point decides): point 21 a wireless pressure module (3003,
-- type 105), point 22 a valve position module (3004, type 106).
-- Machine 3, "drive motor": point 31 a vibration module with a magnetic channel (3005, type
-- 10) on a motor of two pole pairs; its rows (11 to 14) are written by scripts/demo with the
-- synthesizer, an outer-race defect of its bearing deepening from row to row.
--
-- Samples are fu_raw.data texts as the modules send them: two prefix characters, then signed
-- 16-bit values (c_type 2), least significant byte first: 23 is "1700", -32767 is "0180".
INSERT INTO organization_object (alias_name, utc_value, connection_status)
VALUES ('demo_plant', 'UTC+3:00', 1);
INSERT INTO observed_node (id, organization_alias) VALUES (1, 'demo_plant');
INSERT INTO gateway (id, node_id, sync_time, connection_status_control, connection_status)
VALUES (1, 1, now(), 1, 1);

-- The codes the service may raise, all switched on; "101" (temperature high) and "102"
-- (battery low) are the plant's own, with a recommendation for each level.
INSERT INTO list_of_messages (code, visible)
VALUES ('4', true), ('11', true), ('13', true), ('26', true), ('28', true), ('29', true),
       ('30', true), ('101', true), ('102', true);
INSERT INTO recommendation (id, message_code, type_message_id, enabled)
VALUES (501, '101', 2, true), (502, '101', 3, true), (503, '102', 2, true);

INSERT INTO aggregate (id, node_id, type_aggregate_id, type_equipment_id, status_type, rul_days,
                       trend_start, name, mode)
VALUES (1, 1, 1, 8, 1, 30, now() + interval '1 day', 'cooling pump', 0),
       (2, 1, 1, 8, 2, 30, now() + interval '1 day', 'feed line', 0),
       (3, 1, 1, 1, 2, 30, now() + interval '1 day', 'drive motor', 0);
INSERT INTO control_point (id, aggregate_id, significance_coefficient)
VALUES (11, 1, 1.0), (12, 1, 0.5), (21, 2, 1.0), (22, 2, 1.0), (31, 3, 1.0);
INSERT INTO motor (id, power, speed, i, u, p2, class_vibro)
VALUES (1, '55', '1450', '100', '380', '2', '2');
INSERT INTO bearing (id, ball_diameter, count_balls, type_bearing, inner_diameter,
                     external_diameter, angle)
VALUES (1, 7.94, 9, 1, 30, 75, 15);
INSERT INTO control_point_motor VALUES (31, 1);
INSERT INTO control_point_bearing VALUES (31, 1);

INSERT INTO module (id, source, type_module, broadcasting_period, gateway_id, config,
                    multichannel, revision, connection_status, data_in_utc_0)
VALUES (1, 3001, 8, 10, 1, '0x0', false, 1, 0, false),
       (2, 3002, 104, 10, 1, '0x0', false, 1, 0, false),
       (3, 3003, 105, 10, 1, '0x0', false, 1, 0, false),
       (4, 3004, 106, 10, 1, '0x0', false, 1, 0, false),
       (5, 3005, 10, 10, 1, '0x0', false, 1, 0, false);
INSERT INTO channel (id, source, raw_param, axis_order)
VALUES (301, 3001, '', ''), (302, 3002, '', ''), (303, 3003, '', ''), (304, 3004, '', ''),
       (305, 3005, '', 'xyz');
INSERT INTO channel_contol_point (channel_id, control_point_id, active)
VALUES (301, 11, true), (302, 12, true), (303, 21, true), (304, 22, true), (305, 31, true);

INSERT INTO observed_param (name, type_corridor)
VALUES ('SENSOR_T1', 1), ('SENSOR_T2', 1), ('HUMIDITY', 1), ('PRESSURE', 1),
       ('VALVE_STATUS', 1), ('TEMP', 1), ('RSSI', 1), ('U_BATTERY', 1), ('RESET_COUNT', 1),
       ('FRM', 1), ('SPEED', 1), ('VEL_RMS_CF_4_X', 1), ('BEARING_OUTER_RING', 1);
-- Thresholds green/yellow/orange; where yellow lies below orange, high values are bad.
-- Battery and signal run the other way: low values are bad. The telemetry displays show the
-- module's last block from before the demo hour.
INSERT INTO visualization (id, source, name_param, green, yellow, orange, kz, active, middle,
                           trend, rul_active, corridor_active, channel_id, control_point_id,
                           type_param, corridor_zero, message_settings)
VALUES
  (3011, 3001, 'SENSOR_T1', 60, 75, 90, 1, true, false, false, false, true, 301, 11, 1, 0,
   '{"corridorActive": [{"codeMessage": "101", "recommendations": [501, 502]}]}'),
  (3012, 3001, 'SENSOR_T2', 60, 75, 90, 1, true, false, false, false, true, 301, 11, 1, 0,
   '{"corridorActive": [{"codeMessage": "101", "recommendations": [501, 502]}]}'),
  (3013, 3001, 'TEMP', 60, 75, 90, 1, true, false, false, false, false, 301, 11, 2, 0, NULL),
  (3014, 3001, 'RSSI', -90, -100, -110, 1, true, false, false, false, false, 301, 11, 2, 0,
   NULL),
  (3015, 3001, 'U_BATTERY', 30, 20, 10, 1, true, false, false, false, true, 301, 11, 2, 0,
   '{"corridorActive": [{"codeMessage": "102", "recommendations": [503]}]}'),
  (3016, 3001, 'RESET_COUNT', 0, 0, 0, 0, true, false, false, false, false, 301, 11, 2, 0,
   NULL),
  (3021, 3002, 'HUMIDITY', 60, 70, 80, 1, true, false, false, false, true, 302, 12, 1, 0,
   NULL),
  (3031, 3003, 'PRESSURE', 6, 7, 8, 1, true, false, false, false, true, 303, 21, 1, 0, NULL),
  (3041, 3004, 'VALVE_STATUS', 1, 2, 3, 1, true, false, false, false, true, 304, 22, 1, 0,
   NULL),
  (3051, 3005, 'FRM', 30, 30, 30, 0, true, false, false, false, false, 305, 31, 1, 0, NULL),
  (3052, 3005, 'SPEED', 1800, 1800, 1800, 0, true, false, false, false, false, 305, 31, 1, 0,
   NULL),
  (3053, 3005, 'VEL_RMS_CF_4_X', 7.1, 11.2, 18, 1, true, false, false, false, true, 305, 31, 1,
   0, NULL),
  (3054, 3005, 'BEARING_OUTER_RING', 150, 300, 600, 1, true, false, false, false, true, 305,
   31, 1, 0, NULL);
UPDATE visualization SET latest_raw_value = CASE name_param WHEN 'TEMP' THEN 30
  WHEN 'RSSI' THEN -70 WHEN 'U_BATTERY' THEN 90 ELSE 3 END WHERE type_param = 2;

-- An hour of data, ten minutes apart in rounds, oldest first. Row 15 arrives after the stretch
-- that the demo computes (-stop 15), so the service ends without waiting.
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error,
                        param_settings, module_config, kind)
VALUES
  (1, 3001, 8, 1, now() - interval '60 minutes', '', '', '', 0),
  (2, 3002, 104, 1, now() - interval '60 minutes', '', '', '', 0),
  (3, 3003, 105, 1, now() - interval '60 minutes', '', '', '', 0),
  (4, 3004, 106, 1, now() - interval '60 minutes', '', '', '', 0),
  (5, 3001, 8, 0, now() - interval '55 minutes', '31;-71;3;88', '', '', 0),
  (6, 3001, 8, 1, now() - interval '40 minutes', '', '', '', 0),
  (7, 3002, 104, 1, now() - interval '40 minutes', '', '', '', 0),
  (8, 3001, 8, 0, now() - interval '35 minutes', '33;-72;3;15', '', '', 0),
  (9, 3001, 8, 1, now() - interval '20 minutes', '', '', '', 0),
  (10, 3003, 105, 1, now() - interval '20 minutes', '', '', '', 0),
  (15, 3004, 106, 1, now(), '', '', '', 0);
INSERT INTO fu_raw (param_info_id, param_type_id, c_type, sub_channel, data, settings)
VALUES
  (1, 4, 2, '', '0x17001800', NULL),   -- 23 and 24 degrees
  (2, 13, 2, '', '0x3700', NULL),      -- 55 % humidity
  (3, 3, 2, '', '0x0500', NULL),       -- 5 bar
  (4, 14, 2, '', '0x0100', NULL),      -- valve open (1)
  (6, 4, 2, '', '0x52001900', NULL),   -- 82 degrees: sensor 1 runs hot; 25
  (7, 13, 2, '', '0x5500', NULL),      -- 85 % humidity
  (9, 4, 2, '', '0x01801a00', NULL),   -- sensor 1 reports -32767: broken; 26
  (10, 3, 2, '', '0x0700', NULL),      -- 7 bar
  (15, 14, 2, '', '0x0000', NULL);

-- The instance that computes the demo, with its run log on.
INSERT INTO vek_calculation (id, settings) VALUES (1, '{"log": true}');
