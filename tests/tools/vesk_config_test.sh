#!/usr/bin/env bash
# Drives `vesk config` as a person would and checks its output and exit codes.
# usage: vesk_config_test.sh VESK_EXECUTABLE SAMPLE_SETTINGS
set -u
vesk=$1
sample=$2
. "$(dirname "$0")/common.sh"

cp "$sample" "$work/settings.cfg"
cfg=$work/settings.cfg

expect "get a string" 0 "Vesk demo" -- "$vesk" config get "$cfg" window title
expect "get a number" 0 "1024" -- "$vesk" config get "$cfg" window width
expect "get a boolean" 0 "false" -- "$vesk" config get "$cfg" window maximised
expect "get by dotted path" 0 "2.5" -- "$vesk" config get "$cfg" network timeout
expect "get a missing entry" 1 "" -- "$vesk" config get "$cfg" window depth
expect "keys of a section" 0 "$(printf 'height\nmaximised\ntitle\nwidth')" -- "$vesk" config keys "$cfg" window
expect "get a vector element" 0 "/home/user/plan.cfg" -- "$vesk" config get "$cfg" recent 2
expect "keys of a vector" 0 "$(printf '1\n2')" -- "$vesk" config keys "$cfg" recent
expect "keys of the root" 0 "$(printf 'network\nrecent\nwindow')" -- "$vesk" config keys "$cfg"

expect "set infers a number" 0 "" -- "$vesk" config set "$cfg" window width 800
expect "read back the number" 0 "800" -- "$vesk" config get "$cfg" window width
expect "set infers a boolean" 0 "" -- "$vesk" config set "$cfg" a/b/c flag true
expect "sections were created" 0 "true" -- "$vesk" config get "$cfg" a.b.c flag
expect "set a forced string" 0 "" -- "$vesk" config set "$cfg" window title 42 --string
expect "string stays a string" 0 "42" -- "$vesk" config get "$cfg" window title
expect "set a bad number" 2 "" -- "$vesk" config set "$cfg" window width wide --number
expect "other entries kept" 0 "768" -- "$vesk" config get "$cfg" window height

expect "check reads" 0 "" -- "$vesk" config check "$cfg" "$sample"
printf '[\n  a=1\n  b=\n]\n' >"$work/broken.cfg"
expect "check a broken file" 1 "" -- "$vesk" config check "$cfg" "$work/broken.cfg"
grep -q "at line 4 in $work/broken.cfg" "$work/stderr" || { echo "FAIL check message: $(cat "$work/stderr")"; failures=$((failures + 1)); }
expect "set leaves a broken file alone" 1 "" -- "$vesk" config set "$work/broken.cfg" x y 1
grep -q "b=" "$work/broken.cfg" || { echo "FAIL broken file was rewritten"; failures=$((failures + 1)); }

expect "show from standard input" 0 "$(printf '[\n\tx=1\n]')" -- sh -c "printf '[ x=1 ]' | \"$vesk\" config show -"
expect "usage error" 2 "" -- "$vesk" config get "$cfg"
expect "unknown subcommand" 2 "" -- "$vesk" config frobnicate
expect "help" 0 "usage: vesk config get FILE SECTION KEY" -- "$vesk" config get --help

# The shown text reads back as the same value.
"$vesk" config show "$cfg" >"$work/shown.cfg"
expect "shown text reads" 0 "800" -- "$vesk" config get "$work/shown.cfg" window width

finish "vesk config"
