#!/usr/bin/env bash
# Builds the release preset, measures, and prints one table of all figures: name, value, unit, the machine's own limit,
# their ratio. While it measures it tells each program's figures on the error channel, with what else was measured.
# docs/performance.md says how each figure is measured.
#   scripts/bench.sh [--json FILE] [--filter REGEX]
set -euo pipefail
json=""
filter="."
while [ $# -gt 0 ]; do
    case "$1" in
    --json) json="$(realpath -m "$2")"; shift 2 ;;
    --filter) filter="$2"; shift 2 ;;
    *) echo "usage: scripts/bench.sh [--json FILE] [--filter REGEX]" >&2; exit 2 ;;
    esac
done
cd "$(dirname "$0")/.."
scripts/setup.sh >&2
cmake --preset release >/dev/null
cmake --build --preset release >&2
export KORVANE_BENCH_DATA="$PWD/build/bench-data"
load=$(cut -d ' ' -f 1 /proc/loadavg)
figures="$(mktemp -d)"
trap 'rm -rf "$figures"' EXIT
for program in build/release/benchmarks/*_bench; do
    name=$(basename "$program")
    run=("$program" "--benchmark_filter=$filter" "--figures=$figures/$name")
    if [ -z "${DISPLAY:-}" ] && { [ "$name" = application_bench ] || [ "$name" = start_bench ]; }; then
        run=(xvfb-run --auto-servernum --server-args="-screen 0 1440x960x24" "${run[@]}")
    fi
    "${run[@]}" 2>"$figures/$name.log" | cat >&2 || { cat "$figures/$name.log" >&2; exit 1; }
done
if [ "$filter" = "." ]; then
    for name in startup idle_cpu decode_evt3 decode_evt3_sparse decode_evt2 decode_evt21 encode_evt3 encode_evt3_sparse \
        bytes_per_event cut cut_two_cores index_scan open_1gb seek_window_p99 add_events \
        take_frame fill_panels export_speed play_rss live_cpu record_cpu next_click play_ticks tick_work_p99 \
        align_aps convert_aps compose_fusion count_events fusion_ticks fusion_tick_work_p99 fusion_live \
        filter_roi filter_trail filter_antiflicker filter_rate \
        generate_street_10m generate_street_20m generate_turntable; do
        grep -qh "^\"$name\":" "$figures"/*_bench || { echo "The figure $name is missing." >&2; exit 1; }
    done
fi
processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
memory=$(awk '/^MemTotal/ { printf "%.0f", $2 / 1048576 }' /proc/meminfo)
printf '%s: %s, %s processors, %s GiB, load %s\n\n' "$(date -u +%F)" "$processor" "$(nproc)" "$memory" \
    "$load"
printf '| %-22s | %12s | %-16s | %12s | %8s |\n' figure value unit limit ratio
printf '|:%22s-|-%12s:|:%16s-|-%12s:|-%8s:|\n' "" "" "" "" "" | tr ' ' '-'
sed -E 's/^"([^"]*)": \{"value": ([^,]*), "unit": "([^"]*)", "limit": ([^,]*), "ratio": ([^}]*)\}$/\1|\2|\3|\4|\5/' \
    "$figures"/*_bench | while IFS='|' read -r name value unit limit ratio; do
    printf '| %-22s | %12.3f | %-16s | %12.3f | %8.3f |\n' "$name" "$value" "$unit" "$limit" "$ratio"
done
if [ -n "$json" ]; then
    { echo "{"; cat "$figures"/*_bench | sed '$!s/$/,/; s/^/  /'; echo "}"; } > "$json"
fi
