# Sourced by the scripts that run Windows programs: one quiet Wine environment, never the user's.
# usage: . wine-env.sh PREFIX_FOLDER
# ZEB_WINEDEBUG switches Wine's own messages on, for example ZEB_WINEDEBUG=+ole.
WINEPREFIX=$(mkdir -p "$1" && cd "$1" && pwd)
export WINEPREFIX
export WINEARCH=win64
export WINEDEBUG=${ZEB_WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe,explorer.exe=d'
unset DISPLAY

# Keeps the prefix's Wine server up until the calling script stops it: a server that is just ending turns away
# the program that starts next, and two programs that both have to start one fall over each other's temporary
# folder. So the server comes first, then a program that stays, and then one that waits until Wine's own services
# run. They keep the error output of whoever has started them, which must not be a pipe that somebody reads to its
# end. Ends what runs in the prefix first, and is to be called only where that has been made.
hold_wine() {
  stop_wine
  wineserver -p </dev/null >/dev/null 2>&1
  exec {wine_hold}> >(exec wine cmd.exe /q >/dev/null 2>&1)
  wine cmd.exe /c exit </dev/null >/dev/null 2>&1
}

# The processes that run in the prefix, by the host's numbers.
prefix_processes() {
  local folder
  for folder in /proc/[0-9]*; do
    if [[ $(readlink "$folder/exe") == */wine* ]] && grep -qzxF "WINEPREFIX=$WINEPREFIX" "$folder/environ"; then
      echo "${folder#/proc/}"
    fi
  done 2>/dev/null
}

# Ends everything that runs in the prefix, and nothing else.
stop_wine() {
  local process
  wineserver -k 2>/dev/null || true
  if ! timeout 30 wineserver -w 2>/dev/null; then
    for process in $(prefix_processes); do
      kill -KILL "$process" 2>/dev/null || true
    done
  fi
}
