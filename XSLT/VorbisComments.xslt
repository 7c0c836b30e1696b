<?xml version="1.0" encoding="UTF-8"?>
<!--
    The converted file's tags as Vorbis comments, one NAME=VALUE to a line. File extension to set in the
    panel: .vc (any will do). docs/style-sheets.md has the command that gives them to a FLAC file.

    Every value of a tag that has several is a line of its own. The format has no escapes, so a line break
    inside a value becomes a space, and a tag is left out when its name holds what a comment's name must
    not: "=", "~", or anything but printable ASCII. metaflac 1.4 takes nothing from a file in which a line
    has 65,535 bytes or more.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <!-- A string in apostrophes cannot hold one, hence the variable. -->
    <xsl:variable name="apostrophe">'</xsl:variable>
    <xsl:variable name="allowed" select="concat($apostrophe, ' !&quot;#$%&amp;()*+,-./0123456789:;&lt;&gt;?@',
        'ABCDEFGHIJKLMNOPQRSTUVWXYZ[\]^_`abcdefghijklmnopqrstuvwxyz{|}')"/>

    <xsl:template match="/">
        <xsl:call-template name="groups">
            <xsl:with-param name="entries"
                select="AudioMetadata/ConvertedFile/IDTags/*[translate(@name, $allowed, '') = '']"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template match="*" mode="name">
        <xsl:param name="values"/>
        <xsl:call-template name="each">
            <xsl:with-param name="text" select="translate($values, '&#10;', ' ')"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template name="value">
        <xsl:param name="text"/>
        <xsl:value-of select="concat(@name, '=', $text, '&#10;')"/>
    </xsl:template>

    <xsl:include href="parts/each.xslt"/>
    <xsl:include href="parts/entries.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
