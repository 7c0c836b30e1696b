# Runs every style sheet through the plug-in; to be sourced after common.sh.

# transform BUILD WAV AUDIO: writes AUDIO's document and what each style sheet that ships makes of it, beside it.
# BUILD is the build's folder; all paths are absolute. The stand-in's lines go to standard output.
transform() {
    local row extension sheet build=$1 settings
    for row in Html:.html Text:.txt Json:.json Csv:.csv CsvLong:.facts.csv Songs:.song.csv Changes:.changes.csv \
        VorbisComments:.vc FFMetadata:.ffmeta Markdown:.md; do
        extension=${row#*:}
        sheet=$(windows_path "$build/dist/XSLT/${row%:*}.xslt")
        settings="-xsltfile=\"$sheet\" -ext=\"$extension\""
        run_wine "$build/tools/dsphost.exe" --settings "$settings" "$(windows_path "$2")" "$(windows_path "$3")" \
            </dev/null
    done
}
