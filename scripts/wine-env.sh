# Sourced by the scripts that run Windows programs: one quiet Wine environment, never the user's.
# usage: . wine-env.sh PREFIX_FOLDER
# ZEB_WINEDEBUG switches Wine's own messages on, for example ZEB_WINEDEBUG=+ole.
WINEPREFIX=$(mkdir -p "$1" && cd "$1" && pwd)
export WINEPREFIX
export WINEARCH=win64
export WINEDEBUG=${ZEB_WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe,explorer.exe=d'
unset DISPLAY
