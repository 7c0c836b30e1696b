<?xml version="1.0" encoding="UTF-8"?>
<!--
    What the conversion did to the tags: one row for each that was lost, added or changed, as comma-separated
    values (RFC 4180, UTF-8), and nothing for a file whose tags are the same. File extension to set in the panel:
    .changes.csv

    There is no row of headings, so that the rows of many documents make one table; docs/style-sheets.md shows
    how. The columns are

        File,Change,Name,Was,Now

    File is the converted file with its folder, Change "lost", "added" or "changed". Names that differ only in
    case are one; the row has the name that came first. Several values are joined by "; ". All cells are in
    quotes, but for one that is empty because the file has no such tag.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:template match="/">
        <xsl:call-template name="groups">
            <xsl:with-param name="entries" select="AudioMetadata/*/IDTags/*"/>
        </xsl:call-template>
    </xsl:template>

    <xsl:template match="*" mode="group">
        <xsl:variable name="name" select="concat('IDTags', translate(@name, $upper, $lower))"/>
        <xsl:if test="generate-id() = generate-id(key('row', $name)[1])">
            <xsl:call-template name="change">
                <xsl:with-param name="old" select="key('row', $name)[../parent::SourceFile]"/>
                <xsl:with-param name="new" select="key('row', $name)[../parent::ConvertedFile]"/>
            </xsl:call-template>
        </xsl:if>
    </xsl:template>

    <xsl:template name="change">
        <xsl:param name="old"/>
        <xsl:param name="new"/>
        <xsl:variable name="was">
            <xsl:call-template name="values">
                <xsl:with-param name="entries" select="$old"/>
            </xsl:call-template>
        </xsl:variable>
        <xsl:variable name="now">
            <xsl:call-template name="values">
                <xsl:with-param name="entries" select="$new"/>
            </xsl:call-template>
        </xsl:variable>
        <xsl:variable name="change">
            <xsl:choose>
                <xsl:when test="not($old)">added</xsl:when>
                <xsl:when test="not($new)">lost</xsl:when>
                <xsl:when test="string($was) != string($now)">changed</xsl:when>
            </xsl:choose>
        </xsl:variable>
        <xsl:if test="$change != ''">
            <xsl:call-template name="quoted">
                <xsl:with-param name="text" select="string($path)"/>
            </xsl:call-template>
            <xsl:value-of select="concat(',', $quote, $change, $quote, ',')"/>
            <xsl:call-template name="quoted">
                <xsl:with-param name="text" select="string(@name)"/>
            </xsl:call-template>
            <xsl:value-of select="','"/>
            <xsl:if test="$old">
                <xsl:call-template name="quoted">
                    <xsl:with-param name="text" select="string($was)"/>
                </xsl:call-template>
            </xsl:if>
            <xsl:value-of select="','"/>
            <xsl:if test="$new">
                <xsl:call-template name="quoted">
                    <xsl:with-param name="text" select="string($now)"/>
                </xsl:call-template>
            </xsl:if>
            <xsl:value-of select="$rowEnd"/>
        </xsl:if>
    </xsl:template>

    <xsl:include href="parts/csv.xslt"/>
    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/rows.xslt"/>
    <xsl:include href="parts/values.xslt"/>
    <xsl:include href="parts/path.xslt"/>
</xsl:stylesheet>
