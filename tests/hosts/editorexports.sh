#!/bin/sh
# The editor's module exports its one function and finds the library beside itself; the library needs
# nothing of a window system.
#   editorexports.sh MODULE LIBRARY…
module=$1
shift
fail() { echo "editorexports.sh: $*" >&2; exit 1; }

exported=$(nm -D --defined-only "$module" | awk '{print $3}')
[ "$exported" = CIFSharedImageEditor ] || fail "the module exports $exported"
dynamic=$(readelf -d "$module")
echo "$dynamic" | grep -q 'NEEDED.*libCoreImageFilter.so.2' || fail "the module does not need the library"
echo "$dynamic" | grep -qE 'R(UN)?PATH.*\[\$ORIGIN\]' || fail "the module's run path is not its own folder"
echo "$dynamic" | grep -q NODELETE || fail "the module could be taken out"
for library; do
    # With everything that comes along.
    needed=$(ldd "$library") || fail "ldd failed"
    odd=$(echo "$needed" | grep -iE 'qt|xcb|libX11|wayland|gtk|cairo')
    [ -z "$odd" ] || fail "$library needs $odd"
done
