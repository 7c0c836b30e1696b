<?xml version="1.0" encoding="UTF-8"?>
<!--
    One row for each fact, as comma-separated values (RFC 4180, UTF-8), for databases and programs. File
    extension to set in the panel: .facts.csv

    The columns are the same for every document, so the rows of many make one table; docs/style-sheets.md
    shows how:

        File   the converted file with its folder, in all rows of its document, those of the source too
        List   where the fact stands: SourceFile, SourceFile/AudioProperties, SourceFile/AudioFormat,
               SourceFile/IDTags, or the same of ConvertedFile
        Name   element name of a fact, name of a property or tag as the decoder spells it
        Index  1, and 2, 3 and so on for further values of a name in a list
        Value  as the document has it, with nothing joined or left out; may be empty
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:variable name="file">
        <xsl:call-template name="cell">
            <xsl:with-param name="text" select="string($path)"/>
        </xsl:call-template>
    </xsl:variable>

    <xsl:template match="/">
        <xsl:value-of select="concat('File,List,Name,Index,Value', $rowEnd)"/>
        <xsl:apply-templates select="AudioMetadata/*/*"/>
    </xsl:template>

    <xsl:template match="AudioMetadata/*/*[starts-with(name(), 'File')] | AudioFormat/*">
        <xsl:call-template name="value">
            <xsl:with-param name="text" select="string()"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template match="AudioProperties | IDTags">
        <xsl:call-template name="groups">
            <xsl:with-param name="entries" select="*"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template match="*" mode="name">
        <xsl:param name="values"/>
        <xsl:call-template name="each">
            <xsl:with-param name="text" select="$values"/>
        </xsl:call-template>
    </xsl:template>

    <!-- The row of a value of the context node, which is a fact or the first entry of its name. -->
    <xsl:template name="value">
        <xsl:param name="text"/>
        <xsl:param name="index" select="1"/>
        <xsl:value-of select="concat($file, ',')"/>
        <xsl:if test="not(parent::SourceFile or parent::ConvertedFile)">
            <xsl:value-of select="concat(name(../..), '/')"/>
        </xsl:if>
        <xsl:value-of select="concat(name(..), ',')"/>
        <xsl:choose>
            <xsl:when test="@name">
                <xsl:call-template name="cell">
                    <xsl:with-param name="text" select="string(@name)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="name()"/>
            </xsl:otherwise>
        </xsl:choose>
        <xsl:value-of select="concat(',', $index, ',')"/>
        <xsl:call-template name="cell">
            <xsl:with-param name="text" select="$text"/>
        </xsl:call-template>
        <xsl:value-of select="$rowEnd"/>
    </xsl:template>

    <!-- One cell, in quotes when it needs them. -->
    <xsl:template name="cell">
        <xsl:param name="text"/>
        <xsl:choose>
            <xsl:when test="translate($text, ',&quot;&#10;', '') = $text">
                <xsl:value-of select="$text"/>
            </xsl:when>
            <xsl:otherwise>
                <xsl:call-template name="quoted">
                    <xsl:with-param name="text" select="$text"/>
                </xsl:call-template>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>

    <xsl:include href="parts/csv.xslt"/>
    <xsl:include href="parts/each.xslt"/>
    <xsl:include href="parts/entries.xslt"/>
    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/path.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
