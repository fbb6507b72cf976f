# Another Debian in a folder, for what is to be shown on a system that this machine is not. Sourced by
# the commands that make one; needs root and installs mmdebstrap.

[[ $EUID -eq 0 ]] || {
  echo "$(basename "$0" .sh): only root can change into another system's root" >&2
  exit 1
}
command -v mmdebstrap >/dev/null || {
  apt-get update -q
  apt-get install -q -y --no-install-recommends mmdebstrap
}

# make_root SUITE FOLDER OPTION...: a system, made anew. A mirror's index may be past its date; its
# signature is checked.
make_root() {
  local suite=$1 root=$2
  shift 2
  rm -rf "$root"
  mkdir -p "$(dirname "$root")"
  mmdebstrap --quiet --mode=root --aptopt='Acquire::Check-Valid-Until "false"' "$@" \
    "$suite" "$root" "$(tools/debian_mirror.sh)"
}

# clone_into ROOT: this checkout's HEAD, in /root/project.
clone_into() {
  rm -rf "$1/root/project"
  git clone -q . "$1/root/project"
}

# inside ROOT COMMAND: runs it in the clone or, when the root has none, in this checkout, under the
# same name. In a mount namespace of its own, so that no mount outlives the command.
inside() {
  local certificates=/etc/ssl/certs/ca-certificates.crt project=/root/project
  [[ -d $1$project ]] || project=$PWD
  unshare --mount bash -euc '
    mount --make-rprivate /
    mkdir -p "$1/proc" "$1/dev" "$1/etc"
    mount -t proc proc "$1/proc"
    mount --rbind /dev "$1/dev"
    cp /etc/hosts /etc/resolv.conf "$1/etc/"
    mkdir -p "$(dirname "$1$3")"
    touch "$1$3"
    mount --bind "$3" "$1$3"
    [[ $4 == /root/project ]] || { mkdir -p "$1$4"; mount --bind "$4" "$1$4"; }
    exec chroot "$1" env -i HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive PIP_CERT="$3" \
      PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
      bash -euo pipefail -c "cd \"$4\" && $2"' - "$1" "$2" "$certificates" "$project"
}

# step ROOT LOG NAME COMMAND: inside the root, into a log; says the status and the time, and stops at
# a failure.
step() {
  local root=$1 log=$2 name=$3 start=$SECONDS status=0
  inside "$root" "$4" >"$log" 2>&1 </dev/null || status=$?
  echo "$name: status $status after $((SECONDS - start)) s, log ${log#"$PWD"/}"
  [[ $status -eq 0 ]] || {
    tail -n 40 "$log"
    exit "$status"
  }
}
