<?xml version="1.0" encoding="UTF-8"?>
<!--
    Metadata as JSON. File extension to set in the panel: .json

    Keys are the element names of the document; below AudioProperties and IDTags they are the names as the
    decoders spell them. Sizes, length, bitrate and the audio format are numbers; an empty name or time (no
    source file on disk) is null. A property or tag is always an array of strings, of more than one when the
    name has several values in one list; its key then stands where it first occurred. For jq, the artists of a
    song, and its name if the source was not 44.1 kHz:

        jq -r ".ConvertedFile.IDTags.ARTIST[]?" song.json
        jq -r "select(.SourceFile.AudioFormat.SamplesPerSec != 44100) | .ConvertedFile.FileName" song.json
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:variable name="special" select="'&quot;\&#9;&#10;&#13;'"/>
    <xsl:variable name="marks" select="'&quot;&quot;&quot;&quot;&quot;'"/>

    <xsl:template match="/">
        <xsl:text>{</xsl:text>
        <xsl:for-each select="AudioMetadata/*">
            <xsl:if test="position() &gt; 1">,</xsl:if>
            <xsl:value-of select="concat('&#10;  &quot;', name(), '&quot;: {')"/>
            <xsl:apply-templates select="*"/>
            <xsl:value-of select="'&#10;  }'"/>
        </xsl:for-each>
        <xsl:value-of select="'&#10;}&#10;'"/>
    </xsl:template>

    <xsl:template match="AudioMetadata/*/*">
        <xsl:if test="position() &gt; 1">,</xsl:if>
        <xsl:value-of select="concat('&#10;    &quot;', name(), '&quot;: ')"/>
        <xsl:choose>
            <xsl:when test="self::AudioProperties or self::IDTags">
                <xsl:text>{</xsl:text>
                <xsl:call-template name="groups">
                    <xsl:with-param name="entries" select="*"/>
                </xsl:call-template>
                <xsl:value-of select="'&#10;    }'"/>
            </xsl:when>
            <xsl:when test="self::AudioFormat">
                <xsl:text>{</xsl:text>
                <xsl:for-each select="*">
                    <xsl:if test="position() &gt; 1">,</xsl:if>
                    <xsl:value-of select="concat('&#10;      &quot;', name(), '&quot;: ', .)"/>
                </xsl:for-each>
                <xsl:value-of select="'&#10;    }'"/>
            </xsl:when>
            <xsl:when test="self::FileSize or self::FileLength or self::FileBitrate">
                <xsl:value-of select="."/>
            </xsl:when>
            <xsl:when test=". = ''">null</xsl:when>
            <xsl:otherwise>
                <xsl:call-template name="string">
                    <xsl:with-param name="text" select="."/>
                </xsl:call-template>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <!-- A member of an open list: the context node is the first entry of its name. -->
    <xsl:template match="*" mode="name">
        <xsl:param name="values"/>
        <xsl:if test="preceding-sibling::*">,</xsl:if>
        <xsl:value-of select="'&#10;      '"/>
        <xsl:call-template name="string">
            <xsl:with-param name="text" select="@name"/>
        </xsl:call-template>
        <xsl:text>: [</xsl:text>
        <xsl:call-template name="string">
            <xsl:with-param name="text" select="$values"/>
        </xsl:call-template>
        <xsl:text>]</xsl:text>
    </xsl:template>

    <!-- One string, or several when there are CRs in text. -->
    <xsl:template name="string">
        <xsl:param name="text"/>
        <xsl:text>"</xsl:text>
        <xsl:call-template name="escape">
            <xsl:with-param name="text" select="string($text)"/>
        </xsl:call-template>
        <xsl:text>"</xsl:text>
    </xsl:template>

    <xsl:template name="escaped">
        <xsl:param name="char"/>
        <xsl:choose>
            <xsl:when test="$char = '&#9;'">\t</xsl:when>
            <xsl:when test="$char = '&#10;'">\n</xsl:when>
            <xsl:when test="$char = '&#13;'">", "</xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat('\', $char)"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <xsl:include href="parts/entries.xslt"/>
    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
