#!/usr/bin/env bash
# Builds vek in Release and measures recalculation on a throwaway server, with the type 10 rows
# of two motors (three axes of 16384 samples at 26667 Hz and the stray field, as the module
# sends them):
#
#   job alone            a month of motor 1's hourly rows (720) computed again by a job while
#                        the live loop has nothing to do: the job's rows per second
#   live loop alone      three days of motor 2's rows, ten minutes apart (432), computed as they
#                        arrive: the loop's rows per second
#   live loop beside     the same live rows with the month's job started beside them: the
#   a job                loop's rows per second, and the job's rows done meanwhile
#
# Usage: bench/run_recalculation.sh [JOB_ROWS [LIVE_ROWS]]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${VEK_BENCH_BUILD:-$root/build-bench}
job_rows=${1:-720}
live_rows=${2:-432}

if [ "${VEK_RECALCULATION_INSIDE:-}" != 1 ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build "$build" -j 2 --target vek vek-synth >/dev/null
  VEK_RECALCULATION_INSIDE=1 exec "$root/scripts/with-postgres" "$0" "$job_rows" "$live_rows"
fi

sql() { psql -q -X -v ON_ERROR_STOP=1 -At -d "$VEK_PGDATABASE" -c "$1"; }
first_live=$((job_rows + 1))
end=$((job_rows + live_rows + 1))

psql -q -X -v ON_ERROR_STOP=1 -d "$VEK_PGDATABASE" >/dev/null <<SQL
INSERT INTO organization_object VALUES ('plant', 'UTC+3:00', NULL); INSERT INTO observed_node VALUES (1, 'plant');
INSERT INTO vek_calculation (id, settings) VALUES (1, '{"control_task": 1, "log": false}');
INSERT INTO aggregate (id, node_id, type_equipment_id, name) VALUES (1, 1, 1, 'motor 1'), (2, 1, 1, 'motor 2');
INSERT INTO module (id, source, type_module, revision, config) VALUES (1, 101, 10, 1, '0x0'), (2, 102, 10, 1, '0x0');
INSERT INTO channel VALUES (101, 101, '', 'xyz'), (102, 102, '', 'xyz');
INSERT INTO control_point (id, aggregate_id, significance_coefficient) VALUES (201, 1, 1), (202, 2, 1);
INSERT INTO channel_contol_point VALUES (101, 201, true), (102, 202, true);
INSERT INTO motor (id, power, p2) VALUES (1, '55', '2'); INSERT INTO control_point_motor VALUES (201, 1), (202, 1);
INSERT INTO bearing VALUES (1, 7.94, 9, 1, 30, 75, 15); INSERT INTO control_point_bearing VALUES (201, 1), (202, 1);
INSERT INTO observed_param SELECT n, 1 FROM unnest(ARRAY['FREAL', 'FRM', 'SAD', 'SPEED', 'IMBALANCE_X', 'IMBALANCE_Y', 'IMBALANCE_Z',
  'AFRM_1_X', 'VEL_RMS_CF_4_X', 'VEL_RMS_CF_4_Y', 'VEL_RMS_CF_4_Z', 'ACC_RMS_CF_1_Z', 'BEARING_OUTER_RING']) n;
INSERT INTO visualization (id, source, name_param, type_param, channel_id, control_point_id, active, kz, green, yellow, orange, middle)
  SELECT 1000 * s + k, s, n, 1, s, s + 100, true, 1, 4, 7, 11, true
  FROM (SELECT name, row_number() OVER (ORDER BY name) FROM observed_param) o(n, k), (VALUES (101), (102)) m(s);
SQL
# One measurement of motor 1, copied: the job's month hourly, the live days every ten minutes.
"$build/src/app/vek-synth" 101 1 0.02 | psql -q -X -v ON_ERROR_STOP=1 -d "$VEK_PGDATABASE" >/dev/null
psql -q -X -v ON_ERROR_STOP=1 -d "$VEK_PGDATABASE" >/dev/null <<SQL
UPDATE param_info SET receipt_date = '2024-05-01 00:00' WHERE id = 1;
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, kind)
  SELECT i, 101, 10, 9, '2024-05-01 00:00'::timestamp + (i - 1) * interval '1 hour', 0 FROM generate_series(2, $job_rows) i;
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, kind)
  SELECT i, 102, 10, 9, '2024-06-01 00:00'::timestamp + (i - $first_live) * interval '10 minutes', 0 FROM generate_series($first_live, $end) i;
INSERT INTO fu_raw SELECT i, f.param_type_id, f.c_type, f.sub_channel, f.data, f.settings FROM fu_raw f, generate_series(2, $((end - 1))) i
  WHERE f.param_info_id = 1;
ANALYZE;
SQL

run=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$run"' EXIT
vek() { (cd "$run" && exec "$build/src/app/vek" -host "$VEK_PGHOST" -name "$VEK_PGDATABASE" -user "$VEK_PGUSER" "$@" >/dev/null 2>&1); }
now() { date +%s.%N; }
# Waits until the query answers non-empty.
until_sql() { until [ -n "$(sql "$1")" ]; do sleep 0.05; done; }
job() { sql "DELETE FROM recalculation; INSERT INTO recalculation (id, source, time_start, time_stop, state, control, created_at)
  VALUES (1, 101, '2024-05-01', '2024-06-01', 1, 1, now())"; }

# The job alone: from its first mark (state 2, running) to its last (3, finished).
job
vek -s "$end" &
until_sql "SELECT 1 FROM recalculation WHERE state = 2"
t0=$(now)
until_sql "SELECT 1 FROM recalculation WHERE state = 3"
t1=$(now)
kill %1; wait || true
job_alone=$(echo "$job_rows / ($t1 - $t0)" | bc -l)

# The live loop alone, over the live rows, ending by itself at the last one.
t0=$(now)
vek -s "$first_live" -stop "$end"
t1=$(now)
live_alone=$(echo "$live_rows / ($t1 - $t0)" | bc -l)

# The live loop again over the same rows (rewritten as the first time), with the job beside
# it from the loop's first row on.
sql "DELETE FROM result_base WHERE param_info_id >= $first_live; DELETE FROM math_history WHERE param_info_id >= $first_live"
job
t0=$(now)
vek -s "$first_live" -stop "$end"
t1=$(now)
live_beside=$(echo "$live_rows / ($t1 - $t0)" | bc -l)
job_done=$(sql "SELECT coalesce(extract(epoch FROM time_calculation - '2024-05-01') / 3600 + 1, 0)::int FROM recalculation WHERE id = 1")

printf 'job alone:                %7.1f rows/s (%d rows)\n' "$job_alone" "$job_rows"
printf 'live loop alone:          %7.1f rows/s (%d rows)\n' "$live_alone" "$live_rows"
printf 'live loop beside the job: %7.1f rows/s; the job did %d rows meanwhile\n' "$live_beside" "$job_done"
