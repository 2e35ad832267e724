#!/bin/sh
# Installs what is missing, builds the main example and runs it for ten seconds: a station streams its
# channels, a gateway records them, and in the middle the station breaks all connections. Then says what was
# sent, received and lost, and checks it; the exit status tells whether all checks held.
#
# BUILD_DIR names a build that is there already.
set -eu
. "$(dirname "$0")/setup.sh"

channels=4
if [ -n "${BUILD_DIR:-}" ]; then
    examples=$(cd "$BUILD_DIR" && pwd)/Examples
else
    # shellcheck disable=SC2086 # a list of names
    install_missing $BUILD_PACKAGES
    cmake --preset demo
    cmake --build --preset demo
    examples=$PWD/build/demo/Examples
fi

folder=$(mktemp -d)
station=
cleanup() {
    [ -z "$station" ] || kill "$station" 2>/dev/null || true
    rm -rf "$folder"
}
trap cleanup EXIT

# The gateway looks for its component in the folder it runs in.
cd "$examples/Gateway"
./FundoStation --channels $channels --folder "$folder" --port-file "$folder/port" --seconds 60 \
    >"$folder/station.txt" &
station=$!
for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
    [ -e "$folder/port" ] || sleep 0.1
done

# The commands arrive while it runs, as from a console.
status=0
{
    sleep 3
    echo logfilter -logfunction off
    sleep 2
    echo drop
    sleep 3
    echo threads
    echo timers
    echo clients
    echo packets
    sleep 2
    echo quit
} | timeout 40 ./FundoGateway --stations "$(cat "$folder/port"):$channels" --folder "$folder" \
    --log "$folder/gateway.log" >"$folder/gateway.txt" || status=$?
kill "$station"
wait "$station" || status=$?
station=

cat "$folder/gateway.txt"
cat "$folder/station.txt"
identical=0
./FundoStation --compare "$folder" --channels $channels --folder "$folder" >"$folder/compare.txt" || identical=$?
cat "$folder/compare.txt"

failed=0
# check WHAT COMMAND...: prints whether the command held.
check() {
    what=$1
    shift
    if "$@"; then
        echo "ok      $what"
    else
        echo "FAILED  $what"
        failed=1
    fi
}
# has FILE PATTERN: whether a line of a file of the run matches.
has() { grep -q -E "$2" "$folder/$1"; }
count() { grep -c -E "$2" "$folder/$1" || true; }
# total FILE WORD...: sums the number behind the words over all channels.
total() {
    sed -n "s/^$2.* $3 \([0-9]*\).*/\1/p" "$folder/$1" | awk '{ sum += $1 } END { print sum + 0 }'
}

made=$(total station.txt 'station channel' made)
sent=$(total station.txt 'station channel' sent)
received=$(total gateway.txt channel received)
lost=$(total gateway.txt channel lost)
damaged=$(total gateway.txt channel 'crc errors')
echo "frames: $made made, $sent sent, $received received, $lost lost in the gap, $damaged with a wrong CRC"

check "both programs ended in order" [ "$status" -eq 0 ]
check "every channel received frames" [ "$(count gateway.txt '^channel .* received [1-9]')" -eq $channels ]
check "every frame made was received or lost in the gap" [ $((received + lost)) -eq "$made" ]
check "the gap cost frames of every channel" [ "$(count gateway.txt '^channel .* lost [1-9]')" -eq $channels ]
check "no frame had a wrong CRC" [ "$damaged" -eq 0 ]
check "the recordings are what was sent" [ "$identical" -eq 0 ]
check "every channel was opened once before and once after the break" \
    [ "$(count gateway.txt '^channel .* opened 2$')" -eq $channels ]
check "one login for all channels, and one more after the break" has station.txt '^station: logins 2, refused 0, drops 1,'
check "keep-alives were answered" has gateway.txt 'client .* logined since .* 2 logins, [1-9][0-9]* keep-alives'
check "the thread table shows the channels" [ "$(count gateway.txt 'Channel [0-9].*Normal')" -eq $channels ]
check "the timer table shows rates, supervision and keep-alives" \
    [ "$(count gateway.txt ' (Rates|Supervision|KeepAlive) ')" -ge 3 ]
check "nobody missed a deadline" [ "$(count gateway.txt 'past their deadline')" -eq 0 ]
check "all packets but those in flight are back in the pool" has gateway.txt 'packets: [34][0-9]{3} of 4096 KiB free'
check "the log has rolled" [ "$(find "$folder" -name 'gateway.log_*' | wc -l)" -ge 1 ]
exit $failed
