#!/usr/bin/env bash
# Runs the libFuzzer targets built by the fuzz preset:
#   cmake --preset fuzz && cmake --build build/fuzz -j2
#
#   fuzz/run.sh TARGET [SECONDS]   one target for SECONDS (default 600)
#   fuzz/run.sh --smoke [RUNS]     every target for RUNS executions each
#                                  (default 5000; a quarter of that for the
#                                  catalog target, which writes files), as
#                                  CI does
#
# The committed seeds in fuzz/corpus/TARGET are only read; what a run
# learns goes to a scratch corpus outside the repository,
# ${ORU_FUZZ_WORK:-${TMPDIR:-/tmp}/oru-fuzz}/TARGET, kept between runs, and
# crashes to .../TARGET/artifacts/.  The last lines of a long run are
# libFuzzer's final statistics (executions, exec/s) and its last status
# line (cov:, ft:, corp:).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
bin="${ORU_FUZZ_BUILD:-$here/../build/fuzz}/fuzz"
work="${ORU_FUZZ_WORK:-${TMPDIR:-/tmp}/oru-fuzz}"
targets=(fuzz_utf fuzz_normalize fuzz_convert fuzz_catalog fuzz_po fuzz_decparse fuzz_decops
  fuzz_path fuzz_lookup)
# Leaks are errors; a smaller quarantine keeps long runs well under the
# fuzzer's memory limit.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:quarantine_size_mb=64:malloc_context_size=20}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"

run() {  # target, libFuzzer options...
  local t="$1"
  shift
  [[ -x "$bin/$t" ]] || { echo "$bin/$t is not built (cmake --preset fuzz)" >&2; return 1; }
  mkdir -p "$work/$t/corpus" "$work/$t/artifacts"
  local dict=()
  [[ -f "$here/$t.dict" ]] && dict=("-dict=$here/$t.dict")
  "$bin/$t" "${dict[@]}" -artifact_prefix="$work/$t/artifacts/" -print_final_stats=1 "$@" \
    "$work/$t/corpus" "$here/corpus/$t"
}

case "${1:-}" in
  --smoke)
    for t in "${targets[@]}"; do
      runs="${2:-5000}"
      [[ "$t" == fuzz_catalog ]] && runs=$((runs / 4))
      echo "--- $t ($runs runs)"
      # A fresh scratch corpus each time, so the smoke run is reproducible.
      rm -rf "$work/$t/corpus"
      mkdir -p "$work/$t"
      if ! run "$t" -runs="$runs" -seed=1 -timeout=20 >"$work/$t/smoke.log" 2>&1; then
        tail -40 "$work/$t/smoke.log" >&2
        echo "$t failed (log: $work/$t/smoke.log)" >&2
        exit 1
      fi
      grep -E '^Done' "$work/$t/smoke.log" || true
    done
    ;;
  "" | -h | --help)
    sed -n '2,16p' "$0" | sed 's/^# \{0,1\}//'
    echo "targets: ${targets[*]}"
    ;;
  *)
    run "$1" -max_total_time="${2:-600}"
    ;;
esac
