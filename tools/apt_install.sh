#!/usr/bin/env bash
# Installs Debian packages; a failed download is tried again. Run as root.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive
for attempt in 1 2 3; do
    if apt-get update -qq && apt-get install -y -qq --no-install-recommends "$@" >/dev/null; then
        exit 0
    fi
    echo "apt-get failed (attempt $attempt of 3)" >&2
    sleep $((attempt * 5))
done
exit 1
