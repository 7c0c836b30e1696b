<?xml version="1.0" encoding="UTF-8"?>
<!--
    A page to look at: the source file and the converted file side by side. File extension to set in the
    panel: .html

    The page needs no other file, follows the reader's light or dark setting and prints. Tags of both files
    meet in one row when their names differ only in case; a row says when a tag was changed, added or lost.

    Length and bitrate stay as the decoder gave them, since nothing says their units. Where the usual unit can
    be the right one, the page says in grey what the number means in it. An audio format of which nothing is
    known is left out, and a value of nothing but blanks comes as an empty one from MSXML and is shown as one.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="html" encoding="UTF-8" indent="no" doctype-system="about:legacy-compat"/>
    <xsl:strip-space elements="*"/>

    <xsl:variable name="source" select="/AudioMetadata/SourceFile"/>
    <xsl:variable name="converted" select="/AudioMetadata/ConvertedFile"/>
    <!-- Those that are known; the others hold zeros. -->
    <xsl:variable name="formats" select="/AudioMetadata/*/AudioFormat[
        Channels != 0 or SamplesPerSec != 0 or BitsPerSample != 0]"/>
    <xsl:variable name="sourceHasTags" select="boolean($source/IDTags/*)"/>

    <xsl:template match="/">
        <html lang="en">
            <head>
                <meta name="viewport" content="width=device-width, initial-scale=1"/>
                <meta name="color-scheme" content="light dark"/>
                <title>
                    <xsl:value-of select="concat($converted/FileName, ' - audio metadata')"/>
                </title>
                <style>
:root { --page: #f4f3f0; --sheet: #fff; --ink: #1d2024; --soft: #60666e; --line: #e3e1dc;
    --accent: #0b6e65; --tint: #e2f1ee; --warn: #8a4b00; --warntint: #fbeedb; }
@media (prefers-color-scheme: dark) {
    :root { --page: #14171a; --sheet: #1c2024; --ink: #e6e8ea; --soft: #9aa2ab; --line: #30363c;
        --accent: #5fc9bb; --tint: #17332f; --warn: #f0b461; --warntint: #3a2c17; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--ink);
    font: 15px/1.5 "Segoe UI", system-ui, -apple-system, "Noto Sans", "DejaVu Sans", sans-serif; }
main { max-width: 68rem; margin: 0 auto; padding: 2rem 1.25rem 3rem; }
h1 { margin: 0 0 1rem; font-size: .8rem; font-weight: 600; letter-spacing: .12em;
    text-transform: uppercase; color: var(--soft); }
h2 { margin: 0; font-size: 1.05rem; font-weight: 600; }
.files { display: grid; grid-template-columns: 1fr auto 1fr; gap: 1rem; align-items: stretch; }
.file, section { background: var(--sheet); border: 1px solid var(--line); border-radius: 10px; }
.file { padding: 1rem 1.25rem; min-width: 0; }
.file p { margin: 0; }
.file .side { display: flex; align-items: center; gap: .6rem; color: var(--soft); font-size: .85rem; }
.file .name { margin: .35rem 0 .15rem; font-size: 1.3rem; line-height: 1.3; font-weight: 600;
    overflow-wrap: anywhere; }
.file .absent { color: var(--soft); font-weight: 400; }
.file .format { color: var(--soft); }
.type { padding: 0 .45rem; border-radius: 5px; background: var(--tint); color: var(--accent);
    font-size: .75rem; font-weight: 700; letter-spacing: .04em; text-transform: uppercase;
    max-width: 10rem; overflow: hidden; text-overflow: ellipsis; white-space: nowrap; }
.arrow { align-self: center; color: var(--soft); font-size: 1.5rem; }
section { margin-top: 1rem; overflow: hidden; }
table { width: 100%; border-collapse: collapse; table-layout: fixed; }
th, td { padding: .45rem 1.25rem; border-top: 1px solid var(--line); text-align: start;
    vertical-align: top; overflow-wrap: anywhere; }
thead th, thead td { border-top: 0; padding-top: .9rem; vertical-align: baseline; }
thead th { color: var(--soft); font-size: .8rem; font-weight: 600; }
thead td { width: 26%; }
thead h2 { white-space: nowrap; }
tbody th { color: var(--soft); font-weight: 500; }
td { font-variant-numeric: tabular-nums; }
td.none { color: var(--soft); }
.value { white-space: pre-wrap; text-align: start; }
.value:empty::before { content: "(empty)"; color: var(--soft); }
.value + .value { margin-top: .2rem; }
.reading { color: var(--soft); font-size: .85em; }
.long { max-height: 16rem; overflow: auto; }
.note { display: inline-block; padding: 0 .45rem; border-radius: 5px; background: var(--warntint);
    color: var(--warn); font-size: .75rem; font-weight: 600; }
.note.added { background: var(--tint); color: var(--accent); }
footer { margin-top: 1rem; color: var(--soft); font-size: .85rem; }
@media (max-width: 42rem) {
    .files { grid-template-columns: 1fr; }
    .arrow { justify-self: center; transform: rotate(90deg); line-height: 1; }
    th, td { padding: .4rem .6rem; }
    thead td { width: 10rem; }
    h2 { font-size: .95rem; }
}
@media print {
    :root { --page: #fff; --sheet: #fff; --ink: #000; --soft: #444; --line: #bbb;
        --accent: #000; --tint: #eee; --warn: #000; --warntint: #eee; }
    body { font-size: 10pt; }
    main { max-width: none; padding: 0; }
    section { overflow: visible; }
    .long { max-height: none; overflow: visible; }
    h2 { font-size: 11pt; }
    thead { break-after: avoid; }
    .file, tr:not(:has(.long)) { break-inside: avoid; }
}
</style>
            </head>
            <body>
                <main>
                    <h1>Audio metadata</h1>
                    <div class="files">
                        <xsl:apply-templates select="$source"/>
                        <div class="arrow" aria-hidden="true">&#x2192;</div>
                        <xsl:apply-templates select="$converted"/>
                    </div>
                    <xsl:call-template name="section">
                        <xsl:with-param name="heading">File</xsl:with-param>
                        <xsl:with-param name="rows" select="$converted/*[starts-with(name(), 'File')][
                            not(self::FileName or self::FileNameNoExt or self::FileNameExt)]"/>
                    </xsl:call-template>
                    <xsl:call-template name="section">
                        <xsl:with-param name="heading">Audio format</xsl:with-param>
                        <xsl:with-param name="rows" select="$formats[last()]/*"/>
                    </xsl:call-template>
                    <xsl:call-template name="section">
                        <xsl:with-param name="heading">Audio properties</xsl:with-param>
                        <xsl:with-param name="rows" select="AudioMetadata/*/AudioProperties/*"/>
                    </xsl:call-template>
                    <xsl:call-template name="section">
                        <xsl:with-param name="heading">Tags</xsl:with-param>
                        <xsl:with-param name="rows" select="AudioMetadata/*/IDTags/*"/>
                    </xsl:call-template>
                    <footer>Times are UTC. Length and bitrate come without a unit; what they usually mean stands in
                        grey.</footer>
                </main>
            </body>
        </html>
    </xsl:template>

    <xsl:template match="SourceFile | ConvertedFile">
        <div class="file">
            <p class="side">
                <xsl:value-of select="substring-before(name(), 'File')"/>
                <xsl:if test="string-length(FileNameExt) &gt; 1">
                    <span class="type">
                        <xsl:value-of select="substring(FileNameExt, 2)"/>
                    </span>
                </xsl:if>
            </p>
            <xsl:choose>
                <xsl:when test="FileName = ''">
                    <p class="name absent">No file on disk</p>
                </xsl:when>
                <xsl:otherwise>
                    <p class="name" dir="auto">
                        <xsl:value-of select="FileName"/>
                    </p>
                </xsl:otherwise>
            </xsl:choose>
            <xsl:variable name="format">
                <xsl:if test="AudioFormat/SamplesPerSec != 0">
                    <xsl:value-of select="concat(', ', format-number(AudioFormat/SamplesPerSec, '#,##0'), ' Hz')"/>
                </xsl:if>
                <xsl:if test="AudioFormat/BitsPerSample != 0">
                    <xsl:value-of select="concat(', ', AudioFormat/BitsPerSample, ' bit')"/>
                </xsl:if>
                <xsl:if test="AudioFormat/Channels != 0">
                    <xsl:value-of select="concat(', ', AudioFormat/Channels, ' channel')"/>
                    <xsl:if test="AudioFormat/Channels != 1">s</xsl:if>
                </xsl:if>
            </xsl:variable>
            <xsl:if test="$format != ''">
                <p class="format">
                    <xsl:value-of select="substring($format, 3)"/>
                </p>
            </xsl:if>
        </div>
    </xsl:template>

    <!-- A table with a row for each of the facts or each of the names in rows. -->
    <xsl:template name="section">
        <xsl:param name="heading"/>
        <xsl:param name="rows"/>
        <xsl:if test="$rows">
            <section>
                <table>
                    <thead>
                        <tr>
                            <td>
                                <h2>
                                    <xsl:value-of select="$heading"/>
                                </h2>
                            </td>
                            <th scope="col">Source</th>
                            <th scope="col">Converted</th>
                        </tr>
                    </thead>
                    <tbody>
                        <xsl:apply-templates select="$rows[not(@name)]" mode="row"/>
                        <xsl:call-template name="groups">
                            <xsl:with-param name="entries" select="$rows[@name]"/>
                        </xsl:call-template>
                    </tbody>
                </table>
            </section>
        </xsl:if>
    </xsl:template>

    <xsl:template match="*" mode="row">
        <tr>
            <th scope="row">
                <xsl:apply-templates select="." mode="label"/>
            </th>
            <xsl:call-template name="cell">
                <xsl:with-param name="fact" select="($source | $formats[parent::SourceFile])
                    /*[name() = name(current())]"/>
            </xsl:call-template>
            <xsl:call-template name="cell">
                <xsl:with-param name="fact" select="($converted | $formats[parent::ConvertedFile])
                    /*[name() = name(current())]"/>
            </xsl:call-template>
        </tr>
    </xsl:template>

    <xsl:template match="*" mode="group">
        <xsl:variable name="name" select="concat(name(..), translate(@name, $upper, $lower))"/>
        <xsl:if test="generate-id() = generate-id(key('row', $name)[1])">
            <xsl:call-template name="entries">
                <xsl:with-param name="old" select="key('row', $name)[../parent::SourceFile]"/>
                <xsl:with-param name="new" select="key('row', $name)[../parent::ConvertedFile]"/>
            </xsl:call-template>
        </xsl:if>
    </xsl:template>

    <!-- The row of the entries of one name, of which the context node is the first. -->
    <xsl:template name="entries">
        <xsl:param name="old"/>
        <xsl:param name="new"/>
        <xsl:variable name="oldValues">
            <xsl:call-template name="values">
                <xsl:with-param name="entries" select="$old"/>
            </xsl:call-template>
        </xsl:variable>
        <xsl:variable name="newValues">
            <xsl:call-template name="values">
                <xsl:with-param name="entries" select="$new"/>
            </xsl:call-template>
        </xsl:variable>
        <tr>
            <th scope="row">
                <bdi>
                    <xsl:value-of select="@name"/>
                </bdi>
                <xsl:if test="parent::IDTags and $sourceHasTags">
                    <xsl:choose>
                        <xsl:when test="not($old)">
                            <xsl:value-of select="' '"/>
                            <span class="note added">added</span>
                        </xsl:when>
                        <xsl:when test="not($new)">
                            <xsl:value-of select="' '"/>
                            <span class="note">lost</span>
                        </xsl:when>
                        <xsl:when test="string($oldValues) != string($newValues)">
                            <xsl:value-of select="' '"/>
                            <span class="note">changed</span>
                        </xsl:when>
                    </xsl:choose>
                </xsl:if>
            </th>
            <xsl:call-template name="list">
                <xsl:with-param name="entries" select="$old"/>
                <xsl:with-param name="values" select="string($oldValues)"/>
            </xsl:call-template>
            <xsl:call-template name="list">
                <xsl:with-param name="entries" select="$new"/>
                <xsl:with-param name="values" select="string($newValues)"/>
            </xsl:call-template>
        </tr>
    </xsl:template>

    <!-- The cell of a fact that stands alone, such as the size. -->
    <xsl:template name="cell">
        <xsl:param name="fact"/>
        <xsl:choose>
            <xsl:when test="not($fact != '')">
                <td class="none">&#x2013;</td>
            </xsl:when>
            <xsl:otherwise>
                <td>
                    <xsl:apply-templates select="$fact" mode="value"/>
                </td>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- The cell of the entries of one name; values has a CR between those of different values. -->
    <xsl:template name="list">
        <xsl:param name="entries"/>
        <xsl:param name="values"/>
        <xsl:choose>
            <xsl:when test="$entries">
                <td>
                    <xsl:call-template name="each">
                        <xsl:with-param name="text" select="$values"/>
                    </xsl:call-template>
                </td>
            </xsl:when>
            <xsl:otherwise>
                <td class="none">&#x2013;</td>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <xsl:template name="value">
        <xsl:param name="text"/>
        <div class="value" dir="auto">
            <!-- A long value gets a box that scrolls and that the keyboard can reach. -->
            <xsl:if test="string-length($text) &gt; 1200">
                <xsl:attribute name="class">value long</xsl:attribute>
                <xsl:attribute name="tabindex">0</xsl:attribute>
            </xsl:if>
            <xsl:value-of select="$text"/>
        </div>
    </xsl:template>

    <xsl:template match="*" mode="value">
        <div class="value" dir="auto">
            <xsl:value-of select="."/>
        </div>
    </xsl:template>

    <!-- Beyond fifteen digits a number would lose some of them. -->
    <xsl:template match="FileSize | FileLength | FileBitrate | Channels | SamplesPerSec | BitsPerSample
        | AvgBytesPerSec" mode="value">
        <div class="value">
            <xsl:choose>
                <xsl:when test="string-length() &gt; 15">
                    <xsl:value-of select="."/>
                </xsl:when>
                <xsl:otherwise>
                    <xsl:value-of select="format-number(., '#,##0')"/>
                </xsl:otherwise>
            </xsl:choose>
            <xsl:apply-templates select="." mode="reading"/>
        </div>
    </xsl:template>

    <!-- What a number means in the usual unit, if it can be in that: no negative one, none beyond eleven days or
         100 Mbit/s. -->
    <xsl:template match="FileLength[. &gt; 0 and . &lt; 1000000000]" mode="reading">
        <xsl:variable name="hours" select="floor(. div 3600000)"/>
        <xsl:variable name="minutes" select="floor(. div 60000) mod 60"/>
        <xsl:value-of select="' '"/>
        <span class="reading">
            <xsl:text>(</xsl:text>
            <xsl:choose>
                <xsl:when test="$hours &gt; 0">
                    <xsl:value-of select="concat($hours, ':', format-number($minutes, '00'))"/>
                </xsl:when>
                <xsl:otherwise>
                    <xsl:value-of select="$minutes"/>
                </xsl:otherwise>
            </xsl:choose>
            <xsl:value-of select="concat(':', format-number(. mod 60000 div 1000, '00.000'), ' if milliseconds)')"/>
        </span>
    </xsl:template>
    <xsl:template match="FileBitrate[. &gt; 0 and . &lt; 100000]" mode="reading">
        <xsl:value-of select="' '"/>
        <span class="reading">(usually kbit/s)</span>
    </xsl:template>
    <xsl:template match="*" mode="reading"/>

    <xsl:template match="FileCreated | FileModified | FileAccessed" mode="value">
        <div class="value">
            <xsl:value-of select="translate(., 'T', ' ')"/>
        </div>
    </xsl:template>

    <xsl:template match="FileNamePath" mode="label">Folder</xsl:template>
    <xsl:template match="FileSize" mode="label">Size in bytes</xsl:template>
    <xsl:template match="FileLength" mode="label">Length</xsl:template>
    <xsl:template match="FileBitrate" mode="label">Bitrate</xsl:template>
    <xsl:template match="FileCreated" mode="label">Created</xsl:template>
    <xsl:template match="FileModified" mode="label">Modified</xsl:template>
    <xsl:template match="FileAccessed" mode="label">Accessed</xsl:template>
    <xsl:template match="Channels" mode="label">Channels</xsl:template>
    <xsl:template match="SamplesPerSec" mode="label">Samples per second</xsl:template>
    <xsl:template match="BitsPerSample" mode="label">Bits per sample</xsl:template>
    <xsl:template match="AvgBytesPerSec" mode="label">Bytes per second</xsl:template>
    <xsl:template match="*" mode="label">
        <xsl:value-of select="name()"/>
    </xsl:template>

    <xsl:include href="parts/each.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/rows.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
