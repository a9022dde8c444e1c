#!/usr/bin/env bash
# Builds the reference in the folder $1: its pages are in html/ there.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
TQ_DOCS_OUTPUT=$1
TQ_VERSION=$(sed -n 's/.*kVersion.*"\(.*\)".*/\1/p' include/TqOsBase/Version.h)
export TQ_DOCS_OUTPUT TQ_VERSION
mkdir -p "$1"

# Doxygen's own header, with the switch of light and dark and the buttons that copy code.
doxygen -w html "$1/header.html" "$1/unused.html" "$1/unused.css" >/dev/null
sed -i 's|^</head>|<script src="$relpath^doxygen-awesome-darkmode-toggle.js"></script>\
<script src="$relpath^doxygen-awesome-fragment-copy-button.js"></script>\
<script>DoxygenAwesomeDarkModeToggle.init(); DoxygenAwesomeFragmentCopyButton.init();</script>\
</head>|' "$1/header.html"
doxygen docs/Doxyfile
rm "$1/header.html" "$1/unused.html" "$1/unused.css"
