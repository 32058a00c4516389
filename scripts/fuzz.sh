# Sourced by ./check: fuzz SECONDS.

fuzz_packages=(clang libclang-rt-14-dev)
longest_fuzzing=86400 # s, each harness

# Runs one harness and prints its line; fails when it found something.
fuzz_one() {
    local name=$1 seconds=$2 build=$3
    local log=$build/logs/$name.log findings=$build/findings/$name grown=$build/grown/$name
    mkdir -p "$findings" "$grown"
    local begin=$SECONDS status=0
    # Whole paths, because harnesses work in a folder of their own.
    "$build/bin/$name" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$findings/" "$grown" "$PWD/fuzz/corpus/${name%_fuzz}" >"$log" 2>&1 || status=$?
    local took=$((SECONDS - begin)) executions
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    # Without the statistics of the end, the last line that counts.
    executions=${executions:-$(sed -n 's/^#\([0-9]*\)\t.*/\1/p' "$log" | tail -1)}
    executions=${executions:-0}
    local line
    line=$(printf '%-18s %6d s %12d executions %8d per second' "$name" "$took" "$executions" \
        $((executions / (took > 0 ? took : 1))))
    if [ "$status" -eq 0 ]; then
        echo "$line   nothing found"
    else
        echo "$line   FOUND: $(sed -n 's/^.*Test unit written to //p' "$log" | tail -1) (log: $log)"
        return 1
    fi
}

# Builds every harness and runs each for SECONDS, two at a time. What they find stays in build/fuzz/findings, and what
# they learned in build/fuzz/grown, from where the next run goes on.
fuzz() {
    local seconds=$1
    if ! [[ $seconds =~ ^[1-9][0-9]{0,4}$ ]] || [ "$seconds" -gt $longest_fuzzing ]; then
        echo "./check: --fuzz needs a whole number of seconds from 1 to $longest_fuzzing, not '$seconds'" >&2
        exit 2
    fi
    install_missing "${build_packages[@]}" "${test_packages[@]}" "${fuzz_packages[@]}"
    local build=$PWD/build/fuzz harnesses=() source
    for source in fuzz/*_fuzz.cpp; do
        harnesses+=("$(basename "$source" .cpp)")
    done
    say "Building (fuzz)"
    cmake --preset fuzz
    cmake --build --preset fuzz --target "${harnesses[@]}"

    say "Fuzzing with ${#harnesses[@]} harnesses, $seconds s each"
    mkdir -p "$build/logs"
    local running=0 failed=0 name
    for name in "${harnesses[@]}"; do
        if [ "$running" -eq 2 ]; then
            wait -n || failed=1
            running=$((running - 1))
        fi
        fuzz_one "$name" "$seconds" "$build" &
        running=$((running + 1))
    done
    while [ "$running" -gt 0 ]; do
        wait -n || failed=1
        running=$((running - 1))
    done
    if [ "$failed" -ne 0 ]; then
        echo "./check: something was found; the inputs are in build/fuzz/findings" >&2
        exit 1
    fi
}
