#!/usr/bin/env bash
# fresh_debian.sh COMMAND...: runs each command in a clone of this checkout's HEAD on a minimal
# Debian 12, where nothing is installed that the project does not install itself: no compiler, no
# make, no Python. Stops at the first failure; says the status and the time of each.
#
# Needs root and installs mmdebstrap. The system lies in build/fresh and is made anew every time.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[[ $EUID -eq 0 ]] || {
  echo "fresh: only root can change into another system's root" >&2
  exit 1
}
command -v mmdebstrap >/dev/null || {
  apt-get update -q
  apt-get install -q -y --no-install-recommends mmdebstrap
}

place=$PWD/build/fresh
root=$place/root
certificates=/etc/ssl/certs/ca-certificates.crt
rm -rf "$root"
mkdir -p "$place"
# The mirror that this machine uses, in whichever of the two files names it.
sources=$(cat /etc/apt/sources.list /etc/apt/sources.list.d/debian.sources 2>/dev/null || true)
mirror=$(awk '/^(deb|URIs:) .*http/ && !/security/ {print $2; exit}' <<<"$sources")
mmdebstrap --quiet --variant=minbase --mode=root --include=ca-certificates,git \
  --aptopt='Acquire::Check-Valid-Until "false"' bookworm "$root" "${mirror:-http://deb.debian.org/debian}"
git clone -q . "$root/root/project"

# In a mount namespace of its own, so that no mount outlives the command.
inside() {
  unshare --mount bash -euc '
    mount --make-rprivate /
    mount -t proc proc "$1/proc"
    mount --rbind /dev "$1/dev"
    cp /etc/hosts /etc/resolv.conf "$1/etc/"
    mount --bind "$3" "$1$3"
    exec chroot "$1" env -i HOME=/root PIP_CERT="$3" \
      PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
      bash -c "cd /root/project && $2"' - "$root" "$1" "$certificates"
}

number=0
for command in "$@"; do
  number=$((number + 1))
  log=$place/$number.log
  start=$SECONDS
  status=0
  inside "$command" >"$log" 2>&1 </dev/null || status=$?
  echo "$command: status $status after $((SECONDS - start)) s, log ${log#"$PWD"/}"
  if [[ $status -ne 0 ]]; then
    tail -n 40 "$log"
    exit "$status"
  fi
done
