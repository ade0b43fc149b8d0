#!/usr/bin/env bash
# Checks that the C and C++ sources are formatted with clang-format-14 and the repository's
# .clang-format, changing nothing: prints each difference and fails if there is one.
# Left out: the block headers (include/blocks/) and the interface headers, whose structures and
# records are aligned by hand, with their register-path comments, for reading beside the register
# tables and the documentation; and the .def tables, whose rows are aligned in columns.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
"$root/scripts/deps.sh" format
git ls-files -z '*.c' '*.cpp' '*.h' \
    ':!:include/blocks/' \
    ':!:include/isp_framework.h' ':!:include/isp_platform.h' ':!:include/isp_json_modules.h' \
    ':!:platform/sim/isp_sim.h' |
    xargs -0 clang-format-14 --dry-run --Werror
