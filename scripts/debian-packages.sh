# Sourced by the scripts that install packages of Debian 12.

# Installs those that are missing, with progress; says in one sentence what is lacking where it cannot.
# usage: install_missing WHAT SECONDS PACKAGE ...
# WHAT begins the lines that it writes, SECONDS is how long the installation usually takes.
install_missing() {
  local what=$1 seconds=$2 package status log missing=() as_root=()
  shift 2
  for package; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    [ -z "${STEP:-}" ] || echo "$STEP$what: all there"
    return
  fi

  command -v apt-get >/dev/null || {
    echo "The packages of Debian 12 are needed, and apt-get is not there. Missing: ${missing[*]}" >&2
    exit 1
  }
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "These packages are missing: ${missing[*]}" >&2
      echo "Install them as root (apt-get install --no-install-recommends ...), then run this again." >&2
      exit 1
    }
    as_root=(sudo)
  fi

  log=$(mktemp)
  trap 'rm -f "'"$log"'"' EXIT
  echo "${STEP:-}$what that are missing: ${missing[*]}"
  if ! apt_install </dev/null 2>&1 | tee "$log" | percent | scripts/progress "Installing packages (usually $seconds s)"; then
    tail -n 20 "$log" >&2
    echo "The packages could not be installed; the lines above say why." >&2
    exit 1
  fi
}

apt_install() { # with as_root and missing of the caller
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends -o APT::Status-Fd=1 "${missing[@]}"
}

# Half of the way is the download, the other half the installation.
percent() {
  local kind number
  while IFS=: read -r kind _ number _; do
    case $kind in
      dlstatus) echo "@$((${number%.*} / 2))/100%" ;;
      pmstatus) echo "@$((50 + ${number%.*} / 2))/100%" ;;
    esac
  done
}
