<?xml version="1.0" encoding="UTF-8"?>
<!--
    Metadata as comma-separated values (RFC 4180, UTF-8 with a byte-order mark) for spreadsheets. File
    extension to set in the panel: .csv

    One header row, one row for the source file ("Source"), one for the converted file ("Converted"). After
    the fixed columns follows one column for each property name and then one for each tag name that either
    file has, headed "AudioProperties/NAME" and "IDTags/NAME". Several values of one name share the cell,
    joined by "; "; CsvLong.xslt keeps them apart. What a file does not have is an empty cell.

    Texts are in quotes, numbers and times are not, and no value is changed. A spreadsheet that opens the file
    as it likes takes 0049123 for a number and =1+1 for a formula, in quotes or not. An apostrophe before such
    a value would stop some of that, but every other reader would have it in the value. docs/style-sheets.md
    says how to import the file so that texts stay texts.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <xsl:key name="column" match="AudioProperties/* | IDTags/*" use="concat(name(..), '/', @name)"/>

    <xsl:template match="/">
        <xsl:value-of select="'&#xFEFF;File'"/>
        <xsl:for-each select="AudioMetadata/SourceFile/*[starts-with(name(), 'File')]
            | AudioMetadata/SourceFile/AudioFormat/*">
            <xsl:value-of select="concat(',', name())"/>
        </xsl:for-each>
        <xsl:call-template name="columns"/>
        <xsl:for-each select="AudioMetadata/*">
            <xsl:value-of select="substring-before(name(), 'File')"/>
            <xsl:apply-templates select="*[starts-with(name(), 'File')] | AudioFormat/*"/>
            <xsl:call-template name="columns">
                <xsl:with-param name="file" select="name()"/>
            </xsl:call-template>
        </xsl:for-each>
    </xsl:template>

    <!-- Numbers and times; all else is text. -->
    <xsl:template match="FileSize | FileLength | FileBitrate | FileCreated | FileModified | FileAccessed
        | AudioFormat/*">
        <xsl:value-of select="concat(',', .)"/>
    </xsl:template>
    <xsl:template match="*">
        <xsl:value-of select="','"/>
        <xsl:if test=". != ''">
            <xsl:call-template name="quoted">
                <xsl:with-param name="text" select="string()"/>
            </xsl:call-template>
        </xsl:if>
    </xsl:template>

    <!-- The columns of properties and tags to the row's end: their headings, or with `file` its cells. -->
    <xsl:template name="columns">
        <xsl:param name="file"/>
        <xsl:call-template name="groups">
            <xsl:with-param name="entries" select="/AudioMetadata/*/AudioProperties/*"/>
            <xsl:with-param name="file" select="$file"/>
        </xsl:call-template>
        <xsl:call-template name="groups">
            <xsl:with-param name="entries" select="/AudioMetadata/*/IDTags/*"/>
            <xsl:with-param name="file" select="$file"/>
        </xsl:call-template>
        <xsl:value-of select="$rowEnd"/>
    </xsl:template>

    <xsl:template match="*" mode="group">
        <xsl:param name="file"/>
        <xsl:variable name="column" select="concat(name(..), '/', @name)"/>
        <xsl:if test="generate-id() = generate-id(key('column', $column)[1])">
            <xsl:variable name="entries" select="key('column', $column)[name(../..) = $file]"/>
            <xsl:value-of select="','"/>
            <xsl:if test="$entries or not($file)">
                <xsl:call-template name="quoted">
                    <xsl:with-param name="text">
                        <xsl:choose>
                            <xsl:when test="$file">
                                <xsl:call-template name="values">
                                    <xsl:with-param name="entries" select="$entries"/>
                                </xsl:call-template>
                            </xsl:when>
                            <xsl:otherwise>
                                <xsl:value-of select="$column"/>
                            </xsl:otherwise>
                        </xsl:choose>
                    </xsl:with-param>
                </xsl:call-template>
            </xsl:if>
        </xsl:if>
    </xsl:template>

    <xsl:include href="parts/csv.xslt"/>
    <xsl:include href="parts/escape.xslt"/>
    <xsl:include href="parts/groups.xslt"/>
    <xsl:include href="parts/values.xslt"/>
</xsl:stylesheet>
