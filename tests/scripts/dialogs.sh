#!/usr/bin/env bash
# The page of all dialogs, which are opened for it: tests/scripts/dialogs.sh PROGRAM
export PYTHONDONTWRITEBYTECODE=1
exec python3 "$(dirname "$0")/documents.py" play "$1" docs/dialogs.md
