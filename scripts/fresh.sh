#!/usr/bin/env bash
# Runs the README's two commands, or COMMAND, as on a fresh machine: on a new root of a Debian release that has git, a
# clone of the last commit, and nothing else. The root is removed afterwards. Needs to be root.
#
#   scripts/fresh.sh RELEASE [COMMAND…]
#
# RELEASE is a name that debootstrap knows, such as bookworm (12) or trixie (13). COMMAND runs in the folder of the
# clone: scripts/fresh.sh trixie scripts/test.sh mingw-ucrt

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

(($# > 0)) || wrong_arguments "needs the name of a Debian release"
release=$1
shift
(($# > 0)) || set -- bash -c 'scripts/demo.sh && scripts/test.sh'
((EUID == 0)) || fail "must be run as root, which debootstrap and chroot need"

install_packages debootstrap git
[[ -e /usr/share/debootstrap/scripts/$release ]] || wrong_arguments "debootstrap knows no release \"$release\""

# Where this machine has its packages from; none if it is no Debian, and debootstrap's own choice then.
mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Label: Debian' | head -n 1)
new=$(mktemp -d "/var/tmp/$release.XXXXXX")
at_exit 'rm -rf --one-file-system "$new"'
chmod 755 "$new" # apt fetches as a user of its own

echo "Making a root of $release in $new"
unshare --mount debootstrap --variant=minbase --include=ca-certificates,git "$release" "$new" \
    ${mirror:+"$mirror"} >"$new.log" 2>&1 ||
    { tail -n 20 "$new.log" >&2 && fail "debootstrap failed, see $new.log"; }
rm "$new.log"
echo "Made in $SECONDS s"

# What is removed afterwards need not be safe from a power cut.
echo force-unsafe-io >"$new/etc/dpkg/dpkg.cfg.d/unsafe-io"

# The way to the packages is this machine's, through its proxies and with its certificates.
cp -r /etc/apt/apt.conf.d /etc/apt/auth.conf.d "$new/etc/apt/" 2>/dev/null || true
cp -r /usr/local/share/ca-certificates "$new/usr/local/share/"
chroot "$new" update-ca-certificates >/dev/null 2>&1
environment=(PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root "LANG=$LC_ALL")
for name in http_proxy https_proxy no_proxy; do
    [[ -z ${!name-} ]] || environment+=("$name=${!name}")
done

git clone --quiet --no-hardlinks "$root" "$new/srv/project"
commit=$(git -C "$new/srv/project" log -1 --format='%h, %s')

# In namespaces of its own for mounts and processes: the kernel unmounts, and ends what COMMAND leaves behind.
run_in_root() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    env -i "${environment[@]}" unshare --mount --pid --fork --kill-child --propagation private bash -c '
        mount -t proc proc "$1/proc" && mount --rbind /dev "$1/dev" || exit
        chroot "$1" bash -c "cd /srv/project && \"\$@\"" bash "${@:2}"
        exit $?' bash "$new" "$@" </dev/null
}
begin=$SECONDS
status=0
run_in_root "$@" || status=$?
printf '\n%s %s, commit %s\n%s: status %d after %d s\n' "$release" "$(<"$new/etc/debian_version")" "$commit" "$*" \
    "$status" $((SECONDS - begin))
exit "$status"
