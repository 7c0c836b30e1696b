# What the package for users has to hold; to be sourced after common.sh.

# check_package_content FOLDER VERSION: the unzipped package holds what ships and nothing else, has the same version
# everywhere, and has no broken links in its pages.
check_package_content() (
    cd "$1"
    local docs=(docs/{installing,settings,style-sheets,document,troubleshooting}.html docs/pages.css
        docs/settings-panel.png docs/AudioMetadata.xsd)
    diff <({ git -C "$root" ls-files XSLT ':!XSLT/parts' && printf '%s\n' {README,CHANGELOG}.txt WriteMetadataFile.dll "${docs[@]}"; } |
        sort) <(find . -type f -printf '%P\n' | sort) || fail "the package lacks files (<) or holds others (>)"

    local library readme changelog
    library=$(strings -el WriteMetadataFile.dll | grep -A1 -x FileVersion | tail -n 1)
    readme=$(head -n 1 README.txt | tr -d '\r')
    changelog=$(sed -nE 's/^## \[([0-9.]+)\] - [0-9]{4}-[0-9]{2}-[0-9]{2}\r$/\1/p' CHANGELOG.txt | head -n 1)
    [[ $library == "$2" ]] || fail "the package is version $2, the library $library"
    [[ $readme == "WriteMetadataFile $2" ]] || fail "the package is version $2, README.txt begins with $readme"
    [[ $changelog == "$2" ]] || fail "the package is version $2, the newest with a date in the changelog is $changelog"

    "$root/scripts/pages.py" check docs/*.html
)
