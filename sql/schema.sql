-- The tables, columns and sequences that the calculation service reads and writes.
--
-- The service creates no table: the sensors' receiver and the operators' interface own most of
-- these, and this file is the shape they must have. Identifiers are unquoted, so the service's
-- statements may spell them in capitals (PARAM_INFO) or lower case (param_info) alike.
--
-- No foreign keys: the receiver and the operators' tools write in their own order, and the
-- service tolerates dangling ids (a module without gateway, a channel without binding). The
-- indexes below are those that the service's hot statements need.

-- ---------------------------------------------------------------------------------------------
-- Sequences from which the service takes the ids of the rows it inserts
-- ---------------------------------------------------------------------------------------------
CREATE SEQUENCE id_result;
CREATE SEQUENCE result_base_id_seq;
CREATE SEQUENCE status_element_id_seq;
CREATE SEQUENCE status_aggregate_id_seq;
CREATE SEQUENCE id_seq_rec;

-- ---------------------------------------------------------------------------------------------
-- Measurement input, written by the receiver
-- ---------------------------------------------------------------------------------------------

-- One row per measurement; the main loop walks the ids upward, gaps allowed.
CREATE TABLE param_info (
  id integer PRIMARY KEY,
  source bigint,
  type_mod integer,
  type_param integer,          -- 0 marks a telemetry-only row
  receipt_date timestamp,
  tu_error text,
  param_settings text,         -- JSON
  module_config text,          -- JSON
  kind integer
);
-- A module's rows by time: recalculation ranges and connectivity checks.
CREATE INDEX param_info_source_receipt_date_index ON param_info (source, receipt_date);

-- The raw pieces of a measurement, hexadecimal samples.
CREATE TABLE fu_raw (
  param_info_id integer,
  param_type_id integer,
  c_type integer,
  sub_channel text,
  data text,
  settings text                -- JSON
);
CREATE INDEX fu_raw_param_info_id_index ON fu_raw (param_info_id);

-- ---------------------------------------------------------------------------------------------
-- Plant description, written by the operators' side
-- ---------------------------------------------------------------------------------------------

CREATE TABLE organization_object (
  alias_name text PRIMARY KEY,
  utc_value text,              -- three prefix characters, then an offset such as +3:00
  connection_status integer
);

CREATE TABLE observed_node (
  id integer PRIMARY KEY,
  organization_alias text
);

CREATE TABLE gateway (
  id integer PRIMARY KEY,
  node_id integer,
  sync_time timestamp,         -- the gateway's last contact
  connection_status_control integer,
  connection_status integer
);

CREATE TABLE module (
  id integer PRIMARY KEY,
  source bigint,
  type_module integer,
  broadcasting_period integer, -- minutes
  gateway_id integer,
  config text,                 -- hexadecimal with a 0x prefix
  multichannel boolean,
  revision integer,
  connection_status integer,
  data_in_utc_0 boolean,
  -- A bit set that the service only ever ORs bits into: it starts empty rather than NULL,
  -- which would swallow every bit, and is wide enough for the top bit of a 32-bit mask.
  hardware_status bigint NOT NULL DEFAULT 0
);
CREATE INDEX module_source_index ON module (source);
CREATE INDEX module_gateway_id_index ON module (gateway_id);

CREATE TABLE module_param (
  name text,
  value real,
  type_module integer,
  type_param integer,
  module_revision integer,
  type_settings integer,
  sub_1_packet text
);
CREATE INDEX module_param_type_module_revision_index ON module_param (type_module, module_revision);

CREATE TABLE channel (
  id integer PRIMARY KEY,
  source bigint,
  raw_param text,
  axis_order text
);
CREATE INDEX channel_source_index ON channel (source);

-- The name is spelled so in the installation.
CREATE TABLE channel_contol_point (
  channel_id integer,
  control_point_id integer,
  active boolean
);
CREATE INDEX channel_contol_point_channel_id_index ON channel_contol_point (channel_id);

CREATE TABLE control_point (
  id integer PRIMARY KEY,
  aggregate_id integer,
  significance_coefficient real,
  status real,
  status_max real,
  status_at timestamp
);
CREATE INDEX control_point_aggregate_id_index ON control_point (aggregate_id);

CREATE TABLE control_point_motor (
  control_point_id integer,
  motor_id integer
);
CREATE INDEX control_point_motor_control_point_id_index ON control_point_motor (control_point_id);

CREATE TABLE control_point_bearing (
  control_point_id integer,
  bearing_id integer
);
CREATE INDEX control_point_bearing_control_point_id_index
  ON control_point_bearing (control_point_id);

-- The nameplate is typed in by hand; the service converts each field and reports what it
-- cannot read, so the columns hold text.
CREATE TABLE motor (
  id integer PRIMARY KEY,
  power text,
  speed text,
  i text,
  u text,
  p2 text,
  class_vibro text
);

CREATE TABLE bearing (
  id integer PRIMARY KEY,
  ball_diameter double precision,
  count_balls integer,
  type_bearing integer,
  inner_diameter double precision,
  external_diameter double precision,
  angle double precision
);

CREATE TABLE aggregate (
  id integer PRIMARY KEY,
  node_id integer,
  type_aggregate_id integer,
  type_equipment_id integer,
  status_type integer,
  rul_days integer,
  trend_start timestamp,
  name text,
  status real,
  status_max real,
  status_at timestamp,
  mode integer                 -- 0: state unknown
);

CREATE TABLE observed_param (
  name text PRIMARY KEY,
  type_corridor integer
);

-- One row per displayed parameter of a module's channel and control point.
CREATE TABLE visualization (
  id integer PRIMARY KEY,
  source bigint,
  name_param text,
  green real,
  yellow real,
  orange real,
  kz real,
  active boolean,
  middle boolean,
  trend boolean,
  rul_active boolean,
  corridor_active boolean,
  channel_id integer,
  control_point_id integer,
  type_param integer,
  corridor_zero integer,
  latest_raw_value double precision,
  latest_middle_value double precision,
  latest_trend_value double precision,
  latest_monotone_value double precision,
  message_settings text,       -- JSON
  rul_data bytea,              -- the forecast curve: records of 8 + 4 bytes, little-endian
  value_at timestamp
);
CREATE INDEX visualization_source_index ON visualization (source);

CREATE TABLE list_of_messages (
  code text PRIMARY KEY,
  visible boolean
);

CREATE TABLE recommendation (
  id integer PRIMARY KEY,
  message_code text,
  type_message_id integer,
  enabled boolean
);
CREATE INDEX recommendation_message_code_index ON recommendation (message_code);

-- ---------------------------------------------------------------------------------------------
-- Results, written by the service
-- ---------------------------------------------------------------------------------------------

-- One row per parameter with its name. A parameter has one value per time: the unique index
-- is how a second writer of the same key is recognised, by the index's name in the error.
CREATE TABLE result (
  id integer DEFAULT nextval('id_result'),
  param_info_id integer,
  receipt_date timestamp,
  source bigint,
  name_param text,
  value real,
  status_calc integer,
  status_vector integer,
  visualization_id integer,
  has_raw_data boolean
);
CREATE UNIQUE INDEX result_visualization_id_index ON result (visualization_id, receipt_date);
CREATE INDEX result_param_info_id_index ON result (param_info_id);

-- The history of every parameter, one partition per visualization, named result_<id>: the
-- service inserts here and reads and updates through the partition.
CREATE TABLE result_base (
  id integer DEFAULT nextval('result_base_id_seq'),
  param_info_id integer,
  visualization_id integer,
  receipt_date timestamp,
  source bigint,
  value real,
  status_calc integer,
  has_raw_data boolean,
  middle real,
  trend real,
  monotone real
) PARTITION BY LIST (visualization_id);
-- Each partition brings its own index of this shape, named result_visualization_id_index_<id>,
-- which becomes part of this one when the partition is attached.
CREATE UNIQUE INDEX result_base_visualization_id_receipt_date_index
  ON result_base (visualization_id, receipt_date);

-- A visualization gets its partition of result_base the moment it is created, so that its
-- first result has a place. The partition is made as a plain table with its unique index and
-- then attached: the index keeps its name, and a duplicate result names
-- "result_visualization_id_index_<id>" in its error, which the service recognises as a
-- duplicate. (A partition made with PARTITION OF would get an index named after its columns,
-- and a duplicate would look like any other failure.) A partition outlives its visualization:
-- the history is the operators' to delete.
CREATE FUNCTION visualization_result_partition() RETURNS trigger
LANGUAGE plpgsql AS $$
DECLARE
  partition_name text := 'result_' || NEW.id;
BEGIN
  IF NEW.id IS NULL OR to_regclass(partition_name) IS NOT NULL THEN
    RETURN NEW;
  END IF;
  EXECUTE format('CREATE TABLE %I (LIKE result_base INCLUDING DEFAULTS)', partition_name);
  EXECUTE format('CREATE UNIQUE INDEX %I ON %I (visualization_id, receipt_date)',
                 'result_visualization_id_index_' || NEW.id, partition_name);
  EXECUTE format('ALTER TABLE result_base ATTACH PARTITION %I FOR VALUES IN (%s)',
                 partition_name, NEW.id);
  RETURN NEW;
END
$$;

CREATE TRIGGER visualization_result_partition
  AFTER INSERT OR UPDATE OF id ON visualization
  FOR EACH ROW EXECUTE FUNCTION visualization_result_partition();

-- A work table for bulk updates of middle and trend; emptied after each use.
CREATE TABLE result_temp (
  v_id integer,
  receipt_date timestamp,
  value real
);

-- One row per calculated measurement; its maximum says where a continuing start resumes.
CREATE TABLE math_history (
  param_info_id integer,
  calculated_at timestamp,
  status_calc integer,
  status_vector integer,
  has_raw_data boolean
);
CREATE INDEX math_history_param_info_id_index ON math_history (param_info_id);

CREATE TABLE status_element (
  id integer DEFAULT nextval('status_element_id_seq'),
  source bigint,
  status real,
  param_info_id integer,
  channel_id integer,
  control_point_id integer
);
CREATE INDEX status_element_source_param_info_id_index ON status_element (source, param_info_id);

CREATE TABLE status_aggregate (
  id integer DEFAULT nextval('status_aggregate_id_seq'),
  aggregate_id integer,
  status real,
  calculated_at timestamp
);
CREATE INDEX status_aggregate_aggregate_id_calculated_at_index
  ON status_aggregate (aggregate_id, calculated_at);

CREATE TABLE notification (
  id integer PRIMARY KEY DEFAULT nextval('id_seq_rec'),
  source bigint,
  gateway_id integer,
  date_of_creation timestamp,
  additional_info text,
  type_message_id integer,
  status integer,              -- 0: open
  active_days integer,
  organization_alias text,
  recommendation_id integer,
  channel_id integer,
  control_point_id integer,
  visualization_id integer,
  message_code text,
  diagnostic_mode boolean
);
-- The once-a-day test of every raised message looks by place, code and date.
CREATE INDEX notification_source_message_code_date_index
  ON notification (source, message_code, date_of_creation);

CREATE TABLE defects (
  id integer PRIMARY KEY,      -- the measurement's id, given by the writer
  defect_code integer,
  defect_type integer
);

-- ---------------------------------------------------------------------------------------------
-- Control
-- ---------------------------------------------------------------------------------------------

-- One row per instance of the service.
CREATE TABLE vek_calculation (
  id integer PRIMARY KEY,
  ip text,
  lag integer,
  last_calculated integer,
  sync_time timestamp,
  version text,                -- JSON
  settings text                -- JSON
);

-- Requests to compute a stretch of old measurements again.
CREATE TABLE recalculation (
  id integer PRIMARY KEY,
  source bigint,               -- 0 or NULL: all modules
  time_start timestamp,
  time_stop timestamp,
  time_calculation timestamp,  -- where the job has come to
  state integer,               -- 1 waiting, 2 running, 3 finished
  control integer,             -- 1 run, 2 pause, 3 stop
  created_at timestamp DEFAULT now()
);
