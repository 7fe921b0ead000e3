#!/bin/sh
# Runs the little host at the machine's own instruction-set level and at the baseline: each must load the
# library built for it, say what is expected, and both must make the same bytes.
#   host.sh HOST BUNDLE EXPECTED FOLDER LEVELS
host=$1 bundle=$2 expected=$3 folder=$4 levels=$5
mkdir -p "$folder" || exit 1
fail() { echo "host.sh: $*" >&2; exit 1; }

baseline='glibc.cpu.hwcaps=-AVX2_Usable,-AVX2'
env -u GLIBC_TUNABLES "$host" "$bundle" "$folder" >"$folder/own.txt" || fail "the host failed"
GLIBC_TUNABLES=$baseline "$host" "$bundle" "$folder" >"$folder/baseline.txt" || fail "the host failed at the baseline"

# The first line names the library; the 16-digit ones are fingerprints of pixels.
for run in own baseline; do
    sed -e 1d -e '/ [0-9a-f]\{16\}$/d' "$folder/$run.txt" | diff "$expected" - || fail "unexpected answers ($run)"
    [ "$(grep -c ' [0-9a-f]\{16\}$' "$folder/$run.txt")" = 5 ] || fail "not all pictures were made ($run)"
    ! grep -q ' cbf29ce484222325$' "$folder/$run.txt" || fail "an empty picture ($run)"
done
sed 1d "$folder/own.txt" >"$folder/a.txt"
sed 1d "$folder/baseline.txt" | diff "$folder/a.txt" - || fail "the two levels differ"

head -n 1 "$folder/baseline.txt" | grep -q hwcaps && fail "the baseline was not forced"
case $levels in
*v3*)
    # Only where the processor has it.
    if grep -qw avx2 /proc/cpuinfo && grep -qw fma /proc/cpuinfo && grep -qw bmi2 /proc/cpuinfo; then
        head -n 1 "$folder/own.txt" | grep -q glibc-hwcaps/x86-64-v3/ || fail "the AVX2 library was not loaded"
    fi ;;
esac
cat "$folder/own.txt"
head -n 1 "$folder/baseline.txt"
