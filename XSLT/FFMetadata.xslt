<?xml version="1.0" encoding="UTF-8"?>
<!--
    The converted file's tags as a metadata file of ffmpeg. File extension to set in the panel: .ffmeta
    (any will do). To give them to a file:

        ffmpeg -i song.flac -i song.ffmeta -map_metadata 1 -codec copy tagged.flac

    ffmpeg keeps one value for each name, whatever its case, so several values of one name are joined by
    "; ". Names are written as the decoder spells them; ffmpeg's own generic names are title, artist,
    album, track and so on.
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

    <xsl:variable name="special" select="'=;#\&#10;'"/>
    <xsl:variable name="marks" select="'====='"/>

    <xsl:template match="/">
        <xsl:value-of select="';FFMETADATA1&#10;'"/>
        <xsl:for-each select="AudioMetadata/ConvertedFile/IDTags/*[
            not(@name = preceding-sibling::*[1]/@name)][
            generate-id() = generate-id(key('run', translate(@name, $upper, $lower))[1])]">
            <xsl:call-template name="escape">
                <xsl:with-param name="text" select="string(@name)"/>
            </xsl:call-template>
            <xsl:text>=</xsl:text>
            <xsl:for-each select="key('tag', translate(@name, $upper, $lower))">
                <xsl:if test="position() &gt; 1">
                    <xsl:value-of select="'\; '"/>
                </xsl:if>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="string()"/>
                </xsl:call-template>
            </xsl:for-each>
            <xsl:value-of select="'&#10;'"/>
        </xsl:for-each>
    </xsl:template>

    <!--
        Writes text with a backslash before each special character, then clean as it stands. Splits near the
        middle, so that the depth stays small for a long text, and only beside a special character, so that a
        surrogate pair is never cut.
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
                <xsl:value-of select="concat('\', substring($text, $at, 1))"/>
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
</xsl:stylesheet>
