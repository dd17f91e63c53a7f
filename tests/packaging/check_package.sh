#!/usr/bin/env bash
# check_package.sh BUILD
# Packs BUILD into its .deb in a scratch directory, checks the files and control fields,
# verifies the unit against the unpacked tree, then starts the unpacked launcher with the
# example configuration pointed at the throwaway server: the service must register its
# instance and end on SIGTERM with status 0 and its line in the error log. Nothing outside
# the scratch directory and the test's own database is touched.
set -euo pipefail
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vek-package.XXXXXX")
db="package_$$"
pid=
cleanup() {
  [ -n "$pid" ] && kill -9 "$pid" 2>/dev/null
  psql -q -d postgres -c "DROP DATABASE IF EXISTS $db" >/dev/null 2>&1 || true
  rm -rf "$scratch"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cpack --config "$1/CPackConfig.cmake" -B "$scratch" >"$scratch/cpack.log" 2>&1 ||
  { cat "$scratch/cpack.log" >&2; fail "cpack"; }
deb=$(ls "$scratch"/vek_*.deb)

files=$(dpkg-deb -c "$deb" | awk '$1 !~ /^d/ { print $6 }' | sort | xargs)
[ "$files" = "./usr/bin/vek ./usr/lib/systemd/system/vek@.service ./usr/lib/vek/vek-instance \
./usr/share/doc/vek/examples/plant1.conf ./usr/share/vek/schema.sql" ] || fail "files: $files"
depends=$(dpkg-deb -f "$deb" Depends)
[[ $depends == *libpqxx-6.4* && $depends != *-dev* ]] || fail "Depends: $depends"
dpkg-deb -I "$deb" postinst | grep -q useradd || fail "postinst makes no system user"

root="$scratch/root"
dpkg -x "$deb" "$root"
# The unit's default dependencies name the system's targets: give the scratch root copies.
cp /usr/lib/systemd/system/*.target /usr/lib/systemd/system/*.slice "$root/usr/lib/systemd/system/"
verify=$(systemd-analyze verify --root="$root" vek@plant1.service 2>&1) || fail "unit: $verify"
[ -z "$verify" ] || fail "unit: $verify"

psql -q -d postgres -c "CREATE DATABASE $db TEMPLATE $VEK_PGTEMPLATE" >/dev/null
sed -e "s|^-host .*|-host $VEK_PGHOST|; s|^-name .*|-name $db|; s|^-user .*|-user $VEK_PGUSER|" \
  "$root/usr/share/doc/vek/examples/plant1.conf" >"$scratch/plant1.conf"
mkdir "$scratch/work"
(cd "$scratch/work" && exec "$root/usr/lib/vek/vek-instance" "$scratch/plant1.conf" >stdout 2>&1) &
pid=$!
for _ in $(seq 60); do
  registered=$(psql -qtA -d "$db" -c "SELECT version FROM vek_calculation WHERE id = 1")
  [ -n "$registered" ] && break
  sleep 0.5
done
[[ $registered == *"\"$(dpkg-deb -f "$deb" Version)\""* ]] || fail "registration: '$registered'"
kill -TERM "$pid"
status=0
wait "$pid" || status=$?
pid=
[ "$status" -eq 0 ] || fail "exit status $status"
grep -q '^| signal: 15 : ' "$scratch"/work/*_error.log || fail "no SIGTERM line in the error log"
echo "package $(basename "$deb"): files, depends, unit and the installed service checked"
