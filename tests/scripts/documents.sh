#!/usr/bin/env bash
# Every example of the documents but those of the dialogs, from their own text: tests/scripts/documents.sh PROGRAM
export PYTHONDONTWRITEBYTECODE=1
exec python3 "$(dirname "$0")/documents.py" play "$1"
