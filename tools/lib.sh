# shellcheck shell=bash
# What run, test and dev share: installing packages, configuring, building. Sourced, never run. Nothing
# here writes to standard output.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
me=$(basename "$0")
logs=$root/build/log

say() { printf '%s: %s\n' "$me" "$*" >&2; }
die() {
    say "$*"
    exit 1
}

cores() { nproc 2>/dev/null || echo 2; }

# packages_of GROUP…: the names of packaging/packages.txt, one a line.
packages_of() {
    awk -v groups=" $* " '$1 !~ /^#/ && index(groups, " " $1 " ") { print $2 }' \
        "$root/packaging/packages.txt" | sort -u
}

# The packages among the arguments that are not installed.
missing_of() {
    dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null |
        awk -v wanted="$*" '$1 == "installed" { have[$2] }
            END { n = split(wanted, w, " "); for (i = 1; i <= n; ++i) if (!(w[i] in have)) print w[i] }'
}

# install_packages GROUP…: installs what is missing of these groups.
install_packages() {
    command -v dpkg-query >/dev/null || return 0 # no Debian: the configuration says what is missing
    local wanted missing
    mapfile -t wanted < <(packages_of "$@")
    mapfile -t missing < <(missing_of "${wanted[@]}")
    ((${#missing[@]})) || return 0

    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300)
    if (($(id -u) != 0)); then
        command -v sudo >/dev/null ||
            die "Debian packages are missing, and installing them needs root or sudo: ${missing[*]}"
        # Without a terminal nobody can answer a password prompt.
        [[ -t 0 ]] || sudo -n true 2>/dev/null ||
            die "Debian packages are missing, and sudo asks for a password: ${missing[*]}"
        apt=(sudo "${apt[@]}")
    fi
    say "installing Debian packages: ${missing[*]}"
    logged install install_now
}

# Package lists are fetched only when what is at hand does not do.
install_now() {
    local install=("${apt[@]}" install -y --no-install-recommends "${missing[@]}")
    "${install[@]}" </dev/null || { "${apt[@]}" update </dev/null && "${install[@]}" </dev/null; }
}

# logged NAME COMMAND…: runs it with its output in build/log/NAME.log; the end of that is shown when it
# fails, and a word is said when it takes its time.
logged() {
    local log=$logs/$1.log status=0 notice
    mkdir -p "$logs"
    (
        sleep 3 >/dev/null 2>&1
        say "$1 … (output in ${log#"$PWD"/})"
    ) &
    notice=$!
    "${@:2}" >"$log" 2>&1 || status=$?
    kill "$notice" 2>/dev/null || true
    wait "$notice" 2>/dev/null || true
    if ((status)); then
        # From the first complaint on; without one, how it ended.
        if ! grep -E -m 1 -A 40 '^FAILED|(^|[^-])[Ee]rror[: ]' "$log" >&2; then
            tail -n 20 "$log" >&2
        fi
        die "$1 failed; all of its output is in $log"
    fi
}

# configure PRESET [CMAKE-ARGUMENT…]: once; later changes of CMake files are ninja's business.
configure() {
    local preset=$1 tree=$root/build/$1 launcher=()
    shift
    if [[ -e $tree/build.ninja && ! $root/CMakePresets.json -nt $tree/build.ninja && $# -eq 0 ]]; then
        return 0
    fi
    command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    logged "configure-$preset" cmake -S "$root" --preset "$preset" "${launcher[@]}" "$@"
    touch "$tree/build.ninja"
}

# build PRESET [TARGET…]
build() {
    export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$root} CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
    local preset=$1
    shift
    logged "build-$preset" ninja -C "$root/build/$preset" -j "$(cores)" "$@"
}

passed=0 failed=0 skipped=0

# run_tests PRESET PATTERN [FOLDER…]: runs the tests whose names match (all for ""), of these folders
# only if some are given, and adds to the counts.
run_tests() {
    local preset=$1 pattern=$2 status=0 bad good skip
    local tree=$root/build/$preset report=$root/build/$preset/tests.xml choice=()
    shift 2
    [[ -z $pattern ]] || choice+=(-R "$pattern")
    (($# == 0)) || choice+=(-L "^($(IFS='|' && echo "$*"))\$")
    rm -f "$report"
    say "running the tests of build/$preset"
    ASAN_OPTIONS=${ASAN_OPTIONS:-detect_stack_use_after_return=1} \
        UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1} \
        ctest --test-dir "$tree" -j "$(cores)" --output-on-failure --output-junit "$report" \
        "${choice[@]}" >"$logs/test-$preset.log" 2>&1 || status=$?
    [[ -e $report ]] || {
        tail -n 30 "$logs/test-$preset.log" >&2
        die "the tests of build/$preset did not run"
    }
    # A test that skips itself is no failure; one that could not be started is.
    read -r good bad skip < <(awk '
        /<testcase / { state = $0; sub(/.* status="/, "", state); sub(/".*/, "", state); ++n[state] }
        /<skipped message="SKIP_/ { ++n["skipped"] }
        END { print n["run"] + 0, n["fail"] + n["disabled"] + n["notrun"] - n["skipped"], n["skipped"] + 0 }
        ' "$report")
    if ((status && !bad)); then
        say "ctest ended with status $status"
        bad=1
    fi
    if ((bad)); then
        grep -vE '^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test .* (Passed|\*\*\*Skipped) ' "$logs/test-$preset.log" || true
    else
        grep 'tests passed\|No tests were found' "$logs/test-$preset.log" || true
    fi
    passed=$((passed + good)) failed=$((failed + bad)) skipped=$((skipped + skip))
}

# finish_tests PATTERN: prints the closing count and ends the script.
finish_tests() {
    if ((passed + failed + skipped == 0)); then
        say "no test matches '$1'"
        failed=1
    fi
    ((!skipped)) || say "$skipped skipped themselves"
    echo "$passed passed, $failed failed"
    exit $((failed > 0))
}

# The folders whose tests also run under sanitizers in the quick tier.
sanitized_tests() {
    local folder
    for folder in foundation imaging drawing codecs plugin fuzz; do
        [[ -e $root/tests/$folder/CMakeLists.txt ]] && echo "$folder"
    done
}
