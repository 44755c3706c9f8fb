#!/usr/bin/env bash
# The include rule of src/: a file includes headers of its own folder's layer
# or of the layers below, never above, so the folders form no cycle. Lowest
# first:
#   0 core numerics   1 config   2 traces   3 distributions   4 timeseries
#   5 markov   6 fitting (with the model factory)   7 reporting   8 driver
# Any upward include fails this check, which ctest runs.
# Usage: check_layers.sh <source root>
set -euo pipefail
root="${1:-.}/src"

declare -A rank=([core]=0 [numerics]=0 [config]=1 [traces]=2 [distributions]=3 [timeseries]=4
                 [markov]=5 [fitting]=6 [reporting]=7 [driver]=8)

status=0
while IFS= read -r file; do
    rel="${file#"$root"/}"
    folder="${rel%%/*}"
    [ -n "${rank[$folder]+set}" ] || { echo "unknown folder: $rel"; status=1; continue; }
    while IFS= read -r target; do
        [ -n "${rank[$target]+set}" ] || continue
        if [ "${rank[$target]}" -gt "${rank[$folder]}" ]; then
            echo "$rel includes $target/, a layer above $folder/"
            status=1
        fi
    done < <(sed -n 's|^#include "\([a-z_]*\)/.*|\1|p' "$file" | sort -u)
done < <(find "$root" -mindepth 2 -name '*.h' -o -mindepth 2 -name '*.cpp' | sort)
exit $status
