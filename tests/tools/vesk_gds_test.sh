#!/usr/bin/env bash
# Drives `vesk gds` as a person would and checks its output and exit codes.
# usage: vesk_gds_test.sh VESK_EXECUTABLE SAMPLE_SETTINGS
set -u
vesk=$1
sample=$2
. "$(dirname "$0")/common.sh"

stderr_has() { # stderr_has NAME TEXT: the last command's standard error holds TEXT
    grep -qF -- "$2" "$work/stderr" || { echo "FAIL $1: stderr was: $(cat "$work/stderr")"; failures=$((failures + 1)); }
}

shown=$("$vesk" config show "$sample")

# Both formats carry the settings there and back, sections made as associative arrays.
for format in "" --legacy; do
    expect "encode $format" 0 "" -- "$vesk" gds encode $format "$sample" "$work/s$format.gds"
    expect "decode $format" 0 "$shown" -- "$vesk" gds decode $format "$work/s$format.gds" -
    expect "through pipes $format" 0 "$shown" -- sh -c "\"$vesk\" gds encode $format - - <\"$sample\" | \"$vesk\" gds decode $format - -"
done
expect "decode to a file" 0 "" -- "$vesk" gds decode "$work/s.gds" "$work/back.cfg"
expect "the file reads" 0 "$shown" -- "$vesk" config show "$work/back.cfg"

# The worked example of the current format: true, 2.5 and "abc" in a vector.
printf '\x0b\x03\x07\x03\x00\x00\x00\x00\x00\x00\x04\x40\x06\x03abc' >"$work/vector.gds"
expect "decode bytes" 0 "$(printf '[\n\t1=true\n\t2=2.5\n\t3="abc"\n]')" -- "$vesk" gds decode "$work/vector.gds" -
expect "dump" 0 "offset    bytes                                  meaning
00000000  0b 03                                  vector of 3 elements
00000002  07                                       true
00000003  03 00 00 00 00 00 00 04 40               double 2.5
0000000c  06 03 61 62 63                           string \"abc\"" -- "$vesk" gds dump "$work/vector.gds"

# An array without a creation name and an object with its trailer, in the dump.
printf '\x0c\x01\x02\x01a\x09\x01X\x07\x0a' >"$work/array.gds"
expect "dump of an array" 0 "offset    bytes                                  meaning
00000000  0c 01                                  array of 1 pair, no creation name
00000002  02                                       default: null
00000003  01 61                                    key \"a\"
00000005  09 01 58                                 object \"X\"
00000008  07                                         true
00000009  0a                                       end of object \"X\"" -- "$vesk" gds dump "$work/array.gds"

# Damaged streams: the reader's messages, exit 1.
head -c 20 "$work/s.gds" >"$work/cut.gds"
expect "decode a cut stream" 1 "" -- "$vesk" gds decode "$work/cut.gds" -
stderr_has "reader's message" "ReadString: Failed to read string."
expect "dump a cut stream" 1 "$(printf 'offset    bytes                                  meaning\n00000000  09 0a 41 73 73 6f 63 41 72 72 61 79    object "AssocArray"')" -- "$vesk" gds dump "$work/cut.gds"
stderr_has "dump's complaint" "at offset 0xc: the data ends inside a string (8 bytes wanted, 6 left)"
cat "$work/vector.gds" "$work/vector.gds" >"$work/two.gds"
expect "bytes after the value" 1 "" -- "$vesk" gds decode "$work/two.gds" -
stderr_has "trailing bytes" "17 bytes follow the value at offset 0x11"
expect "the wrong format" 1 "" -- "$vesk" gds decode --legacy "$work/vector.gds" -
expect "dump in the wrong format" 1 "offset    bytes                                  meaning" -- "$vesk" gds dump --legacy "$work/vector.gds"
stderr_has "unknown word" "unknown type word 50791179"

expect "help" 0 "usage: vesk gds dump [--legacy] IN" -- "$vesk" gds dump --help
expect "usage error" 2 "" -- "$vesk" gds encode "$sample"
expect "unknown option" 2 "" -- "$vesk" gds decode --old "$work/s.gds" -
expect "unknown subcommand" 2 "" -- "$vesk" gds frobnicate

finish "vesk gds"
