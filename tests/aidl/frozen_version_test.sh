#!/bin/bash
# What a device's build demands of the frozen version of the package, demanded here: its digest, and
# that it still says what the sources say. Usage: frozen_version_test.sh AIDLC PROJECT
set -euo pipefail
export LC_ALL=C
aidlc="$1"
project="$2"
frozen="$project/aidl/aidl_api/vendor.zel.hardware.camera.offlinecamera"
made="$(mktemp -d)"
trap 'rm -rf "$made"' EXIT

failed() {
    echo "$*"
    exit 1
}

cd "$frozen/1"
digest="$({ find ./ -name '*.aidl' -print0 | sort -z | xargs -0 sha1sum && echo latest-version; } |
    sha1sum | cut -d ' ' -f 1)"
[[ "$(tail -n 1 .hash)" == "$digest" ]] || failed "1/.hash is not the digest $digest of the texts"
diff -r --exclude=.hash "$frozen/1" "$frozen/current" || failed "current/ is not the frozen version"

# Both compile to the same code.
for root in "$project/aidl" "$frozen/1"; do
    "$aidlc" -I "$root" -I "$project/host/aidl" --version 1 --hash "$digest" \
        --out "$made/${root##*/}" "$root"/vendor/zel/hardware/camera/offlinecamera/*.aidl
done
diff -r "$made/aidl" "$made/1" || failed "the sources differ from the frozen version"
