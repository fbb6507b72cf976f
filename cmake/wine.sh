#!/bin/sh
# wine.sh PREFIX PROGRAM [ARGUMENT...]: runs a Windows program under Wine, without a display and
# with the configuration in the folder PREFIX. Wine makes that at its first start.
set -eu
export WINEPREFIX="$1" WINEDEBUG=-all DISPLAY= WINEDLLOVERRIDES=mscoree,mshtml=
shift
# Debian's `wine` looks for a 32-bit half first, and complains that there is none.
PATH=$PATH:/usr/lib/wine exec wine64 "$@"
