#!/usr/bin/env bash
# Copies the project's files, those not yet committed too, into the folder $1. Also works in such a copy.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p "$1"
if [ -e .git ]; then
    # A file that is deleted but still listed is left out.
    git ls-files -co --exclude-standard | while IFS= read -r file; do [ ! -e "$file" ] || printf '%s\0' "$file"; done |
        xargs -0 cp --parents -t "$1"
else
    tar --exclude=./build -cf - . | tar -xf - -C "$1"
fi
