#!/usr/bin/env bash
# Builds vek in Release and runs it as a registered instance over a plant of simple modules on
# a throwaway server, then prints the service's throughput and where its time goes:
#
#   rows per second          measurement and telemetry rows computed per wall-clock second
#   statements per row       committed transactions of the run (each store statement is one)
#                            divided by the rows
#   statement round trip     mean time of one short transaction (BEGIN, SELECT 1, COMMIT) on
#                            the same server and socket, measured with pgbench in the same run
#   server executing         what the server spent executing the run's statements
#                            (pg_stat_database.active_time)
#   time outside database    wall time less server execution and statements * round trip:
#                            what the service itself spends on decoding, arithmetic, logging
#                            and building statements
#   CPU time of vek          user seconds of the process are what it computes (its own code,
#                            the C++ library and the client library building and parsing
#                            messages); system seconds are the socket calls of each round trip
#
#   rows rewritten per       rows that the bulk updates of middle, trend and monotone
#   measurement              changed, divided by the rows
#
#   bench/run_service.sh [MODULES] [ROUNDS] [PLANT]
#     PLANT simple (default: 300 modules, 10 rounds) or history (40 modules, 5 rounds)
#   VEK_BENCH_WRAPPER="perf record -g -o /tmp/vek.perf" bench/run_service.sh   (to profile)
#
# The plant: MODULES modules in machines of four, each module on a control point of its own:
# a wired temperature module (type 8, two sensors, a telemetry block every other round), a
# humidity (104), a pressure (105) and a valve module (106). Each round gives one row per
# module, so the run computes MODULES * ROUNDS rows.
#
# The history plant: MODULES modules of type 104 in machines of four, each on a point of its own,
# sending named values: the rotor frequency FRM (50 Hz) and six vibration parameters, each with
# 1000 rows of history every 10 minutes before the stretch. VEL_X rises toward orange, with
# the forecast on. The service first computes ROUNDS rounds with middle and trend off, then
# ROUNDS rounds with both on for the six parameters: two sets of figures, side by side.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VEK_BENCH_PIPELINE_BUILD:-$root/build-bench-pipeline}
plant=${3:-simple}
if [ "$plant" = history ]; then
  modules=${1:-40}
  rounds=${2:-5}
else
  modules=${1:-300}
  rounds=${2:-10}
fi

if [ "${VEK_PIPELINE_INSIDE:-}" != 1 ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEK_TESTS=OFF \
    -DVEK_BENCH=OFF >/dev/null
  cmake --build "$build" -j 2 --target vek >/dev/null
  VEK_PIPELINE_INSIDE=1 exec "$root/scripts/with-postgres" "$0" "$modules" "$rounds" "$plant"
fi

# Statement statistics need their library loaded at server start: restart the throwaway server.
psql -q -d postgres -c "ALTER SYSTEM SET shared_preload_libraries = 'pg_stat_statements'"
"$VEK_PGCTL" restart -w -m fast >/dev/null

history_plant() {
psql -q -v ON_ERROR_STOP=1 -d "$VEK_PGDATABASE" <<SQL >/dev/null
CREATE EXTENSION pg_stat_statements;
INSERT INTO organization_object VALUES ('bench_plant', 'UTC+3:00', 1);
INSERT INTO observed_node VALUES (1, 'bench_plant');
INSERT INTO vek_calculation (id, settings) VALUES (1, '{"log": false}');

-- Module m (0-based) has source 5000 + m, channel 10000 + m, control point 20000 + m, and
-- belongs to machine m / 4 + 1. Parameter k of the module is visualization 100000 + 10 m + k.
CREATE TEMP TABLE plant AS SELECT m, 5000 + m AS source FROM generate_series(0, $modules - 1) AS m;
CREATE TEMP TABLE parameter (k, name) AS VALUES (0, 'FRM'), (1, 'VEL_X'), (2, 'VEL_Y'),
  (3, 'VEL_Z'), (4, 'ACC_X'), (5, 'ACC_Y'), (6, 'ACC_Z');
INSERT INTO aggregate (id, node_id, type_aggregate_id, type_equipment_id, status_type, name, mode)
SELECT DISTINCT m / 4 + 1, 1, 1, 8, 1, 'machine ' || (m / 4 + 1), 0 FROM plant;
INSERT INTO control_point (id, aggregate_id, significance_coefficient)
SELECT 20000 + m, m / 4 + 1, 1.0 FROM plant;
INSERT INTO module (id, source, type_module, broadcasting_period, config, multichannel, revision)
SELECT m + 1, source, 104, 10, '0x0', false, 1 FROM plant;
INSERT INTO channel (id, source, raw_param, axis_order) SELECT 10000 + m, source, '', '' FROM plant;
INSERT INTO channel_contol_point SELECT 10000 + m, 20000 + m, true FROM plant;
INSERT INTO observed_param SELECT name, 1 FROM parameter;
INSERT INTO visualization (id, source, name_param, green, yellow, orange, kz, active, middle,
                           trend, rul_active, corridor_active, channel_id, control_point_id,
                           type_param, corridor_zero)
SELECT 100000 + 10 * m + k, source, name, 4, 6, 9, 1, true, false, false, k = 1, true,
       10000 + m, 20000 + m, 1, 0 FROM plant, parameter;

-- Value of parameter k at day d (VEL_X reaches orange 9 at day 28.3, within the forecast).
CREATE FUNCTION pg_temp.val(k int, d float) RETURNS float LANGUAGE sql AS \$\$ SELECT CASE k
  WHEN 0 THEN 50 WHEN 1 THEN 1 + 0.01 * d * d ELSE 2 + 0.1 * k * d + 0.05 * sin(d * 37) END \$\$;
-- History j (1..1000) of every module, 10 minutes apart, ending before the stretch; the
-- service resumes after the highest calculated row, 1000.
INSERT INTO result_base (param_info_id, visualization_id, receipt_date, source, value,
                         status_calc, has_raw_data)
SELECT j, 100000 + 10 * m + k, now() - interval '10 days' + j * interval '10 minutes', source,
       pg_temp.val(k, j / 144.0), 0, false
FROM plant, parameter, generate_series(1, 1000) AS j;
INSERT INTO math_history (param_info_id, status_calc, status_vector, has_raw_data)
VALUES (1000, 0, 0, false);
-- Round r, module m: row 1001 + r * modules + m; each value a named piece (the name's bytes,
-- then the float, least significant byte first).
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error,
                        param_settings, module_config, kind)
SELECT 1001 + r * $modules + m, source, 104, 200,
       now() - interval '10 days' + (1001 + r) * interval '10 minutes', '', '', '', 0
FROM plant, generate_series(0, 2 * $rounds - 1) AS r;
INSERT INTO fu_raw (param_info_id, param_type_id, c_type, sub_channel, data)
SELECT 1001 + r * $modules + m, 15, 7, '', '0x' || encode(convert_to(name, 'UTF8'), 'hex') ||
       string_agg(substr(encode(float4send(pg_temp.val(k, (1001 + r) / 144.0)::float4), 'hex'),
                         7 - 2 * b, 2), '' ORDER BY b)
FROM plant, parameter, generate_series(0, 2 * $rounds - 1) AS r, generate_series(0, 3) AS b
GROUP BY r, m, k, name;
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error,
                        param_settings, module_config, kind)
VALUES (1001 + 2 * $rounds * $modules, 5000, 104, 1, now(), '', '', '', 0);
ANALYZE;
SQL
}

simple_plant() {
psql -q -v ON_ERROR_STOP=1 -d "$VEK_PGDATABASE" <<SQL >/dev/null
CREATE EXTENSION pg_stat_statements;
INSERT INTO organization_object VALUES ('bench_plant', 'UTC+3:00', 1);
INSERT INTO observed_node VALUES (1, 'bench_plant');
INSERT INTO gateway (id, node_id, sync_time, connection_status_control, connection_status)
VALUES (1, 1, now(), 1, 1);
INSERT INTO list_of_messages (code, visible)
SELECT c, true FROM unnest(ARRAY['4', '11', '13', '26', '28', '29', '30']) AS c;
INSERT INTO vek_calculation (id, settings) VALUES (1, '{"log": false}');

-- Module m (0-based) has source 5000 + m, channel 10000 + m, control point 20000 + m, and
-- belongs to machine m / 4 + 1. Its type follows m % 4.
CREATE TEMP TABLE plant AS
SELECT m, 5000 + m AS source, (ARRAY[8, 104, 105, 106])[m % 4 + 1] AS type_mod,
       (ARRAY[4, 13, 3, 14])[m % 4 + 1] AS param_type_id
FROM generate_series(0, $modules - 1) AS m;

INSERT INTO aggregate (id, node_id, type_aggregate_id, type_equipment_id, status_type, rul_days,
                       trend_start, name, mode)
SELECT DISTINCT m / 4 + 1, 1, 1, 8, 1, 30, now() + interval '1 day', 'machine ' || (m / 4 + 1), 0
FROM plant;
INSERT INTO control_point (id, aggregate_id, significance_coefficient)
SELECT 20000 + m, m / 4 + 1, 1.0 FROM plant;
INSERT INTO module (id, source, type_module, broadcasting_period, gateway_id, config,
                    multichannel, revision, connection_status, data_in_utc_0)
SELECT m + 1, source, type_mod, 10, 1, '0x0', false, 1, 0, false FROM plant;
INSERT INTO channel (id, source, raw_param, axis_order) SELECT 10000 + m, source, '', '' FROM plant;
INSERT INTO channel_contol_point SELECT 10000 + m, 20000 + m, true FROM plant;

INSERT INTO observed_param VALUES ('SENSOR_T1', 1), ('SENSOR_T2', 1), ('HUMIDITY', 1),
  ('PRESSURE', 1), ('VALVE_STATUS', 1), ('TEMP', 1), ('RSSI', 1), ('U_BATTERY', 1),
  ('RESET_COUNT', 1);
INSERT INTO visualization (id, source, name_param, green, yellow, orange, kz, active, middle,
                           trend, rul_active, corridor_active, channel_id, control_point_id,
                           type_param, corridor_zero, latest_raw_value)
SELECT 100000 + 10 * m + k, source, name, 60, 75, 90, 1, true, false, false, false, true,
       10000 + m, 20000 + m, cls, 0, latest
FROM plant,
LATERAL (VALUES (0, 'SENSOR_T1', 1, NULL::float8), (1, 'SENSOR_T2', 1, NULL),
                (2, 'TEMP', 2, 30), (3, 'RSSI', 2, -70), (4, 'U_BATTERY', 2, 90),
                (5, 'RESET_COUNT', 2, 3)) AS v(k, name, cls, latest)
WHERE type_mod = 8
UNION ALL
SELECT 100000 + 10 * m, source,
       (ARRAY['HUMIDITY', 'PRESSURE', 'VALVE_STATUS'])[m % 4], 60, 75, 90, 1, true, false,
       false, false, true, 10000 + m, 20000 + m, 1, 0, NULL
FROM plant WHERE type_mod <> 8;

-- Round r, module m: row r * modules + m + 1, r * 10 minutes after the start of the stretch.
-- Temperature modules send their telemetry block in odd rounds. Values are small counts,
-- signed 16 bits least significant byte first.
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error,
                        param_settings, module_config, kind)
SELECT r * $modules + m + 1, source, type_mod,
       CASE WHEN type_mod = 8 AND r % 2 = 1 THEN 0 ELSE 1 END,
       now() - interval '1 day' + r * interval '10 minutes',
       CASE WHEN type_mod = 8 AND r % 2 = 1 THEN '30;-70;3;88' ELSE '' END, '', '', 0
FROM plant, generate_series(0, $rounds - 1) AS r;
INSERT INTO fu_raw (param_info_id, param_type_id, c_type, sub_channel, data)
SELECT r * $modules + m + 1, param_type_id, 2, '',
       '0x' || lpad(to_hex((20 + (m + r) % 70)), 2, '0') || '00' ||
       CASE WHEN type_mod = 8 THEN lpad(to_hex(21 + r % 60), 2, '0') || '00' ELSE '' END
FROM plant, generate_series(0, $rounds - 1) AS r
WHERE NOT (type_mod = 8 AND r % 2 = 1);
-- One row beyond the stretch, so the service stops on it without waiting for new data.
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error,
                        param_settings, module_config, kind)
VALUES ($modules * $rounds + 1, 5001, 104, 1, now(), '', '', '', 0);
ANALYZE;
SQL

}

# Committed transactions and milliseconds the server spent executing statements, both summed
# over the database's sessions.
counters() {
  psql -Atq -F ' ' -d "$VEK_PGDATABASE" -c "SELECT pg_stat_clear_snapshot();
    SELECT xact_commit, active_time FROM pg_stat_database WHERE datname = current_database()" |
    tail -n 1
}
run=$(mktemp -d)
# The same short transaction that each store statement is, over the same socket, timed just
# before and just after the service's run; the mean of the two stands for the run, so that the
# load of a shared machine weighs on both sides alike.
roundtrip_ms() {
  printf 'BEGIN;\nSELECT 1;\nCOMMIT;\n' >"$run/roundtrip.sql"
  pgbench -n -M simple -c 1 -T 2 -f "$run/roundtrip.sql" "$VEK_PGDATABASE" 2>/dev/null |
    sed -n 's/^latency average = \([0-9.]*\) ms$/\1/p'
}
# One stretch of the service, from where it resumes to the row before `stop`, measured.
measure() {
  local label=$1 rows=$2 stop=$3
  latency_before=$(roundtrip_ms)
  sleep 1
  read -r before active_before < <(counters)
  psql -Atq -d "$VEK_PGDATABASE" -c "SELECT pg_stat_statements_reset()" >/dev/null
  start=$(date +%s.%N)
  # The subshell's `times` gives the CPU seconds of vek, its only child: user and system time of
  # the service itself, the libpq client included.
  (cd "$run" && ${VEK_BENCH_WRAPPER:-} "$build/src/app/vek" -host "$VEK_PGHOST" -name "$VEK_PGDATABASE" \
    -user "$VEK_PGUSER" -stop "$stop" >stdout.txt 2>stderr.txt && times >times.txt)
  end=$(date +%s.%N)
  read -r user_cpu system_cpu < <(tail -n 1 "$run/times.txt" | awk '{
    for (i = 1; i <= 2; ++i) { split($i, p, "m"); t[i] = p[1] * 60 + p[2] }
    print t[1], t[2] }')
  # The server counts a session's commits when the session ends; give it a moment to report.
  sleep 1
  read -r after active_after < <(counters)
  # Read before the round trip is timed again, whose own statements would count otherwise.
  psql -Atq -F '|' -d "$VEK_PGDATABASE" -c "
    SELECT round(sum(calls)::numeric / $rows, 2), round((sum(total_exec_time) / sum(calls))::numeric, 3),
           regexp_replace(left(query, 72), '\s+', ' ', 'g')
    FROM pg_stat_statements
    WHERE dbid = (SELECT oid FROM pg_database WHERE datname = current_database())
      AND query NOT LIKE '%pg_stat%'
    GROUP BY query ORDER BY sum(calls) DESC, 3 LIMIT 30" |
    awk -F'|' '{ printf "  %6.2f  %7.3f ms  %s\n", $1, $2, $3; total += $1 }
      END { printf "  %6.2f  statements per row in all (BEGIN and COMMIT included)\n", total }' >"$run/kinds.txt"
  done_rows=$(grep -c '^id_current: ' "$run/stdout.txt" || true)
  latency_after=$(roundtrip_ms)
  latency_ms=$(awk -v a="$latency_before" -v b="$latency_after" 'BEGIN { print (a + b) / 2 }')
  written=$(psql -Atq -d "$VEK_PGDATABASE" -c "SELECT count(*) FROM result_base WHERE param_info_id > 1000 OR '$plant' = 'simple'")
  rewritten=$(psql -Atq -d "$VEK_PGDATABASE" -c "SELECT coalesce(sum(rows), 0) FROM pg_stat_statements
    WHERE query LIKE 'UPDATE RESULT_BASE SET %result_temp%'")



  awk -v rows="$done_rows" -v wanted="$rows" -v start="$start" -v end="$end" \
    -v before="$before" -v after="$after" -v active="$active_before $active_after" -v latency="$latency_ms" -v written="$written" \
    -v modules="$modules" -v rewritten="$rewritten" -v label="$label" -v user="$user_cpu" -v kernel="$system_cpu" 'BEGIN {
    wall = end - start
    # Two of the counted commits are this script'"'"'s own statistics queries.
    statements = after - before - 1
    per_row = statements / rows
    split(active, a, " ")
    executing = (a[2] - a[1]) / 1000.0
    wire = statements * latency / 1000.0
    db = executing + wire
    printf "%s\n", label
    printf "plant:                  %d modules, %d rows computed (of %d), %d parameters written\n",
           modules, rows, wanted, written
    printf "rows rewritten per row: %.0f (middle, trend and monotone, in bulk through result_temp)\n",
           rewritten / rows
    printf "wall time:              %.2f s\n", wall
    printf "rows per second:        %.0f\n", rows / wall
    printf "statements per row:     %.1f (%d committed transactions)\n", per_row, statements
    printf "statement round trip:   %.3f ms (BEGIN, SELECT 1, COMMIT; pgbench, same socket)\n",
           latency
    printf "server executing:       %.2f s (pg_stat_database.active_time)\n", executing
    printf "round trips:            %.2f s (statements x round trip)\n", wire
    printf "time outside database:  %.1f %% of the wall time (target under %d %%)\n",
           100.0 * (wall - db) / wall, index(label, "trend on") ? 10 : 20
    printf "CPU time of vek:        %.2f s user (%.1f %% of the wall time), %.2f s system (%.1f %%)\n",
           user, 100.0 * user / wall, kernel, 100.0 * kernel / wall
  }'
  echo
  echo "statements of the run by kind (pg_stat_statements): calls per row, mean server time"
  cat "$run/kinds.txt"
  if [ -s "$run/stderr.txt" ]; then
    echo "standard error of vek:"
    head -n 20 "$run/stderr.txt"
  fi
}

if [ "$plant" = history ]; then
  history_plant
  measure "middle and trend off" $((modules * rounds)) $((1001 + rounds * modules))
  psql -q -d "$VEK_PGDATABASE" -c "UPDATE visualization SET middle = true, trend = true
    WHERE name_param <> 'FRM'" >/dev/null
  echo
  measure "middle and trend on, 1000 rows of history per parameter" $((modules * rounds)) \
    $((1001 + 2 * rounds * modules))
else
  simple_plant
  measure "simple modules" $((modules * rounds)) $((modules * rounds + 1))
fi
rm -rf "$run"
