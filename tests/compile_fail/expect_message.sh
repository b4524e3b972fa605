#!/bin/sh
# Succeeds when the command fails and says MESSAGE on the way.
# Usage: expect_message.sh MESSAGE COMMAND...
message=$1
shift
if output=$("$@" 2>&1); then
    echo "compiled, but must not"
    exit 1
fi
case $output in
    *"$message"*) exit 0 ;;
esac
printf 'refused, but without saying: %s\n%s\n' "$message" "$output"
exit 1
