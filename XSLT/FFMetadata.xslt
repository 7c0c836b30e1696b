<?xml version="1.0" encoding="UTF-8"?>
<!--
    The converted file's tags as a metadata file of ffmpeg. File extension to set in the panel: .ffmeta
    (any will do). docs/style-sheets.md has the command that gives them to a file.

    ffmpeg keeps one value for each name, whatever its case, so several values of one name are joined by
    "; ". Names are written as the decoder spells them; ffmpeg's own generic names are title, artist,
    album, track and so on. A value that ends in a backslash gets a blank behind it: ffmpeg would take the
    line end after the backslash for part of the value, however the backslash is written, and lose the next
    tag.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:variable name="upper" select="'ABCDEFGHIJKLMNOPQRSTUVWXYZ'"/>
    <xsl:variable name="lower" select="'abcdefghijklmnopqrstuvwxyz'"/>
    <xsl:key name="tag" match="ConvertedFile/IDTags/*"
        use="translate(@name, 'ABCDEFGHIJKLMNOPQRSTUVWXYZ', 'abcdefghijklmnopqrstuvwxyz')"/>
    <!-- Values of one tag stand side by side: only the first of such a run can be the first of its name. -->
    <xsl:key name="run" match="ConvertedFile/IDTags/*[not(@name = preceding-sibling::*[1]/@name)]"
        use="translate(@name, 'ABCDEFGHIJKLMNOPQRSTUVWXYZ', 'abcdefghijklmnopqrstuvwxyz')"/>

    <xsl:variable name="special" select="'=;#\&#10;&#13;'"/>
    <xsl:variable name="marks" select="'======'"/>

    <xsl:template match="/">
        <xsl:value-of select="';FFMETADATA1&#10;'"/>
        <xsl:for-each select="AudioMetadata/ConvertedFile/IDTags/*[
            not(@name = preceding-sibling::*[1]/@name)][
            generate-id() = generate-id(key('run', translate(@name, $upper, $lower))[1])]">
            <xsl:call-template name="escape">
                <xsl:with-param name="text" select="string(@name)"/>
            </xsl:call-template>
            <xsl:text>=</xsl:text>
            <xsl:variable name="values">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="key('tag', translate(@name, $upper, $lower))"/>
                </xsl:call-template>
            </xsl:variable>
            <xsl:call-template name="escape">
                <xsl:with-param name="text" select="string($values)"/>
            </xsl:call-template>
            <xsl:if test="substring($values, string-length($values)) = '\'">
                <xsl:value-of select="' '"/>
            </xsl:if>
            <xsl:value-of select="'&#10;'"/>
        </xsl:for-each>
    </xsl:template>

    <!--
        Writes text with a backslash before each special character and "; " for every CR, then clean as it
        stands. Splits near the middle, so that the depth stays small for a long text, and only beside such a
        character, so that a surrogate pair is never cut.
    -->
    <xsl:template name="escape">
        <xsl:param name="text"/>
        <xsl:param name="clean"/>
        <xsl:variable name="marked" select="translate($text, $special, $marks)"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($marked, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, '=')">
                <xsl:variable name="at" select="$half + string-length(substring-before($right, '=')) + 1"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $at - 1)"/>
                </xsl:call-template>
                <xsl:text>\</xsl:text>
                <xsl:choose>
                    <xsl:when test="substring($text, $at, 1) = '&#13;'">
                        <xsl:value-of select="'; '"/>
                    </xsl:when>
                    <xsl:otherwise>
                        <xsl:value-of select="substring($text, $at, 1)"/>
                    </xsl:otherwise>
                </xsl:choose>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, $at + 1)"/>
                    <xsl:with-param name="clean" select="$clean"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($marked, '=')">
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="clean" select="concat(substring($text, $half + 1), $clean)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat($text, $clean)"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!--
        Writes the values of one tag, $entries, with a CR between them: no value holds one. A value with
        Windows line ends was cut at the CR of each, so an entry that begins with LF goes on with the value
        before it. An empty entry was LF alone if the nearest entry with a text before or after it begins so.

        For a part of the entries, $before and $after are those nearest entries. Halves keep the depth small.
    -->
    <xsl:template name="values">
        <xsl:param name="entries"/>
        <xsl:param name="before" select="/.."/>
        <xsl:param name="after" select="/.."/>
        <xsl:variable name="half" select="floor(count($entries) div 2)"/>
        <xsl:variable name="last" select="$entries[position() &lt;= $half][
            . != '' or not(@name = preceding-sibling::*[1]/@name)][last()]"/>
        <xsl:variable name="next" select="$entries[position() &gt; $half][
            . != '' or not(@name = preceding-sibling::*[1]/@name)][1]"/>
        <xsl:choose>
            <xsl:when test="($last or $next) and $entries[. = '' and @name = preceding-sibling::*[1]/@name]
                and ($entries[starts-with(., '&#10;')] or starts-with($before, '&#10;')
                or starts-with($after, '&#10;'))">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="$entries[position() &lt;= $half]"/>
                    <xsl:with-param name="before" select="$before"/>
                    <xsl:with-param name="after" select="$next | $after[not($next)]"/>
                </xsl:call-template>
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="$entries[position() &gt; $half]"/>
                    <xsl:with-param name="before" select="$last | $before[not($last)]"/>
                    <xsl:with-param name="after" select="$after"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:variable name="blank" select="boolean(($before | $after)[starts-with(., '&#10;')
                    and @name = preceding-sibling::*[1]/@name])"/>
                <xsl:for-each select="$entries">
                    <xsl:variable name="goesOn" select="@name = preceding-sibling::*[1]/@name
                        and (starts-with(., '&#10;') or $blank and . = '')"/>
                    <xsl:choose>
                        <xsl:when test="not($goesOn) and ($before or position() &gt; 1)">
                            <xsl:value-of select="'&#13;'"/>
                        </xsl:when>
                        <xsl:when test="$goesOn and . = ''">
                            <xsl:value-of select="'&#10;'"/>
                        </xsl:when>
                    </xsl:choose>
                    <xsl:value-of select="."/>
                </xsl:for-each>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
