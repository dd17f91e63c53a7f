-- A small demo installation: one organization with one gateway and one vibration module, and
-- a stretch of its measurement rows with a gap at id 104 (a row the receiver rolled back).
-- Row 107 arrived after the stretch that the demo walks, so the service ends without waiting.
INSERT INTO organization_object (alias_name, utc_value, connection_status)
VALUES ('demo_plant', 'UTC+3:00', 1);
INSERT INTO observed_node (id, organization_alias) VALUES (1, 'demo_plant');
INSERT INTO gateway (id, node_id, sync_time, connection_status_control, connection_status)
VALUES (1, 1, now(), 1, 1);
INSERT INTO module (id, source, type_module, broadcasting_period, gateway_id, config,
                    multichannel, revision, connection_status, data_in_utc_0)
VALUES (1, 4660, 10, 60, 1, '0x0', false, 1, 1, false);

INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error,
                        param_settings, module_config, kind)
VALUES (101, 4660, 10, 0, now() - interval '5 hours', '', '', '', 0),
       (102, 4660, 10, 1, now() - interval '4 hours', '', '', '', 0),
       (103, 4660, 10, 1, now() - interval '3 hours', '', '', '', 0),
       (105, 4660, 10, 0, now() - interval '2 hours', '', '', '', 0),
       (106, 4660, 10, 1, now() - interval '1 hours', '', '', '', 0),
       (107, 4660, 10, 1, now(), '', '', '', 0);
