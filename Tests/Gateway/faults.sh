#!/bin/sh
# faults.sh PROGRAMS CASE: runs the gateway against a station that misbehaves, and says whether the gateway
# told so, went on and ended in order.
set -eu

programs=$1
case=$2
folder=$(mktemp -d)
station=
trap '[ -z "$station" ] || kill "$station" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$programs"

fail() {
    echo "FAILED: $*"
    cat "$folder"/*.txt
    exit 1
}
expect() { grep -q -E "$2" "$folder/$1.txt" || fail "no \"$2\" in the output of the $1"; }

# start OPTION...
start() {
    "$programs/FundoStation" --channels 2 --outage 100 --folder "$folder" --port-file "$folder/port" \
        --seconds 50 "$@" >"$folder/station.txt" 2>&1 &
    station=$!
    while [ ! -e "$folder/port" ]; do sleep 0.05; done
}
# record CHANNELS SECONDS OPTION...: leaves the exit status in $status
record() {
    channels=$1
    seconds=$2
    shift 2
    status=0
    "$programs/FundoGateway" --stations "$(cat "$folder/port"):$channels" --folder "$folder" \
        --seconds "$seconds" "$@" </dev/null >"$folder/gateway.txt" 2>&1 || status=$?
}
compare() {
    kill "$station"
    wait "$station"
    station=
    "$programs/FundoStation" --compare "$folder" --folder "$folder" --channels "$1" >"$folder/compare.txt" ||
        fail "the recordings are not what was sent"
}

case $case in
WrongPassword)
    start
    record 2 1 --password other
    expect gateway 'Component error: User or password not valid! Trying again'
    expect gateway '^channel 1: received 0 frames'
    ;;
GarbageAnswer)
    start --fault garbage
    record 2 2
    expect gateway 'does not keep to the protocol! Trying again'
    expect gateway '^channel 1: received [1-9].* lost 0,'
    compare 2
    ;;
CutInAFrame)
    start --fault cut
    record 2 2
    expect gateway '0: the stream has broken'
    expect gateway '^channel 0: received [1-9].* lost [1-9][0-9]*, crc errors 0, opened 2'
    expect gateway '^channel 1: received [1-9].* lost 0, crc errors 0, opened 1'
    compare 2
    ;;
CorruptFrame)
    start --fault corrupt
    record 2 2
    expect gateway '^channel 0: received [1-9].* lost 1, crc errors 1, opened 1'
    [ "$status" -eq 1 ] || fail "a damaged frame was taken for whole"
    status=0
    ;;
ChannelOutOfRange)
    start
    record 3 2
    expect gateway '2: Gateway: station refuses the channel! Trying again'
    expect gateway '^channel 2: received 0 .* opened 0'
    compare 2
    ;;
NoTallyAndADeadStation)
    start
    cd "$folder"
    { sleep 1; kill -9 "$station"; } &
    record 2 2
    expect gateway 'no component "Tally"'
    expect gateway 'station cannot be reached! Trying again'
    station=
    [ -s channel-0.rec ] || fail "nothing was recorded"
    ;;
*) fail "no such case" ;;
esac
[ "$status" -eq 0 ] || fail "the gateway ended with $status"
