#!/bin/sh
# Test lines against the other code: non-blank lines that are not only a // comment, in .cpp, .h, .py
# and .sh files; tests are everything under tests/, the rest excludes build trees and .git.
cd "$(dirname "$0")/.." || exit 1
t=$(find tests -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.py' -o -name '*.sh' \) | xargs cat | grep -cv '^\s*\(//.*\)\?$')
o=$(find . -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.py' -o -name '*.sh' \) ! -path './tests/*' ! -path './build*' ! -path './.git/*' | xargs cat | grep -cv '^\s*\(//.*\)\?$')
echo "tests $t, other $o: $((100 * t / o)) %"
