#!/usr/bin/env bash
# Makes the package of the last commit, build/package/WriteMetadataFile-<version>-win64.zip, and proves it: a second
# build in another folder gives the same bytes, it holds what ships and nothing else, versions and links in it are
# right, and the stand-in for the converter gets a document and a page from it where it was unzipped. The file with
# .sha256 after its name is for sha256sum -c.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
no_arguments "$@"

install_packages g++-mingw-w64-x86-64-posix binutils-mingw-w64 cmake ninja-build git googletest wine wine64 \
    zip unzip flac alsa-utils libxml2-utils cmark-gfm python3

work=$root/build/package
rm -rf "$work"

# All times in the package are the commit's.
SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
export SOURCE_DATE_EPOCH TZ=UTC0

# make_package FOLDER: builds the last commit in FOLDER and prints the path of its package.
make_package() {
    local zip
    mkdir -p "$1"
    git -C "$root" archive HEAD | tar -x -C "$1"
    root=$1 build mingw-release WriteMetadataFile >&2
    (cd "$1/build" && cpack --config mingw-release/CPackConfig.cmake) >"$1.log" || fail "cpack failed, see $1.log"
    # CPack keeps the file system's order and the files' owners: packed anew, sorted and without owners.
    zip=$(echo "$1"/build/*.zip)
    unzip -q "$zip" -d "$1/build/unzipped"
    rm "$zip"
    (cd "$1/build/unzipped" && find . -type f -printf '%P\n' | sort | zip -X -q -@ "$zip")
    echo "$zip"
}

zip=$(make_package "$work/once")
again=$(make_package "$work/the same commit elsewhere")
cmp "$zip" "$again" || fail "two builds of one commit differ"
cp "$zip" "$work/"
zip=$work/${zip##*/}

# From here on the package is used as its users use it.
user=$work/user
unzip -q "$zip" -d "$user"
cd "$user"

docs=(docs/{installing,settings,style-sheets,document,troubleshooting}.html docs/pages.css docs/settings-panel.png
    docs/AudioMetadata.xsd)
diff <({ git -C "$root" ls-files XSLT ':!XSLT/parts' &&
    printf '%s\n' {README,CHANGELOG}.txt WriteMetadataFile.dll "${docs[@]}"; } |
    sort) <(find . -type f -printf '%P\n' | sort) || fail "the package lacks files (<) or holds others (>)"

version=${zip##*/WriteMetadataFile-}
version=${version%-win64.zip}
library=$(x86_64-w64-mingw32-strings -el WriteMetadataFile.dll | grep -A1 -x FileVersion | tail -n 1)
readme=$(head -n 1 README.txt)
changelog=$(sed -nE 's/^## \[([0-9.]+)\] - [0-9]{4}-[0-9]{2}-[0-9]{2}\r$/\1/p' CHANGELOG.txt | head -n 1)
[[ $library == "$version" ]] || fail "the package is version $version, the library $library"
[[ $readme == "WriteMetadataFile $version"$'\r' ]] || fail "the package is version $version, README.txt begins with $readme"
[[ $changelog == "$version" ]] ||
    fail "the package is version $version, the newest with a date in the changelog is $changelog"

"$root/scripts/pages.py" check docs/*.html

build mingw-release dsphost wav flac
start_wine wine
recording=/usr/share/sounds/alsa/Front_Center.wav
mkdir music
flac --silent --output-name music/song.flac --tag TITLE=Packed -- "$recording"

# convert SETTINGS: with the plug-in of the package.
convert() {
    run_wine "$root/build/mingw-release/tools/dsphost.exe" --plugin WriteMetadataFile.dll --settings "$1" \
        "$(windows_path "$recording")" 'music\song.flac' </dev/null
}
convert ''
xmllint --noout --schema docs/AudioMetadata.xsd music/song.xml
convert "-xsltfile=\"$(windows_path "$user/XSLT/Html.xslt")\" -ext=\".html\""
grep -q '>Packed<.*</html>' <(tr -d '\r\n' <music/song.html) || fail "the page lacks the title"

# Last, so that only a package that passed has a sum.
write_sum "$zip"

"$root/scripts/check-package.sh"
cmp "$user/WriteMetadataFile.dll" <(unzip -p "${zip%.zip}-check.zip" dist/WriteMetadataFile.dll) ||
    fail "the check has another library, as there are changes that are not committed"
