<?xml version="1.0" encoding="UTF-8"?>
<!--
    The converted file's tags as a metadata file of ffmpeg. File extension to set in the panel: .ffmeta
    (any will do). docs/style-sheets.md has the command that gives them to a file.

    ffmpeg keeps one value for each name, whatever its case, so several values of one name are joined by
    "; ". Album artist, track and disc get the names that ffmpeg has for them in all formats; other names are
    written as the decoder spells them. A value that ends in a backslash gets a blank behind it: ffmpeg would
    take the line end after the backslash for part of the value, however the backslash is written, and lose the
    next tag.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <!-- ffmpeg's names for tags that others call otherwise. -->
    <xsl:variable name="generic"
        select="'|albumartist=album_artist|album artist=album_artist|tracknumber=track|discnumber=disc|'"/>

    <xsl:variable name="special" select="'=;#\&#10;&#13;'"/>
    <xsl:variable name="marks" select="'======'"/>

    <xsl:template match="/">
        <xsl:value-of select="';FFMETADATA1&#10;'"/>
        <xsl:call-template name="groups">
            <xsl:with-param name="entries" select="AudioMetadata/ConvertedFile/IDTags/*"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template match="*" mode="group">
        <xsl:variable name="folded" select="translate(@name, $upper, $lower)"/>
        <xsl:variable name="known"
            select="substring-before(substring-after($generic, concat('|', $folded, '=')), '|')"/>
        <xsl:variable name="name">
            <xsl:value-of select="$known"/>
            <xsl:if test="$known = ''">
                <xsl:value-of select="@name"/>
            </xsl:if>
        </xsl:variable>
        <xsl:variable name="row" select="concat('IDTags', translate($name, $upper, $lower))"/>
        <xsl:variable name="entries" select="(key('row', $row)
            | key('row', 'IDTagsalbumartist')[$row = 'IDTagsalbum_artist']
            | key('row', 'IDTagsalbum artist')[$row = 'IDTagsalbum_artist']
            | key('row', 'IDTagstracknumber')[$row = 'IDTagstrack']
            | key('row', 'IDTagsdiscnumber')[$row = 'IDTagsdisc'])[../parent::ConvertedFile]"/>
        <xsl:if test="generate-id() = generate-id($entries[1])">
            <xsl:variable name="values">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="$entries"/>
                </xsl:call-template>
            </xsl:variable>
            <xsl:call-template name="escape">
                <xsl:with-param name="text" select="string($name)"/>
            </xsl:call-template>
            <xsl:text>=</xsl:text>
            <xsl:call-template name="escape">
                <xsl:with-param name="text" select="string($values)"/>
            </xsl:call-template>
            <xsl:if test="substring($values, string-length($values)) = '\'">
                <xsl:value-of select="' '"/>
            </xsl:if>
            <xsl:value-of select="'&#10;'"/>
        </xsl:if>
    </xsl:template>

    <xsl:template name="escaped">
        <xsl:param name="char"/>
        <xsl:choose>
            <xsl:when test="$char = '&#13;'">\; </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat('\', $char)"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/rows.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
