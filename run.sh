#!/usr/bin/env bash
# Builds KOV-Controller if necessary and runs it with the given arguments.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/tools/setup.sh"

need_tools "${build_tools[@]}"
build release KOV-Controller
exec "$source_folder/build/release/bin/KOV-Controller" "$@"
