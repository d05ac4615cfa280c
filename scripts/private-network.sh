#!/usr/bin/env bash
# Runs one command in a network namespace of its own, so that whatever it
# sends stays on this machine: Tessera broadcasts discovery datagrams and
# connects to any address it is given.
#
#   bash scripts/private-network.sh COMMAND [ARG...]
#
# Inside there is loopback and one local link (see tessera_private_link in
# common.sh) holding the default route, so broadcasts and connections to
# other addresses leave a socket as they would on a LAN and reach nothing.
# Needs root, or an unprivileged user namespace (then the command runs as
# root of that namespace). Where neither is allowed it says so and runs
# nothing: there is no fallback to the machine's own network.
# The exit status is the command's, or 2 when no namespace could be made.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

if [[ ${1:-} == --inside ]]; then
    shift
    tessera_private_link
    exec "$@"
fi
[[ $# -gt 0 ]] || { echo "usage: private-network.sh COMMAND [ARG...]" >&2; exit 2; }

for tool in unshare ip; do
    command -v "$tool" >/dev/null ||
        { echo "private-network.sh: $tool is missing (packages util-linux, iproute2)" >&2; exit 2; }
done

namespaces=(--net)
[[ $(id -u) == 0 ]] || namespaces=(--user --map-root-user --net)
# Tried once on its own, so that a refusal is told as such and not mistaken
# for the command failing.
if ! refusal=$(unshare "${namespaces[@]}" true 2>&1); then
    cat >&2 <<EOF
private-network.sh: cannot make a private network namespace: ${refusal:-refused}
Tests that send datagrams or connect are never run on this machine's own
network. Run as root, or allow unprivileged user namespaces
(sysctl kernel.unprivileged_userns_clone=1 and user.max_user_namespaces > 0).
EOF
    exit 2
fi
exec unshare "${namespaces[@]}" -- bash "${BASH_SOURCE[0]}" --inside "$@"
