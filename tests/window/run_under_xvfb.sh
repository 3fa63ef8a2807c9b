#!/bin/sh
# Runs the window tests under a real X server (Xvfb) with Qt's X11 platform.
if ! command -v xvfb-run >/dev/null 2>&1; then
    echo "xvfb-run fehlt: die Fenstertests unter X11 brauchen das Paket xvfb (apt-get install xvfb xauth)." >&2
    exit 1
fi
exec xvfb-run -a -s "-screen 0 1280x1024x24" env QT_QPA_PLATFORM=xcb "$@"
