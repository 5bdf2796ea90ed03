# Played inside the virtual machine by run.sh: the device tests against /dev/nst0.
. /vmout/tape-up.sh 2>&1
cp "$QUARLO_SOURCE/tests/vm/hands.sh" /tmp/hands.sh && chmod +x /tmp/hands.sh
export QUARLO_TAPE_DEVICE=/dev/nst0 QUARLO_TAPE_HANDS=/tmp/hands.sh
"$QUARLO_BUILD/tests/device_tests" --gtest_filter="${FILTER:-*genuine*}"
