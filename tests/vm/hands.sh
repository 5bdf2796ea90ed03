#!/bin/bash
# The operator of the machine with two tape drives, for QUARLO_TAPE_HANDS (see tests/device/bench.h). Drive 1 is /dev/nst0;
# HAND_DRIVE chooses another.
. /vmout/ops.sh
drive=${HAND_DRIVE:-1}
case $1 in
  newtape) rm -f "/tapes/$2" "/tapes/$2.bad"; newtape "$2" "$3" ;;
  eject) eject "$drive" ;;
  insert) insert "$drive" "$2" ;;
  badblock) badblock "$2" "$3" ;;
  protect) wp "$drive" "$2" ;;
  reset) sg_reset -d "/dev/$(basename "$(ls -d /sys/class/scsi_tape/nst$((drive - 1))/device/scsi_generic/*)")" ;;
  *) echo "hands.sh: unknown: $*" >&2; exit 2 ;;
esac
