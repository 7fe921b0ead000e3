#!/bin/sh
# What the library exports: to everybody the functions of the header, to its own programs our namespaces,
# and nothing else; the bundle itself exports nothing.
#   exports.sh LIBRARY BUNDLE HEADER
library=$1 bundle=$2 header=$3
fail() { echo "exports.sh: $*" >&2; exit 1; }

symbols=$(nm -D --defined-only --with-symbol-versions "$library") || fail "nm failed"

declared=$(sed -e 's|//.*||' -e 's|^#.*||' "$header" |
    grep -oE '\b(CIF[A-Za-z]+|sortShadingMateriaNames)\(' | tr -d '(' | sort -u)
public=$(echo "$symbols" | grep -E '@@CIF_2$' | awk '{sub(/@@.*/, "", $3); print $3}' | sort -u)
[ -n "$declared" ] || fail "no function in $header"
# Whatever is in one list only.
odd=$(printf '%s\n%s\n' "$declared" "$public" | sort | uniq -u)
[ -z "$odd" ] || fail "declared or exported, but not both:
$odd"

# The version nodes themselves are absolute symbols.
others=$(echo "$symbols" | grep -vE '@@CIF_2$| A CIF_')
echo "$others" | grep -v '@@CIF_PRIVATE_' | grep . && fail "symbols without a version of ours"
foreign=$(echo "$others" | awk '{sub(/@@.*/, "", $3); print $3}' | c++filt |
    grep -vE '^((typeinfo|typeinfo name|vtable|VTT|guard variable) for |(non-virtual|virtual) thunk to )?(foundation|imaging|drawing|codecs|builtin|filters|generators|plugin|CIFMain|ICoreImageFilter|GLIF[A-Za-z_0-9]*)(::|$)')
[ -z "$foreign" ] || fail "foreign symbols:
$foreign"

own=$(nm -D --defined-only "$bundle" | grep -vE ' (_init|_fini)$')
[ -z "$own" ] || fail "the bundle has symbols of its own: $own"
readelf -d "$bundle" | grep -q 'NEEDED.*libCoreImageFilter.so.2' || fail "the bundle does not need the library"
readelf -d "$bundle" | grep -qE 'R(UN)?PATH.*\[\$ORIGIN\]' || fail "the bundle's run path is not its own folder"
