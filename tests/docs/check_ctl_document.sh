#!/usr/bin/env bash
# Follows docs/orvantactl.md in a folder of its own, with the programs of a build.
#
# usage: check_ctl_document.sh DOCUMENT PROGRAM...
set -euo pipefail

document=$(readlink -f "$1")
here=$(readlink -f "$(dirname "$0")")
for program in "${@:2}"; do
    PATH=$(readlink -f "$(dirname "$program")"):$PATH
done
export PATH
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT
"$here/run_document.sh" "$document"
