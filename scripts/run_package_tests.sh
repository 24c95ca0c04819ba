#!/bin/sh
# SPDX-License-Identifier: MIT
# Makes the packages and tests them as a user gets them: cmake --install and the contents of both packages, lintian,
# installation, runs and removal of the Debian package in a root of its own, the Windows program under Wine. Nothing is
# installed on the machine but the tools. Where Wine isn't to be had, its test is reported as skipped.
set -eu
umask 022
cd "$(dirname "$0")/.."
PATH=$PATH:/usr/sbin:/sbin  # where dpkg looks for its tools, and an ordinary user has none of them
sh scripts/install_packages.sh lintian binutils man-db mandoc fakeroot unzip
sh scripts/make_packages.sh
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
project=$PWD
package=$(echo build/packages/velkoran_*.deb)
archive=$(echo build/packages/velkoran-*.zip)
version=$(sed -n 's/^project(velkoran VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)

fail() {
    echo "run_package_tests: $*" >&2
    exit 1
}

# The files and links below a folder, sorted.
list_files() {
    (cd "$1" && find . ! -type d | sed 's|^\./||' | LC_ALL=C sort)
}

# Compares the files below a folder with a list on standard input.
check_files() {
    LC_ALL=C sort >"$top/expected"
    list_files "$1" >"$top/found"
    diff -u "$top/expected" "$top/found" || fail "$2 doesn't hold what it should"
    find "$1" -type d -empty | grep . && fail "$2 holds an empty folder"
    echo "passed: the $(wc -l <"$top/found") files of $2"
}

# Follows the links to files in the documents and the manual pages below a folder; one of them ends with a given text.
check_links() {
    find "$1" -name '*.md' -o -name '*.html' | while read -r page; do
        grep -o -e ']([^)]*)' -e 'href="[^"]*"' "$page" | sed -e 's/^](//' -e 's/^href="//' -e 's/[)"#].*//' |
            grep -v -e '^$' -e : | sed "s|^|$(dirname "$page")/|"
    done >"$top/links"
    grep -q "$3\$" "$top/links" || fail "$2 holds no link to $3"
    while read -r link; do
        [ -e "$link" ] || echo "$link"
    done <"$top/links" | sort -u >"$top/dead"
    [ -s "$top/dead" ] && fail "$2 holds links that lead nowhere: $(cat "$top/dead")"
    echo "passed: the $(wc -l <"$top/links") links of $2 lead somewhere"
}

# Documents and examples, as they stand in the project and below the folder of documents of both systems.
list_documents() {
    printf '%s\n' CHANGELOG.md CITATION.cff LICENSE README.md
    find docs -name '*.md' -o -name '*.png' -o -name '*.svg' -o -name 'nmr*.in'
    find examples -name 'nmr*.in' -o -name README.md
}

# The folders of parameters, without what makes their files.
list_parameters() {
    find parameters -name '*.txt' -o -name '*.abp' -o -name atom_types.csv -o -name '*.json' -o -name README.md \
        -o -name SHA256SUMS
}

list_linux_files() {
    echo bin/velkoran
    list_parameters | sed 's|^|share/velkoran/|'
    (list_documents && echo parameters) | sed 's|^|share/doc/velkoran/|'
    (cd man && ls ./*.1) | sed 's|^\.|share/man/man1|'
    (cd man && ls ./*.5) | sed 's|^\.|share/man/man5|'
}

list_debian_files() {
    list_linux_files | sed -e 's|^|usr/|' -e '/^usr\/share\/man/s|$|.gz|' \
        -e 's|/velkoran/LICENSE$|/velkoran/copyright|' -e 's|/velkoran/CHANGELOG.md$|/velkoran/changelog.gz|'
    echo usr/share/doc/velkoran/changelog.Debian.gz
}

list_windows_files() {
    echo velkoran.exe
    list_parameters
    list_documents
    (cd man && ls ./*.1 ./*.5) | sed 's|^\.\(.*\)|manual\1.html|'
}

# dpkg on a root of its own. It knows which packages the machine has, so that dependencies are checked, but has none of
# their files. Whatever the machine is set to leave out of a package, here everything is installed.
dpkg_in_root() {
    fakeroot dpkg --root="$top/root" --force-not-root --path-include="*" --log=/dev/null "$@" >"$top/dpkg.log" 2>&1 ||
        { cat "$top/dpkg.log" >&2; fail "dpkg $*"; }
}

# cmake --install
cmake --install build/release --prefix "$top/install" >/dev/null
list_linux_files | check_files "$top/install" "cmake --install"
check_links "$top/install" "cmake --install" /man/man1/velkoran.1

# the Debian package
if ! lintian --fail-on error,warning "$package"; then
    fail "lintian finds fault with $package"
fi
echo "passed: lintian, without errors and warnings"
mkdir -p "$top/root/var/lib/dpkg/info" "$top/root/var/lib/dpkg/updates"
cp /var/lib/dpkg/status "$top/root/var/lib/dpkg/status"
dpkg_in_root --purge velkoran  # where the machine has it
list_files "$top/root" | grep -v '^var/lib/dpkg/' && fail "the new root isn't empty"
dpkg_in_root --install "$package"
echo "passed: installation with its dependencies"
mv "$top/root/var" "$top/var"
list_debian_files | check_files "$top/root" "the Debian package"
check_links "$top/root" "the Debian package" /man/man1/velkoran.1.gz
installed=$top/root/usr
[ "$(cat "$installed/share/doc/velkoran/parameters/README.md")" = "$(cat parameters/README.md)" ] ||
    fail "share/doc/velkoran/parameters leads nowhere"
[ "$("$installed/bin/velkoran" --version | head -n 1)" = "velkoran $version" ] || fail "--version isn't $version"
grep -q -x -F "version: $version" "$installed/share/doc/velkoran/CITATION.cff" || fail "CITATION.cff isn't of $version"
zcat "$installed/share/doc/velkoran/changelog.gz" | grep -q -F "## [$version]" || fail "CHANGELOG.md lacks $version"
echo "passed: the installed program and its documents are of version $version"
sh scripts/run_all_examples.sh "$installed/bin/velkoran" "$installed/share/velkoran/parameters/published" \
    "$installed/share/doc/velkoran/examples" "$top/installed_runs"
sh scripts/run_all_examples.sh "$project/build/release/velkoran" "$project/parameters/published" "$project/examples" \
    "$top/built_runs"
diff -r "$top/built_runs" "$top/installed_runs" || fail "the installed program differs from the built one"
echo "passed: $(ls "$top/installed_runs" | wc -l) examples from the installed files, the same bytes as the build tree's"

# the hardening of the installed program
readelf -hdlW --dyn-syms "$installed/bin/velkoran" >"$top/marks"
for mark in 'DYN (Position-Independent' 'GNU_STACK .* RW ' GNU_RELRO 'FLAGS.* BIND_NOW' __stack_chk_fail \
    __snprintf_chk; do
    grep -q -e "$mark" "$top/marks" || fail "the installed program lacks $mark"
done
echo "passed: hardening of the installed program"

# the manual pages, found and shown as a user would
for page in man/*.[15]; do
    name=$(basename "${page%.*}")
    section=${page##*.}
    file=$(man -M "$installed/share/man" -w "$section" "$name") || fail "man doesn't find $name($section)"
    for reader in "man --local-file --warnings" "mandoc -T utf8 -W error"; do
        MANPAGER=cat MANWIDTH=80 LC_ALL=C.UTF-8 $reader "$file" >"$top/page" 2>"$top/complaints" ||
            fail "$reader doesn't show $file: $(cat "$top/complaints")"
        [ -s "$top/complaints" ] && fail "$reader complains about $file: $(cat "$top/complaints")"
        col -bx <"$top/page" | grep -q '^NAME$' || fail "$reader shows no page of $file"
    done
done
echo "passed: $(ls man/*.[15] | wc -l) manual pages"

mv "$top/var" "$top/root/var"
dpkg_in_root --purge velkoran
left=$(find "$top/root" -path "$top/root/var" -prune -o -name '*velkoran*' -print -o ! -type d -print)
[ -z "$left" ] || fail "removal leaves $left"
list_files "$top/root/var" | grep velkoran && fail "removal leaves files of dpkg"
echo "passed: removal leaves nothing"

# the Windows archive
unzip -q "$archive" -d "$top/windows"
folder=$top/windows/$(basename "$archive" .zip)
[ "$(ls "$top/windows")" = "$(basename "$folder")" ] || fail "the archive isn't one folder"
list_windows_files | check_files "$folder" "the Windows archive"
check_links "$folder" "the Windows archive" manual/velkoran.1.html
cmp "$folder/README.md" packaging/windows_readme.md.in || fail "the README of the Windows archive isn't its own"
strings -el "$folder/velkoran.exe" | grep -A 1 -x ProductVersion | grep -q -x -F "$version" ||
    fail "the resources of velkoran.exe aren't of version $version"
echo "passed: velkoran.exe says that it is version $version"
# the hardening of the Windows program
objdump -p "$folder/velkoran.exe" >"$top/marks"
for mark in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
    grep -q "$mark" "$top/marks" || fail "velkoran.exe lacks $mark"
done
echo "passed: hardening of velkoran.exe"

if ! { command -v wine || sh scripts/install_packages.sh wine64 wine; } >/dev/null; then
    echo "skipped, no Wine: the example methane with the files of the Windows archive"
    exit 0
fi
export WINEPREFIX="$top/prefix" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
cd "$folder"
wineboot -i >/dev/null 2>&1 </dev/null || fail "wineboot"
wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 </dev/null || fail "wine reg"
wineserver -w
cp "$top/built_runs/methane/nmrparam.in" examples/methane  # with the print level of those runs
command=$(sed -n '/examples.methane 1/s/^    //p' README.md)
timeout 60 wine cmd /c "$command" >/dev/null 2>&1 </dev/null || fail "\"$command\" ends with exit code $?"
wineserver -w
for file in nmrparam.out run.log; do
    tr -d '\r' <"$folder/examples/methane/$file" | diff "$top/built_runs/methane/$file" - ||
        fail "$file of methane differs under Windows"
done
echo "passed: the example methane with the files of the Windows archive, by the command of its README"
