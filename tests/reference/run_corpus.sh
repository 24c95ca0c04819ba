#!/bin/sh
# SPDX-License-Identifier: MIT
# run_corpus.sh CORPUS BINARY [NAME-PATTERN]
# CORPUS is spectrum, wavefunction or parameter. Runs BINARY PARAMDIR WORKDIR KIND LOGFILE for each case in a temporary
# directory (60 s limit), compares, ends with "N passed, M failed".
# The exit code of the binary must be 0 on every regular way out.
here=$(cd "$(dirname "$0")" && pwd)
corpus=$here/$1
bin=$2
pattern=${3:-*}
[ -n "$bin" ] || { echo "usage: $0 CORPUS BINARY [NAME-PATTERN]"; exit 2; }
case $bin in */*) bin=$(cd "$(dirname "$bin")" && pwd)/$(basename "$bin");; esac
case $1 in spectrum) kind=2 stem=nmrspect ;; *) kind=1 stem=nmrparam ;; esac
top=$(mktemp -d) || exit 2
trap 'rm -rf "$top"' EXIT
passed=0
failed=0
for dir in "$corpus"/cases/$pattern/; do
  [ -f "$dir/expected.out" ] || continue
  name=$(basename "$dir")
  rm -rf "$top/p" "$top/w"
  mkdir "$top/w"
  sh "$here/../support/parameter_folder.sh" "$dir" "$top/p" || exit 2
  [ -f "$dir/$stem.in" ] && cp "$dir/$stem.in" "$top/w/$stem.in"
  timeout 60 "$bin" "$top/p" "$top/w" $kind "$top/w/run.log" >"$top/stdout" 2>&1 </dev/null
  rc=$?
  if [ $rc -ne 0 ]; then
    echo "FAIL $name: exit code $rc (124: over 60 s)"
    failed=$((failed+1))
    continue
  fi
  if msg=$(python3 "$corpus"/compare_*.py "$dir" "$top/w/$stem.out" "$top/w/run.log" 2>&1); then
    passed=$((passed+1))
  else
    echo "FAIL $name: $msg"
    failed=$((failed+1))
  fi
done
echo "$passed passed, $failed failed"
[ $failed -eq 0 ] && [ $passed -gt 0 ]
